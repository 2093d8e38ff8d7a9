// VARIANT: clearing, and the coercions between its types.

#include <marbex/automation.h>

#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace {

// A numeric value before it takes the width of its new type. Unsigned only above the range of int64_t.
using Number = std::variant<int64_t, uint64_t, double>;

struct Value {
    HRESULT result = DISP_E_TYPEMISMATCH;
    Number number{};
};

Value Of(Number number)
{
    return {S_OK, number};
}

// The text as OLE reads numbers: blanks around, a sign, digits with a decimal point, an exponent.
Value NumberOfText(std::u16string_view wide)
{
    std::string text;
    for (const char16_t unit : wide)
        text += unit < 0x80 ? static_cast<char>(unit) : '?';

    constexpr const char* kBlanks = " \t\r\n\v\f";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string::npos) return {};
    text = text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
    if (text == "True" || text == "#TRUE#") return Of(int64_t{VARIANT_TRUE});
    if (text == "False" || text == "#FALSE#") return Of(int64_t{VARIANT_FALSE});

    if (text.front() == '+') {
        text.erase(0, 1);
        if (text.starts_with('-')) return {};
    }
    if (text.find_first_not_of("0123456789+-.eE") != std::string::npos) return {};  // from_chars also reads "inf"
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    int64_t whole = 0;
    if (const auto read = std::from_chars(begin, end, whole); read.ec == std::errc() && read.ptr == end)
        return Of(whole);
    uint64_t large = 0;
    if (const auto read = std::from_chars(begin, end, large); read.ec == std::errc() && read.ptr == end)
        return Of(large);
    double real = 0;
    const auto read = std::from_chars(begin, end, real);
    if (read.ptr != end || read.ec == std::errc::invalid_argument) return {};
    if (read.ec == std::errc::result_out_of_range) return {DISP_E_OVERFLOW, {}};
    return Of(real);
}

// The value of a VARIANT, through its reference if it is one.
Value NumberOf(const VARIANT& variant)
{
    const bool byReference = (variant.vt & VT_BYREF) != 0;
    const auto read = [&]<typename T>(const T& direct) {
        return byReference ? *static_cast<const T*>(variant.byref) : direct;
    };
    switch (variant.vt & VT_TYPEMASK) {
        case VT_EMPTY:
            return Of(int64_t{0});
        case VT_I1:
            return Of(int64_t{read(variant.cVal)});
        case VT_UI1:
            return Of(int64_t{read(variant.bVal)});
        case VT_I2:
            return Of(int64_t{read(variant.iVal)});
        case VT_UI2:
            return Of(int64_t{read(variant.uiVal)});
        case VT_BOOL:
            return Of(int64_t{read(variant.boolVal)});
        case VT_I4:
        case VT_INT:
            return Of(int64_t{read(variant.lVal)});
        case VT_UI4:
        case VT_UINT:
            return Of(int64_t{read(variant.ulVal)});
        case VT_I8:
            return Of(read(variant.llVal));
        case VT_UI8:
            return Of(read(variant.ullVal));
        case VT_R4:
            return Of(double{read(variant.fltVal)});
        case VT_R8:
        case VT_DATE:
            return Of(read(variant.dblVal));
        case VT_CY:
            return Of(static_cast<double>(read(variant.llVal)) / 10000);
        case VT_BSTR: {
            const BSTR text = read(variant.bstrVal);
            return NumberOfText({text != nullptr ? text : u"", SysStringLen(text)});
        }
        default:
            return {};
    }
}

template <typename Integer>
HRESULT Fit(const Number& number, Integer& fitted)
{
    using Limits = std::numeric_limits<Integer>;
    if (const auto* real = std::get_if<double>(&number)) {
        const double rounded = std::nearbyint(*real);
        // One above the largest value is a power of two, which a double holds exactly; the largest value itself may not
        // be.
        const double above = std::ldexp(1.0, Limits::digits);
        if (!(rounded >= static_cast<double>(Limits::min()) && rounded < above)) return DISP_E_OVERFLOW;
        fitted = static_cast<Integer>(rounded);
        return S_OK;
    }
    const bool fits = std::visit(
        [](auto value) {
            if constexpr (std::is_integral_v<decltype(value)>) return std::in_range<Integer>(value);
            return false;
        },
        number);
    if (!fits) return DISP_E_OVERFLOW;
    fitted = std::visit([](auto value) { return static_cast<Integer>(value); }, number);
    return S_OK;
}

double RealOf(const Number& number)
{
    return std::visit([](auto value) { return static_cast<double>(value); }, number);
}

// Digits that a VT_R4 and a VT_R8 are worth in text.
constexpr int kSingleDigits = 7;
constexpr int kDoubleDigits = 15;

HRESULT PutText(std::string_view text, VARIANT& made)
{
    const std::u16string wide(text.begin(), text.end());
    made.bstrVal = SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
    return made.bstrVal != nullptr ? S_OK : E_OUTOFMEMORY;
}

HRESULT TextOfNumber(const Number& number, int digits, VARIANT& made)
{
    std::array<char, 40> buffer{};
    const auto written = std::visit(
        [&](auto value) {
            char* const end = buffer.data() + buffer.size();
            if constexpr (std::is_floating_point_v<decltype(value)>) {
                return std::to_chars(buffer.data(), end, value, std::chars_format::general, digits);
            } else {
                return std::to_chars(buffer.data(), end, value);
            }
        },
        number);
    std::string text(buffer.data(), written.ptr);
    for (char& character : text) {
        if (character == 'e') character = 'E';
    }
    return PutText(text, made);
}

HRESULT MakeText(const VARIANT& source, WORD flags, VARIANT& made)
{
    const Value value = NumberOf(source);
    switch (source.vt & VT_TYPEMASK) {
        case VT_EMPTY:
            return PutText("", made);
        case VT_BOOL:
            if ((flags & VARIANT_ALPHABOOL) != 0) return PutText(RealOf(value.number) != 0 ? "True" : "False", made);
            break;
        case VT_BSTR: {
            const BSTR text = (source.vt & VT_BYREF) != 0 ? *source.pbstrVal : source.bstrVal;
            made.bstrVal = SysAllocStringLen(text, SysStringLen(text));
            return made.bstrVal != nullptr ? S_OK : E_OUTOFMEMORY;
        }
        default:
            break;
    }
    if (FAILED(value.result)) return value.result;
    return TextOfNumber(value.number, (source.vt & VT_TYPEMASK) == VT_R4 ? kSingleDigits : kDoubleDigits, made);
}

HRESULT MakeInterface(const VARIANT& source, VARTYPE type, VARIANT& made)
{
    const VARTYPE from = source.vt & VT_TYPEMASK;
    if (from != VT_DISPATCH && from != VT_UNKNOWN) return DISP_E_TYPEMISMATCH;
    IUnknown* object = nullptr;
    if (from == VT_DISPATCH) {
        object = (source.vt & VT_BYREF) != 0 ? *source.ppdispVal : source.pdispVal;
    } else {
        object = (source.vt & VT_BYREF) != 0 ? *static_cast<IUnknown**>(source.byref) : source.punkVal;
    }
    made.byref = nullptr;
    if (object == nullptr) return S_OK;
    void* asked = nullptr;
    if (FAILED(object->QueryInterface(type == VT_DISPATCH ? IID_IDispatch : IID_IUnknown, &asked)))
        return DISP_E_TYPEMISMATCH;
    made.byref = asked;
    return S_OK;
}

HRESULT MakeNumber(const VARIANT& source, VARTYPE type, VARIANT& made)
{
    const Value value = NumberOf(source);
    if (FAILED(value.result)) return value.result;
    switch (type) {
        case VT_I1:
            return Fit(value.number, made.cVal);
        case VT_UI1:
            return Fit(value.number, made.bVal);
        case VT_I2:
            return Fit(value.number, made.iVal);
        case VT_UI2:
            return Fit(value.number, made.uiVal);
        case VT_I4:
        case VT_INT:
            return Fit(value.number, made.lVal);
        case VT_UI4:
        case VT_UINT:
            return Fit(value.number, made.ulVal);
        case VT_I8:
            return Fit(value.number, made.llVal);
        case VT_UI8:
            return Fit(value.number, made.ullVal);
        case VT_BOOL:
            made.boolVal = RealOf(value.number) != 0 ? VARIANT_TRUE : VARIANT_FALSE;
            return S_OK;
        case VT_R8:
            made.dblVal = RealOf(value.number);
            return S_OK;
        case VT_R4: {
            const double real = RealOf(value.number);
            if (std::fabs(real) > std::numeric_limits<float>::max()) return DISP_E_OVERFLOW;
            made.fltVal = static_cast<float>(real);
            return S_OK;
        }
        default:
            return DISP_E_TYPEMISMATCH;
    }
}

// VARIANT_TRUE is all bits set in every unsigned width, as in OLE.
bool IsTrueIntoUnsigned(const VARIANT& source, VARTYPE type)
{
    if ((source.vt & VT_TYPEMASK) != VT_BOOL) return false;
    return type == VT_UI1 || type == VT_UI2 || type == VT_UI4 || type == VT_UI8 || type == VT_UINT;
}

HRESULT Make(const VARIANT& source, WORD flags, VARTYPE type, VARIANT& made)
{
    if (type == VT_BSTR) return MakeText(source, flags, made);
    if (type == VT_DISPATCH || type == VT_UNKNOWN) return MakeInterface(source, type, made);
    if (type == VT_EMPTY || type == VT_NULL || type == VT_ERROR) {
        if ((source.vt & VT_TYPEMASK) != type) return DISP_E_TYPEMISMATCH;
        made.llVal = 0;
        if (type == VT_ERROR) made.scode = (source.vt & VT_BYREF) != 0 ? *source.plVal : source.scode;
        return S_OK;
    }
    if (IsTrueIntoUnsigned(source, type)) {
        const Value value = NumberOf(source);
        made.ullVal = static_cast<uint64_t>(std::get<int64_t>(value.number));
        return S_OK;
    }
    return MakeNumber(source, type, made);
}

}  // namespace

void VariantInit(VARIANT* variant)
{
    *variant = VARIANT{};
}

HRESULT VariantClear(VARIANT* variant)
{
    switch (variant->vt) {
        case VT_BSTR:
            SysFreeString(variant->bstrVal);
            break;
        case VT_DISPATCH:
            if (variant->pdispVal != nullptr) variant->pdispVal->Release();
            break;
        case VT_UNKNOWN:
            if (variant->punkVal != nullptr) variant->punkVal->Release();
            break;
        default:
            break;
    }
    *variant = VARIANT{};
    return S_OK;
}

HRESULT VariantChangeType(VARIANT* destination, const VARIANT* source, WORD flags, VARTYPE type)
{
    if (source->vt == (VT_BYREF | VT_VARIANT)) {
        source = source->pvarVal;
        if (source->vt == (VT_BYREF | VT_VARIANT)) return DISP_E_TYPEMISMATCH;
    }
    if ((source->vt & ~(VT_BYREF | VT_TYPEMASK)) != 0 || (type & ~VT_TYPEMASK) != 0) return DISP_E_TYPEMISMATCH;
    VARIANT made{};
    const HRESULT result = Make(*source, flags, type, made);
    if (FAILED(result)) return result;
    made.vt = type;
    VariantClear(destination);
    *destination = made;
    return S_OK;
}
