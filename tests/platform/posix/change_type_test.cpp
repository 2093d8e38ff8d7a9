#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

#include "platform/automation.h"
#include "platform/numbered_object.h"

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

VARIANT Big(int64_t value)
{
    VARIANT variant = Typed(VT_I8);
    variant.llVal = value;
    return variant;
}

VARIANT Real(double value)
{
    VARIANT variant = Typed(VT_R8);
    variant.dblVal = value;
    return variant;
}

VARIANT Boolean(bool value)
{
    VARIANT variant = Typed(VT_BOOL);
    variant.boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
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

HRESULT TextTo(std::u16string_view text, VARTYPE type, VARIANT& made)
{
    const BstrHolder bstr(text);
    VARIANT source = Typed(VT_BSTR);
    source.bstrVal = bstr.Get();
    VariantInit(&made);
    return VariantChangeType(&made, &source, 0, type);
}

TEST(ChangeType, IntegersFitOrOverflow)
{
    EXPECT_EQ(Changed(Big(-2147483648LL), VT_I4).AsLong(), std::numeric_limits<int32_t>::min());
    EXPECT_EQ(Changed(Big(2147483648LL), VT_I4).result, DISP_E_OVERFLOW);
    EXPECT_EQ(Changed(Big(2147483648LL), VT_UI4).holder.Value().ulVal, 0x80000000U);
    EXPECT_EQ(Changed(Long(-1), VT_UI4).result, DISP_E_OVERFLOW);
    EXPECT_EQ(Changed(Long(-1), VT_I8).holder.Value().llVal, -1);
    EXPECT_EQ(Changed(Long(255), VT_UI1).holder.Value().bVal, 255);
    EXPECT_EQ(Changed(Long(256), VT_UI1).result, DISP_E_OVERFLOW);
    EXPECT_EQ(Changed(Long(-32769), VT_I2).result, DISP_E_OVERFLOW);

    VARIANT large = Typed(VT_UI8);
    large.ullVal = 0xFFFFFFFFFFFFFFFF;
    EXPECT_EQ(Changed(large, VT_I8).result, DISP_E_OVERFLOW);
    EXPECT_EQ(Changed(large, VT_BSTR).Text(), u"18446744073709551615");
    VARIANT small = Typed(VT_I1);
    small.cVal = -7;
    const Changed widened(small, VT_INT);
    EXPECT_EQ(widened.AsLong(), -7);
    EXPECT_EQ(widened.holder.Value().vt, VT_INT);
}

TEST(ChangeType, RealsRoundHalvesToTheEvenNumber)
{
    const struct {
        double real;
        int32_t whole;
    } rows[] = {{0.5, 0}, {1.5, 2}, {2.5, 2}, {-0.5, 0}, {-1.5, -2}, {2.51, 3}, {-2147483648.5, -2147483647 - 1}};
    for (const auto& row : rows)
        EXPECT_EQ(Changed(Real(row.real), VT_I4).AsLong(), row.whole) << row.real;
    EXPECT_EQ(Changed(Real(2147483647.5), VT_I4).result, DISP_E_OVERFLOW);
    EXPECT_EQ(Changed(Real(9223372036854775808.0), VT_I8).result, DISP_E_OVERFLOW);
    EXPECT_EQ(Changed(Real(std::numeric_limits<double>::quiet_NaN()), VT_I4).result, DISP_E_OVERFLOW);
    EXPECT_EQ(Changed(Real(1e300), VT_R4).result, DISP_E_OVERFLOW);
    EXPECT_EQ(Changed(Long(3), VT_R8).holder.Value().dblVal, 3.0);

    VARIANT date = Typed(VT_DATE);
    date.dblVal = 2.5;
    EXPECT_EQ(Changed(date, VT_I4).AsLong(), 2);
    VARIANT currency = Typed(VT_CY);
    currency.llVal = 125000;
    EXPECT_EQ(Changed(currency, VT_BSTR).Text(), u"12.5");
}

TEST(ChangeType, TextIsReadAsANumberOrRefused)
{
    const struct {
        const char16_t* text;
        HRESULT result;
        int32_t number;
    } rows[] = {
        {u"42", S_OK, 42},
        {u"  -7 ", S_OK, -7},
        {u"+5", S_OK, 5},
        {u"2.5", S_OK, 2},
        {u"1e3", S_OK, 1000},
        {u"True", S_OK, -1},
        {u"2147483648", DISP_E_OVERFLOW, 0},
        {u"1e999", DISP_E_OVERFLOW, 0},
        {u"99999999999999999999999", DISP_E_OVERFLOW, 0},
        {u"", DISP_E_TYPEMISMATCH, 0},
        {u"   ", DISP_E_TYPEMISMATCH, 0},
        {u"12x", DISP_E_TYPEMISMATCH, 0},
        {u"+-3", DISP_E_TYPEMISMATCH, 0},
        {u"-", DISP_E_TYPEMISMATCH, 0},
        {u"inf", DISP_E_TYPEMISMATCH, 0},
        {u"0x10", DISP_E_TYPEMISMATCH, 0},
        {u"٣", DISP_E_TYPEMISMATCH, 0},
    };
    for (const auto& row : rows) {
        VARIANT made;
        EXPECT_EQ(TextTo(row.text, VT_I4, made), row.result) << testing::PrintToString(std::u16string(row.text));
        EXPECT_EQ(made.lVal, row.number) << testing::PrintToString(std::u16string(row.text));
    }
    VARIANT made;
    EXPECT_EQ(TextTo(u"0", VT_BOOL, made), S_OK);
    EXPECT_EQ(made.boolVal, VARIANT_FALSE);
    EXPECT_EQ(TextTo(u"3", VT_BOOL, made), S_OK);
    EXPECT_EQ(made.boolVal, VARIANT_TRUE);
}

TEST(ChangeType, NumbersAreWrittenAsText)
{
    EXPECT_EQ(Changed(Long(-12), VT_BSTR).Text(), u"-12");
    EXPECT_EQ(Changed(Real(0.1), VT_BSTR).Text(), u"0.1");
    EXPECT_EQ(Changed(Real(1e20), VT_BSTR).Text(), u"1E+20");
    VARIANT single = Typed(VT_R4);
    single.fltVal = 0.1F;
    EXPECT_EQ(Changed(single, VT_BSTR).Text(), u"0.1");
    EXPECT_EQ(Changed(Boolean(true), VT_BSTR).Text(), u"-1");
    EXPECT_EQ(Changed(Boolean(true), VT_BSTR, VARIANT_ALPHABOOL).Text(), u"True");
    EXPECT_EQ(Changed(Boolean(false), VT_BSTR, VARIANT_ALPHABOOL).Text(), u"False");
    EXPECT_EQ(Changed(Typed(VT_EMPTY), VT_BSTR).Text(), u"");
}

TEST(ChangeType, TruthHasAllBitsSet)
{
    EXPECT_EQ(Changed(Boolean(true), VT_I4).AsLong(), -1);
    EXPECT_EQ(Changed(Boolean(true), VT_UI1).holder.Value().bVal, 255);
    EXPECT_EQ(Changed(Boolean(true), VT_UI4).holder.Value().ulVal, 0xFFFFFFFF);
    EXPECT_EQ(Changed(Boolean(false), VT_UI4).holder.Value().ulVal, 0U);
    EXPECT_EQ(Changed(Long(2), VT_BOOL).holder.Value().boolVal, VARIANT_TRUE);
    EXPECT_EQ(Changed(Real(0.25), VT_BOOL).holder.Value().boolVal, VARIANT_TRUE);
    EXPECT_EQ(Changed(Typed(VT_EMPTY), VT_BOOL).holder.Value().boolVal, VARIANT_FALSE);
}

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
    EXPECT_EQ(Changed(Typed(VT_NULL), VT_I4).result, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(Changed(Typed(VT_ERROR), VT_I4).result, DISP_E_TYPEMISMATCH) << "a missing argument is no number";
    EXPECT_EQ(Changed(Typed(0x2000 | VT_I4), VT_I4).result, DISP_E_TYPEMISMATCH) << "nor is an array";
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
