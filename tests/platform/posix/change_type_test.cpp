#include <gtest/gtest.h>

#include <cstdint>
#include <iomanip>
#include <map>
#include <sstream>
#include <string>

#include "common/text_cases.h"
#include "platform/automation.h"
#include "platform/numbered_object.h"
#include "platform/text.h"

namespace marbex::platform {
namespace {

VARIANT Typed(VARTYPE type)
{
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = type;
    return variant;
}

VARIANT Long(int32_t value)
{
    VARIANT variant = Typed(VT_I4);
    variant.lVal = value;
    return variant;
}

// What a value becomes; text is given up again.
struct Changed {
    Changed(const VARIANT& source, VARTYPE type, WORD flags = 0)
    {
        result = VariantChangeType(holder.Get(), &source, flags, type);
    }
    int32_t AsLong() const { return holder.Value().lVal; }
    std::u16string Text() const { return std::u16string(BstrView(holder.Value().bstrVal)); }

    VariantHolder holder;
    HRESULT result = E_FAIL;
};

const std::map<std::string, VARTYPE> kTypes{{"I1", VT_I1},     {"I2", VT_I2},       {"I4", VT_I4},
                                            {"I8", VT_I8},     {"INT", VT_INT},     {"UI1", VT_UI1},
                                            {"UI4", VT_UI4},   {"UI8", VT_UI8},     {"R4", VT_R4},
                                            {"R8", VT_R8},     {"CY", VT_CY},       {"DATE", VT_DATE},
                                            {"BOOL", VT_BOOL}, {"BSTR", VT_BSTR},   {"EMPTY", VT_EMPTY},
                                            {"NULL", VT_NULL}, {"ERROR", VT_ERROR}, {"ARRAY", 0x2000 | VT_I4}};

// The value of a type that a text tells: real numbers as they are written, truth as 0 and 1, currency in 1/10000.
void Fill(VARIANT& variant, VARTYPE type, const std::string& text)
{
    VariantInit(&variant);
    variant.vt = type;
    if (type == VT_BSTR) {
        variant.bstrVal = NewBstr(Utf16FromUtf8(text));
    } else if (type == VT_R4) {
        variant.fltVal = std::stof(text);
    } else if (type == VT_R8 || type == VT_DATE) {
        variant.dblVal = std::stod(text);
    } else if (type == VT_BOOL) {
        variant.boolVal = text == "1" ? VARIANT_TRUE : VARIANT_FALSE;
    } else if (!text.empty()) {
        variant.ullVal = text[0] == '-' ? static_cast<uint64_t>(std::stoll(text)) : std::stoull(text);
    }
}

std::string Shown(const VARIANT& value)
{
    switch (value.vt) {
        case VT_BSTR:
            return "'" + Utf8FromUtf16(BstrView(value.bstrVal)) + "'";
        case VT_UI1:
            return std::to_string(value.bVal);
        case VT_I8:
            return std::to_string(value.llVal);
        case VT_UI4:
            return std::to_string(value.ulVal);
        case VT_R8:
            return std::to_string(static_cast<int64_t>(value.dblVal));
        case VT_BOOL:
        case VT_I2:
            return std::to_string(value.iVal);
        default:
            return std::to_string(value.lVal);
    }
}

const std::vector<tests::TextCase> kConversions = tests::TextCasesIn(
#include "platform/posix/change_type.txt"
);

class Conversions : public testing::TestWithParam<tests::TextCase> {};

TEST_P(Conversions, AreAsTheStandardHasThem)
{
    for (const std::string& line : GetParam().lines) {
        SCOPED_TRACE(line);
        std::istringstream words(line);
        std::string from, value, to, expected;
        words >> from >> std::quoted(value) >> to >> std::quoted(expected);
        VariantHolder source;
        Fill(*source.Get(), kTypes.at(from), value);
        const bool inWords = to == "WORDS";
        const Changed changed(source.Value(), inWords ? VARTYPE{VT_BSTR} : kTypes.at(to),
                              inWords ? VARIANT_ALPHABOOL : WORD{0});
        const std::map<HRESULT, std::string> failures{{DISP_E_OVERFLOW, "overflow"}, {DISP_E_TYPEMISMATCH, "mismatch"}};
        EXPECT_EQ(changed.result == S_OK ? Shown(changed.holder.Value()) : failures.at(changed.result), expected);
    }
}

INSTANTIATE_TEST_SUITE_P(ChangeType, Conversions, testing::ValuesIn(kConversions),
                         [](const auto& one) { return one.param.name; });

TEST(ChangeType, ReferencesAreFollowed)
{
    int32_t number = 77;
    VARIANT reference = Typed(VT_BYREF | VT_I4);
    reference.plVal = &number;
    EXPECT_EQ(Changed(reference, VT_I2).holder.Value().iVal, 77);

    const BstrHolder text(std::u16string_view(u"12"));
    BSTR bstr = text.Get();
    VARIANT textReference = Typed(VT_BYREF | VT_BSTR);
    textReference.pbstrVal = &bstr;
    EXPECT_EQ(Changed(textReference, VT_I4).AsLong(), 12);
    const Changed copy(textReference, VT_BSTR);
    EXPECT_EQ(copy.Text(), u"12");
    EXPECT_NE(copy.holder.Value().bstrVal, bstr);

    VARIANT inner = Long(5);
    VARIANT outer = Typed(VT_BYREF | VT_VARIANT);
    outer.pvarVal = &inner;
    EXPECT_EQ(Changed(outer, VT_BSTR).Text(), u"5");
    VARIANT outermost = Typed(VT_BYREF | VT_VARIANT);
    outermost.pvarVal = &outer;
    EXPECT_EQ(Changed(outermost, VT_BSTR).result, DISP_E_TYPEMISMATCH);
    outer.pvarVal = &textReference;
    EXPECT_EQ(Changed(outer, VT_I4).AsLong(), 12);
}

TEST(ChangeType, WorksInPlaceAndLeavesTheDestinationWhenItFails)
{
    VariantHolder value;
    value.Get()->vt = VT_BSTR;
    value.Get()->bstrVal = NewBstr(u"123");
    EXPECT_EQ(VariantChangeType(value.Get(), value.Get(), 0, VT_I4), S_OK);
    EXPECT_EQ(value.Value().vt, VT_I4);
    EXPECT_EQ(value.Value().lVal, 123);

    EXPECT_EQ(VariantChangeType(value.Get(), value.Get(), 0, VT_DISPATCH), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(value.Value().lVal, 123);
}

// Counts its references and knows both interfaces.
struct Counted : Numbered {
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override
    {
        if (!(riid == IID_IDispatch) || !knowsDispatch) {
            if (!(riid == IID_IUnknown)) return E_NOINTERFACE;
        }
        AddRef();
        *object = static_cast<IDispatch*>(this);
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++references); }
    ULONG STDMETHODCALLTYPE Release() override { return static_cast<ULONG>(--references); }
    int references = 1;
    bool knowsDispatch = true;
};

TEST(ChangeType, InterfacesAreCountedAndAskedFor)
{
    Counted object;
    VARIANT unknown = Typed(VT_UNKNOWN);
    unknown.punkVal = &object;
    {
        const Changed dispatch(unknown, VT_DISPATCH);
        EXPECT_EQ(dispatch.result, S_OK);
        EXPECT_EQ(dispatch.holder.Value().pdispVal, &object);
        EXPECT_EQ(object.references, 2);
    }
    EXPECT_EQ(object.references, 1) << "VariantClear gives it back";
    object.knowsDispatch = false;
    EXPECT_EQ(Changed(unknown, VT_DISPATCH).result, DISP_E_TYPEMISMATCH);

    IDispatch* none = nullptr;
    VARIANT reference = Typed(VT_BYREF | VT_DISPATCH);
    reference.ppdispVal = &none;
    const Changed nothing(reference, VT_DISPATCH);
    EXPECT_EQ(nothing.result, S_OK);
    EXPECT_EQ(nothing.holder.Value().pdispVal, nullptr);
}

}  // namespace
}  // namespace marbex::platform
