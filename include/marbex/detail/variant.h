#pragma once

// One argument of a call to a service object, or its result. Owns the text in it.

#include <marbex/automation.h>
#include <marbex/detail/text.h>

#include <cstdint>
#include <new>
#include <string>
#include <string_view>

namespace marbex::detail {

inline BSTR NewBstr(std::string_view utf8)
{
    const std::u16string wide = ToUtf16(utf8);
    const BSTR text = SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
    if (text == nullptr) throw std::bad_alloc();
    return text;
}

inline std::string FromBstr(BSTR text)
{
    return text == nullptr ? std::string() : ToUtf8({text, SysStringLen(text)});
}

class Variant {
public:
    Variant() { VariantInit(&value_); }
    Variant(int32_t number) : Variant()
    {
        value_.vt = VT_I4;
        value_.lVal = number;
    }
    Variant(bool truth) : Variant()
    {
        value_.vt = VT_BOOL;
        value_.boolVal = truth ? VARIANT_TRUE : VARIANT_FALSE;
    }
    Variant(std::string_view text) : Variant()
    {
        value_.bstrVal = NewBstr(text);
        value_.vt = VT_BSTR;
    }
    // By reference: the method may change what is there.
    Variant(int32_t* number) : Variant()
    {
        value_.vt = VT_I4 | VT_BYREF;
        value_.plVal = number;
    }
    Variant(BSTR* text) : Variant()
    {
        value_.vt = VT_BSTR | VT_BYREF;
        value_.pbstrVal = text;
    }
    // The control object, which outlives the call.
    Variant(IDispatch* object) : Variant()
    {
        if (object != nullptr) object->AddRef();
        value_.vt = VT_DISPATCH;
        value_.pdispVal = object;
    }
    Variant(const Variant&) = delete;
    Variant& operator=(const Variant&) = delete;
    ~Variant() { VariantClear(&value_); }

    VARIANT* Address() { return &value_; }
    const VARIANT& Value() const { return value_; }

    int32_t Number() const { return value_.vt == VT_I4 ? value_.lVal : 0; }
    std::string Text() const { return value_.vt == VT_BSTR ? FromBstr(value_.bstrVal) : std::string(); }

private:
    VARIANT value_;
};

}  // namespace marbex::detail
