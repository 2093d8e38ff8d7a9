#include "platform/text.h"

#include <gtest/gtest.h>
#include <windows.h>

#include "platform/code_page.h"

namespace marbex::platform {
namespace {

// The tables made here say of every character what the system says of it, undefined bytes apart.
TEST(Text, SingleBytePagesAgreeWithTheSystem)
{
    for (const uint32_t number : {437U,  720U,  737U,  850U,  852U,  855U,  857U,  862U,  864U,   866U,   874U,  1250U,
                                  1251U, 1252U, 1253U, 1254U, 1255U, 1256U, 1257U, 1258U, 20866U, 28591U, 28605U}) {
        if (!IsValidCodePage(number)) continue;
        unsigned held = 0;
        for (unsigned unit = 1; unit < 0xD800; ++unit) {
            const auto character = static_cast<wchar_t>(unit);
            char byte = 0;
            BOOL substituted = FALSE;
            ASSERT_EQ(WideCharToMultiByte(number, WC_NO_BEST_FIT_CHARS, &character, 1, &byte, 1, nullptr, &substituted),
                      1)
                << number;
            std::string bytes;
            const char16_t text[] = {static_cast<char16_t>(unit), 0};
            if (ToCodePage(number, text, bytes) == CodePageResult::kOk) {
                ++held;
                ASSERT_FALSE(substituted) << number << ": " << unit;
                ASSERT_EQ(bytes, std::string(1, byte)) << number << ": " << unit;
            } else {
                const bool undefinedByte = unit >= 0x80 && unit <= 0x9F;
                ASSERT_TRUE(substituted || undefinedByte) << number << ": " << unit;
            }
        }
        EXPECT_GE(held, 170U) << number;
    }
}

TEST(Text, UndefinedBytesBecomeTheirOwnValue)
{
    std::u16string wide;
    FindCodePage(1252)->Widen("\x81\x8D", wide);
    FindCodePage(874)->Widen("\xDB\xFC", wide);  // the private use area for the system
    FindCodePage(1255)->Widen("\xD9\x81", wide);
    FindCodePage(932)->Widen("\x80\xA0\xFD\xFF", wide);
    FindCodePage(949)->Widen("\x80\xFF", wide);
    FindCodePage(1361)->Widen("\x83\xD4\xFF", wide);
    EXPECT_EQ(wide, u"\u0081\u008D\u00DB\u00FC\u00D9\u0081\u0080\u00A0\u00FD\u00FF\u0080\u00FF\u0083\u00D4\u00FF");
}

TEST(Text, DoubleBytePagesHoldOnlyWhatComesBack)
{
    for (const uint32_t number : {932U, 936U, 949U, 950U, 1361U}) {
        for (unsigned unit = 1; unit < 0xD800; ++unit) {
            const char16_t text[] = {static_cast<char16_t>(unit), 0};
            std::string bytes;
            std::u16string wide;
            if (ToCodePage(number, text, bytes) != CodePageResult::kOk) continue;
            FindCodePage(number)->Widen(bytes, wide);
            ASSERT_EQ(wide, text) << number;
        }
    }
}

TEST(Text, MainframePages)
{
    std::string bytes;
    if (ToCodePage(500, u"Az", bytes) == CodePageResult::kUnknownCodePage) GTEST_SKIP() << "code page 500 is missing";
    EXPECT_EQ(bytes, "\xC1\xA9");
}

TEST(Text, AnsiIsTheSystemsOwn)
{
    EXPECT_EQ(AnsiCodePage(), GetACP());
    const std::u16string text = u"Bon 1: \u20AC";
    const std::string narrow = NarrowAnsi(text);
    EXPECT_TRUE(narrow.starts_with("Bon 1: "));
    if (narrow.back() != '?') {
        EXPECT_EQ(WidenAnsi(narrow), text);
    }
    // Nothing holds half a character.
    EXPECT_EQ(NarrowAnsi(u"a\u0001b"),
              "a\x01"
              "b");
}

}  // namespace
}  // namespace marbex::platform
