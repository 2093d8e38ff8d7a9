#pragma once

// A service object as its application has it, called by name. What Printer, CashDrawer and LineDisplay have in common.

#include <marbex/create_service.h>
#include <marbex/detail/event_sink.h>
#include <marbex/detail/variant.h>
#include <marbex/messages.h>
#include <marbex/result.h>
#include <opos/common.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

namespace marbex::detail {

class Service : private EventHandlers {
public:
    // Makes the service object and opens the device of that name.
    Result Open(std::string_view deviceName)
    {
        if (object_ != nullptr) return Result::kIllegal;
        if (MarbexCreateService(progId_, &object_) != S_OK) return Result::kNoService;
        deviceName_ = deviceName;
        const Result result = Do(u"OpenService", deviceClass_, deviceName, static_cast<IDispatch*>(&events_));
        if (result != Result::kSuccess) Drop();
        return result;
    }

    // Waits so long until the device is nobody else's in this process. A negative time has no end.
    Result Claim(std::chrono::milliseconds timeout) { return Do(u"ClaimDevice", Milliseconds(timeout)); }
    Result Release() { return Do(u"ReleaseDevice"); }

    // Closes the device and gives the service object up, whatever the result. Output that is queued is printed first;
    // an error that comes up meanwhile drops the rest.
    Result Close()
    {
        if (object_ == nullptr) return Result::kClosed;
        const Result result = Do(u"CloseService");
        Drop();
        return result;
    }

    bool IsOpen() const { return object_ != nullptr; }
    const std::string& DeviceName() const { return deviceName_; }

protected:
    Service(const char* progId, std::string_view deviceClass) : progId_(progId), deviceClass_(deviceClass) {}
    ~Service() = default;

    // For destructors: no handler is called any more, and nobody is left to be told.
    void CloseQuietly() noexcept
    {
        try {
            if (object_ != nullptr) (void)Close();
        } catch (...) {
            Drop();
        }
    }

    // Calls a method whose result is a result code.
    template <typename... Arguments>
    Result Do(const char16_t* method, Arguments... arguments)
    {
        if (object_ == nullptr) return Result::kClosed;
        Variant answer;
        if (!Call(method, answer, arguments...)) return Result::kFailure;
        return AsResult(answer.Number());
    }

    int32_t GetNumber(int32_t property)
    {
        Variant answer;
        return object_ != nullptr && Call(u"GetPropertyNumber", answer, property) ? answer.Number() : 0;
    }
    std::string GetText(int32_t property)
    {
        Variant answer;
        return object_ != nullptr && Call(u"GetPropertyString", answer, property) ? answer.Text() : std::string();
    }
    // Without a result of its own: see the ResultCode property.
    bool SetNumber(int32_t property, int32_t value)
    {
        Variant answer;
        return object_ != nullptr && Call(u"SetPropertyNumber", answer, property, value);
    }

    Result AsResult(int32_t code)
    {
        return static_cast<Result>(code != opos::OPOS_E_EXTENDED ? code : GetNumber(opos::PIDX_ResultCodeExtended));
    }

    // Text ends at its first U+0000 for the service object.
    static bool IsWhole(std::string_view text) { return text.find('\0') == std::string_view::npos; }
    static bool IsWhole(int32_t) { return true; }

    static int32_t Milliseconds(std::chrono::milliseconds time)
    {
        constexpr int32_t kLongest = std::numeric_limits<int32_t>::max();
        if (time.count() < 0) return opos::OPOS_FOREVER;
        return time.count() < kLongest ? static_cast<int32_t>(time.count()) : kLongest;
    }

private:
    template <typename... Arguments>
    bool Call(const char16_t* method, Variant& answer, Arguments... arguments)
    {
        // Methods take their arguments last first; the last place is for calls without any.
        Variant given[] = {Variant(arguments)..., Variant()};
        constexpr std::size_t kCount = sizeof...(Arguments);
        std::array<VARIANT, kCount + 1> reversed{};
        for (std::size_t i = 0; i < kCount; ++i)
            reversed[kCount - 1 - i] = given[i].Value();

        // The application may close the device in an event handler while the call is under way.
        IDispatch* const object = object_;
        object->AddRef();
        std::u16string name(method);
        OLECHAR* names[] = {name.data()};
        DISPID id = DISPID_UNKNOWN;
        HRESULT result = object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_SYSTEM_DEFAULT, &id);
        if (SUCCEEDED(result)) {
            DISPPARAMS parameters{reversed.data(), nullptr, static_cast<UINT>(kCount), 0};
            result = object->Invoke(id, IID_NULL, LOCALE_SYSTEM_DEFAULT, DISPATCH_METHOD, &parameters, answer.Address(),
                                    nullptr, nullptr);
        }
        object->Release();
        ThrowWhatHandlersThrew();
        return SUCCEEDED(result);
    }

    void Drop() noexcept
    {
        if (IDispatch* const object = std::exchange(object_, nullptr); object != nullptr) object->Release();
    }

    EventSink events_{*this};
    const char* progId_;
    std::string_view deviceClass_;
    std::string deviceName_;
    IDispatch* object_ = nullptr;
};

}  // namespace marbex::detail
