#include "platform/automation.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "platform/numbered_object.h"

namespace marbex::platform {
namespace {

TEST(Bstr, CountsItsUnitsInFrontOfTheText)
{
    const BstrHolder text(std::u16string_view(u"a\0b", 3));
    EXPECT_EQ(SysStringLen(text.Get()), 3U);
    EXPECT_EQ(SysStringByteLen(text.Get()), 6U);
    uint32_t count = 0;
    std::memcpy(&count, reinterpret_cast<const char*>(text.Get()) - 4, 4);
    EXPECT_EQ(count, 6U);
    EXPECT_EQ(text.Get()[3], 0) << "and a zero after it";
    EXPECT_EQ(BstrView(text.Get()), std::u16string_view(u"a\0b", 3));

    BSTR const whole = SysAllocString(text.Get());
    EXPECT_EQ(BstrView(whole), u"a") << "up to its first zero";
    SysFreeString(whole);

    EXPECT_EQ(SysAllocString(nullptr), nullptr);
    EXPECT_EQ(SysStringLen(nullptr), 0U);
    EXPECT_EQ(SysStringByteLen(nullptr), 0U);
    EXPECT_TRUE(BstrView(nullptr).empty());
    SysFreeString(nullptr);
    const BstrHolder empty{std::u16string_view()};
    EXPECT_NE(empty.Get(), nullptr) << "empty is not null";
    EXPECT_EQ(SysStringLen(empty.Get()), 0U);
    EXPECT_EQ(SysAllocStringLen(nullptr, 0xFFFFFFFF), nullptr);
}

TEST(Layout, IsThatOfThe64BitHeaders)
{
    if (sizeof(void*) == 4) GTEST_SKIP() << "pointers are shorter here";
    EXPECT_EQ(sizeof(VARIANT), 24U);
    EXPECT_EQ(offsetof(VARIANT, lVal), 8U);
    EXPECT_EQ(offsetof(VARIANT, bstrVal), 8U);
    EXPECT_EQ(sizeof(DISPPARAMS), 24U);
    EXPECT_EQ(offsetof(DISPPARAMS, rgdispidNamedArgs), 8U);
    EXPECT_EQ(offsetof(DISPPARAMS, cArgs), 16U);
    EXPECT_EQ(offsetof(DISPPARAMS, cNamedArgs), 20U);
    EXPECT_EQ(sizeof(EXCEPINFO), 64U);
    EXPECT_EQ(offsetof(EXCEPINFO, bstrSource), 8U);
    EXPECT_EQ(offsetof(EXCEPINFO, dwHelpContext), 32U);
    EXPECT_EQ(offsetof(EXCEPINFO, pfnDeferredFillIn), 48U);
    EXPECT_EQ(offsetof(EXCEPINFO, scode), 56U);
    EXPECT_EQ(sizeof(GUID), 16U);
    EXPECT_EQ(offsetof(GUID, Data4), 8U);
}

struct NumberedFactory : IClassFactory {
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return 200; }
    ULONG STDMETHODCALLTYPE AddRef() override { return 201; }
    ULONG STDMETHODCALLTYPE Release() override { return 202; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID, void**) override { return 203; }
    HRESULT STDMETHODCALLTYPE LockServer(int32_t lock) override { return 204 + lock; }
};

TEST(Layout, VtablesAreInThePublishedOrder)
{
    Numbered object;
    using Simple = HRESULT (*)(void*);
    void** const table = *reinterpret_cast<void***>(static_cast<IDispatch*>(&object));
    for (int slot = 1; slot <= 2; ++slot)
        EXPECT_EQ(reinterpret_cast<Simple>(table[slot])(&object), 100 + slot);
    EXPECT_EQ(reinterpret_cast<HRESULT (*)(void*, const GUID*, void**)>(table[0])(&object, &IID_NULL, nullptr), 100);
    EXPECT_EQ(reinterpret_cast<HRESULT (*)(void*, UINT*)>(table[3])(&object, nullptr), 103);
    EXPECT_EQ(reinterpret_cast<HRESULT (*)(void*, UINT, LCID, void**)>(table[4])(&object, 0, 0, nullptr), 104);
    EXPECT_EQ(reinterpret_cast<HRESULT (*)(void*, const GUID*, OLECHAR**, UINT, LCID, int32_t*)>(table[5])(
                  &object, &IID_NULL, nullptr, 0, 0, nullptr),
              105);
    UINT argument = 0;
    using Invoke = HRESULT (*)(void*, int32_t, const GUID*, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*);
    EXPECT_EQ(reinterpret_cast<Invoke>(table[6])(&object, 100, &IID_NULL, 0, 1, nullptr, nullptr, nullptr, &argument),
              106);
    EXPECT_EQ(argument, 1U);

    NumberedFactory factory;
    void** const factoryTable = *reinterpret_cast<void***>(static_cast<IClassFactory*>(&factory));
    using Create = HRESULT (*)(void*, void*, const GUID*, void**);
    EXPECT_EQ(reinterpret_cast<Create>(factoryTable[3])(&factory, nullptr, &IID_NULL, nullptr), 203);
    EXPECT_EQ(reinterpret_cast<HRESULT (*)(void*, int32_t)>(factoryTable[4])(&factory, 1), 205);
}

}  // namespace
}  // namespace marbex::platform
