#pragma once

// The control object: what a service object reports events to.

#include <marbex/detail/variant.h>
#include <marbex/messages.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

namespace marbex::detail {

// What a device object does with its events. The response of an error stands as it is unless it is changed.
class EventHandlers {
public:
    virtual void OnDirectIO(int32_t, int32_t, const std::string&) {}
    virtual void OnError(int32_t, int32_t, int32_t&) {}
    virtual void OnOutputComplete(int32_t) {}
    virtual void OnStatusUpdate(int32_t) {}

protected:
    ~EventHandlers() = default;
};

// The control object. The service object calls it by these names, on the thread that opened it, and keeps no reference.
class EventSink final : public IDispatch {
public:
    explicit EventSink(EventHandlers& handlers) : handlers_(handlers) {}
    EventSink(const EventSink&) = delete;
    EventSink& operator=(const EventSink&) = delete;

    HRESULT QueryInterface(REFIID id, void** object) override
    {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (id != IID_IUnknown && id != IID_IDispatch) return E_NOINTERFACE;
        *object = static_cast<IDispatch*>(this);
        AddRef();
        return S_OK;
    }
    // It belongs to the application's device object, whoever refers to it.
    ULONG AddRef() override { return ++references_; }
    ULONG Release() override { return --references_; }
    HRESULT GetTypeInfoCount(UINT* count) override
    {
        if (count == nullptr) return E_POINTER;
        *count = 0;
        return S_OK;
    }
    HRESULT GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }

    HRESULT GetIDsOfNames(REFIID, OLECHAR** names, UINT count, LCID, DISPID* ids) override
    {
        if (names == nullptr || ids == nullptr || count != 1) return E_INVALIDARG;
        for (std::size_t i = 0; i < kEvents.size(); ++i) {
            if (kEvents[i].name != std::u16string_view(names[0])) continue;
            ids[0] = static_cast<DISPID>(i + 1);
            return S_OK;
        }
        ids[0] = DISPID_UNKNOWN;
        return DISP_E_UNKNOWNNAME;
    }

    HRESULT Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT*, EXCEPINFO*, UINT*) override
    {
        if (id < 1 || static_cast<std::size_t>(id) > kEvents.size()) return DISP_E_MEMBERNOTFOUND;
        const Event& event = kEvents[static_cast<std::size_t>(id - 1)];
        if (parameters == nullptr || parameters->cArgs != event.arguments) return DISP_E_BADPARAMCOUNT;
        try {
            (this->*event.deliver)(parameters->rgvarg + parameters->cArgs);
            return S_OK;
        } catch (...) {
            thrownByHandler = std::current_exception();
            return E_FAIL;
        }
    }

private:
    // The arguments stand last first before end, which is behind the first of them.
    static int32_t NumberOf(const VARIANT& argument)
    {
        return (argument.vt & VT_BYREF) != 0 ? *argument.plVal : argument.lVal;
    }
    void DeliverDirectIO(VARIANT* end)
    {
        handlers_.OnDirectIO(NumberOf(end[-1]), NumberOf(end[-2]),
                             FromBstr(end[-3].pbstrVal != nullptr ? *end[-3].pbstrVal : nullptr));
    }
    void DeliverError(VARIANT* end) { handlers_.OnError(NumberOf(end[-1]), NumberOf(end[-2]), *end[-4].plVal); }
    void DeliverOutputComplete(VARIANT* end) { handlers_.OnOutputComplete(NumberOf(end[-1])); }
    void DeliverStatusUpdate(VARIANT* end) { handlers_.OnStatusUpdate(NumberOf(end[-1])); }

    struct Event {
        std::u16string_view name;
        UINT arguments;
        void (EventSink::*deliver)(VARIANT* end);
    };
    static const std::array<Event, 4> kEvents;

    EventHandlers& handlers_;
    std::atomic<ULONG> references_{1};
};

inline const std::array<EventSink::Event, 4> EventSink::kEvents{{
    {u"SODirectIO", 3, &EventSink::DeliverDirectIO},
    {u"SOError", 4, &EventSink::DeliverError},
    {u"SOOutputComplete", 1, &EventSink::DeliverOutputComplete},
    {u"SOStatusUpdate", 1, &EventSink::DeliverStatusUpdate},
}};

}  // namespace marbex::detail
