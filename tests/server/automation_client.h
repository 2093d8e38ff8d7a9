#pragma once

// What a control object does: makes an object through the entry points and calls it by name.

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "platform/automation.h"

namespace marbex::tests {

inline constexpr CLSID kPrinterClass{0xB637B615, 0xC43B, 0x40B8, {0xB9, 0xD8, 0xB6, 0xE2, 0x9E, 0x80, 0xAA, 0x6D}};
inline constexpr CLSID kDrawerClass{0xD957B9D0, 0x46FE, 0x4C18, {0x91, 0x36, 0x28, 0x35, 0x70, 0x78, 0xA9, 0x5D}};
inline constexpr CLSID kDisplayClass{0x3B9304F2, 0x526B, 0x4F11, {0x9A, 0x2F, 0xD8, 0x5E, 0xE3, 0x6B, 0xD2, 0x09}};

// One argument; owns the text it makes.
struct Arg {
    Arg(int32_t value)
    {
        variant.vt = VT_I4;
        variant.lVal = value;
    }
    Arg(const char16_t* value)
    {
        variant.vt = VT_BSTR;
        variant.bstrVal = platform::NewBstr(value);
    }
    Arg(IDispatch* value)
    {
        variant.vt = VT_DISPATCH;
        variant.pdispVal = value;
        if (value != nullptr) value->AddRef();
    }
    Arg(LONG* value)
    {
        variant.vt = VT_BYREF | VT_I4;
        variant.plVal = value;
    }
    Arg(BSTR* value)
    {
        variant.vt = VT_BYREF | VT_BSTR;
        variant.pbstrVal = value;
    }
    Arg(VARIANT* value)
    {
        variant.vt = VT_BYREF | VT_VARIANT;
        variant.pvarVal = value;
    }
    // Takes over what it holds.
    Arg(const VARIANT& value) : variant(value) {}
    Arg(const Arg& other) { VariantChangeTypeOrShare(other); }
    Arg& operator=(const Arg&) = delete;
    ~Arg() { VariantClear(&variant); }

    VARIANT variant{};

private:
    // Initializer lists copy.
    void VariantChangeTypeOrShare(const Arg& other)
    {
        variant = other.variant;
        if (variant.vt == VT_BSTR) variant.bstrVal = platform::NewBstr(platform::BstrView(variant.bstrVal));
        if (variant.vt == VT_DISPATCH && variant.pdispVal != nullptr) variant.pdispVal->AddRef();
    }
};

// How a call came back.
struct Outcome {
    HRESULT result = E_FAIL;
    UINT argumentError = 99;
    VARTYPE type = VT_EMPTY;
    int32_t number = 0;
    bool isNull = false;
    std::u16string text;
    std::u16string exceptionText;
};

class Client {
public:
    explicit Client(IDispatch* object) : object_(object) {}  // takes over the reference
    Client() : Client(Made()) {}
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;
    ~Client() { Drop(); }

    static IDispatch* Made(const CLSID& classId = kPrinterClass)
    {
        void* factory = nullptr;
        void* object = nullptr;
        EXPECT_EQ(DllGetClassObject(classId, IID_IClassFactory, &factory), S_OK);
        auto* const made = static_cast<IClassFactory*>(factory);
        EXPECT_EQ(made->CreateInstance(nullptr, IID_IDispatch, &object), S_OK);
        made->Release();
        return static_cast<IDispatch*>(object);
    }

    IDispatch* Object() const { return object_; }

    void Drop()
    {
        if (IDispatch* const dropped = std::exchange(object_, nullptr); dropped != nullptr) dropped->Release();
    }

    DISPID IdOf(const std::u16string& name) const
    {
        DISPID id = 0;
        const HRESULT result = platform::FindName(*object_, name, id);
        EXPECT_EQ(result, id == DISPID_UNKNOWN ? DISP_E_UNKNOWNNAME : S_OK);
        return id;
    }

    Outcome Call(const std::u16string& name, const std::vector<Arg>& arguments = {}) const
    {
        return Invoke(IdOf(name), arguments);
    }

    int32_t Number(const std::u16string& name, const std::vector<Arg>& arguments = {}) const
    {
        const Outcome outcome = Call(name, arguments);
        EXPECT_EQ(outcome.result, S_OK);
        EXPECT_EQ(outcome.type, VT_I4);
        return outcome.number;
    }

    Outcome Invoke(DISPID id, const std::vector<Arg>& arguments, WORD flags = DISPATCH_METHOD) const
    {
        std::vector<VARIANT> reversed;
        for (auto argument = arguments.rbegin(); argument != arguments.rend(); ++argument)
            reversed.push_back(argument->variant);
        DISPPARAMS parameters{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
        VARIANT result;
        EXCEPINFO exception{};
        Outcome outcome;
        outcome.result = object_->Invoke(id, IID_NULL, LOCALE_SYSTEM_DEFAULT, flags, &parameters, &result, &exception,
                                         &outcome.argumentError);
        outcome.type = result.vt;
        if (result.vt == VT_I4) outcome.number = static_cast<int32_t>(result.lVal);
        if (result.vt == VT_BSTR) {
            outcome.isNull = result.bstrVal == nullptr;
            outcome.text = platform::BstrView(result.bstrVal);
        }
        outcome.exceptionText = platform::BstrView(exception.bstrDescription);
        VariantClear(&result);
        SysFreeString(exception.bstrSource);
        SysFreeString(exception.bstrDescription);
        return outcome;
    }

private:
    IDispatch* object_;
};

}  // namespace marbex::tests
