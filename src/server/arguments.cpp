#include "server/arguments.h"

#include "platform/text.h"

namespace marbex::server {
namespace {

bool IsNullReference(const VARIANT& source)
{
    if ((source.vt & VT_BYREF) == 0) return false;
    if (source.byref == nullptr) return true;
    return source.vt == (VT_BYREF | VT_VARIANT) && source.pvarVal->vt != (VT_BYREF | VT_VARIANT) &&
           IsNullReference(*source.pvarVal);
}

HRESULT Change(const VARIANT& source, VARTYPE type, platform::VariantHolder& changed)
{
    if (IsNullReference(source)) return DISP_E_TYPEMISMATCH;
    return VariantChangeType(changed.Get(), &source, 0, type);
}

HRESULT ReadLong(const VARIANT& source, int32_t& value)
{
    platform::VariantHolder changed;
    const HRESULT result = Change(source, VT_I4, changed);
    if (SUCCEEDED(result)) value = static_cast<int32_t>(changed.Value().lVal);
    return result;
}

HRESULT ReadWide(const VARIANT& source, std::u16string& value)
{
    platform::VariantHolder changed;
    const HRESULT result = Change(source, VT_BSTR, changed);
    if (SUCCEEDED(result)) value = platform::BstrView(changed.Value().bstrVal);
    return result;
}

HRESULT ReadAnsi(const VARIANT& source, std::string& value)
{
    std::u16string wide;
    const HRESULT result = ReadWide(source, wide);
    if (FAILED(result)) return result;
    const std::u16string_view whole(wide);
    value = platform::NarrowAnsi(whole.substr(0, whole.find(u'\0')));
    return S_OK;
}

// Stores a value of the reference's own type where it points.
void StoreAt(void* place, VARIANT& value)
{
    switch (value.vt) {
        case VT_I1:
        case VT_UI1:
            *static_cast<uint8_t*>(place) = value.bVal;
            break;
        case VT_I2:
        case VT_UI2:
        case VT_BOOL:
            *static_cast<uint16_t*>(place) = value.uiVal;
            break;
        case VT_I4:
        case VT_UI4:
        case VT_INT:
        case VT_UINT:
            *static_cast<uint32_t*>(place) = static_cast<uint32_t>(value.ulVal);
            break;
        case VT_R4:
            *static_cast<float*>(place) = value.fltVal;
            break;
        case VT_I8:
        case VT_UI8:
            *static_cast<uint64_t*>(place) = value.ullVal;
            break;
        case VT_R8:
            *static_cast<double*>(place) = value.dblVal;
            break;
        case VT_BSTR:
            SysFreeString(*static_cast<BSTR*>(place));
            *static_cast<BSTR*>(place) = value.bstrVal;
            value.vt = VT_EMPTY;
            break;
        default:
            break;
    }
}

// Writes a value through a by-reference argument, in the type the caller has there; a width that cannot hold it keeps
// what it had.
void WriteThrough(VARIANT& argument, const VARIANT& value)
{
    if ((argument.vt & VT_BYREF) == 0) return;
    if (argument.vt != (VT_BYREF | VT_VARIANT)) {
        platform::VariantHolder fitted;
        const auto type = static_cast<VARTYPE>(argument.vt & VT_TYPEMASK);
        if (SUCCEEDED(VariantChangeType(fitted.Get(), &value, 0, type))) StoreAt(argument.byref, *fitted.Get());
        return;
    }
    VARIANT& target = *argument.pvarVal;
    if ((target.vt & VT_BYREF) == 0) {
        VariantChangeType(&target, &value, 0, value.vt);
    } else if (target.vt != (VT_BYREF | VT_VARIANT)) {
        WriteThrough(target, value);
    }
}

void WriteText(VARIANT& argument, std::u16string_view text)
{
    platform::VariantHolder value;
    value.Get()->bstrVal = platform::NewBstr(text);
    value.Get()->vt = VT_BSTR;
    WriteThrough(argument, value.Value());
}

}  // namespace

HRESULT Argument<int32_t>::Read(const VARIANT& source)
{
    return ReadLong(source, value_);
}

HRESULT Argument<bool>::Read(const VARIANT& source)
{
    platform::VariantHolder changed;
    const HRESULT result = Change(source, VT_BOOL, changed);
    if (SUCCEEDED(result)) value_ = changed.Value().boolVal != VARIANT_FALSE;
    return result;
}

HRESULT Argument<const std::string&>::Read(const VARIANT& source)
{
    return ReadAnsi(source, value_);
}

HRESULT Argument<const std::u16string&>::Read(const VARIANT& source)
{
    return ReadWide(source, value_);
}

HRESULT Argument<IDispatch*>::Read(const VARIANT& source)
{
    return Change(source, VT_DISPATCH, value_);
}

HRESULT Argument<int32_t*>::Read(const VARIANT& source)
{
    isNull_ = IsNullReference(source);
    if (isNull_) return S_OK;
    const HRESULT result = ReadLong(source, value_);
    before_ = value_;
    return result;
}

void Argument<int32_t*>::WriteBack(VARIANT& destination) const
{
    if (value_ == before_) return;
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_I4;
    value.lVal = value_;
    WriteThrough(destination, value);
}

HRESULT Argument<std::string*>::Read(const VARIANT& source)
{
    const HRESULT result = ReadAnsi(source, value_);
    before_ = value_;
    return result;
}

void Argument<std::string*>::WriteBack(VARIANT& destination) const
{
    if (value_ != before_) WriteText(destination, platform::WidenAnsi(value_));
}

HRESULT Argument<std::u16string*>::Read(const VARIANT& source)
{
    isNull_ = IsNullReference(source);
    if (isNull_) return S_OK;
    const HRESULT result = ReadWide(source, value_);
    before_ = value_;
    return result;
}

void Argument<std::u16string*>::WriteBack(VARIANT& destination) const
{
    if (value_ != before_) WriteText(destination, value_);
}

HRESULT PutResult(int32_t result, VARIANT& destination)
{
    destination.vt = VT_I4;
    destination.lVal = result;
    return S_OK;
}

HRESULT PutResult(const std::optional<std::string>& result, VARIANT& destination)
{
    BSTR text = nullptr;
    if (result.has_value()) {
        text = platform::NewBstr(platform::WidenAnsi(*result));
        if (text == nullptr) return E_OUTOFMEMORY;
    }
    destination.vt = VT_BSTR;
    destination.bstrVal = text;
    return S_OK;
}

}  // namespace marbex::server
