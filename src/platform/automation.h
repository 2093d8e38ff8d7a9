#pragma once

// Automation types: IUnknown, IDispatch, IClassFactory, VARIANT, BSTR, HRESULT with the binary layout of COM.
// The build finds automation_types.h in the folder of the operating system.

#include <string>
#include <string_view>

#include "automation_types.h"

namespace marbex::platform {

// The text of a BSTR, its zeros included; empty for null. Valid while the BSTR is.
std::u16string_view BstrView(BSTR text);

// A new BSTR that the caller owns (SysFreeString). Null when there is no memory.
BSTR NewBstr(std::u16string_view text);

// The zero-terminated text of another's name; empty for null.
std::u16string_view NameView(const OLECHAR* name);

// The number of a method or property by its name.
HRESULT FindName(IDispatch& dispatch, std::u16string_view name, DISPID& id);

// Owns a BSTR.
class BstrHolder {
public:
    BstrHolder() = default;
    explicit BstrHolder(BSTR text) : text_(text) {}
    explicit BstrHolder(std::u16string_view text) : text_(NewBstr(text)) {}
    BstrHolder(const BstrHolder&) = delete;
    BstrHolder& operator=(const BstrHolder&) = delete;
    ~BstrHolder() { SysFreeString(text_); }

    BSTR Get() const { return text_; }
    BSTR* Address() { return &text_; }
    BSTR Detach()
    {
        BSTR text = text_;
        text_ = nullptr;
        return text;
    }

private:
    BSTR text_ = nullptr;
};

// Owns the value of a VARIANT.
class VariantHolder {
public:
    VariantHolder() { VariantInit(&variant_); }
    VariantHolder(const VariantHolder&) = delete;
    VariantHolder& operator=(const VariantHolder&) = delete;
    ~VariantHolder() { VariantClear(&variant_); }

    VARIANT* Get() { return &variant_; }
    const VARIANT& Value() const { return variant_; }

private:
    VARIANT variant_;
};

}  // namespace marbex::platform
