#include "platform/text.h"

#include <gtest/gtest.h>

#include <thread>

#include "platform/code_page.h"

namespace marbex::platform {
namespace {

std::u16string Widened(uint32_t page, std::string_view bytes)
{
    std::u16string wide;
    FindCodePage(page)->Widen(bytes, wide);
    return wide;
}

TEST(Text, WesternPage)
{
    EXPECT_EQ(Widened(1252, "\x81\x80\xE9"), u"\u0081\u20AC\u00E9");
    // A C1 control is no character of the page that a printer could show.
    std::string bytes = "kept";
    EXPECT_EQ(ToCodePage(1252, u"a\u0081", bytes), CodePageResult::kUnmappable);
    EXPECT_EQ(ToCodePage(12345, u"a", bytes), CodePageResult::kUnknownCodePage);
    EXPECT_EQ(ToCodePage(0, u"a", bytes), CodePageResult::kUnknownCodePage);
    EXPECT_EQ(ToCodePage(65535, u"a", bytes), CodePageResult::kUnknownCodePage);
    EXPECT_EQ(ToCodePage(1252 + 65536, u"a", bytes), CodePageResult::kUnknownCodePage);
    EXPECT_EQ(bytes, "kept");
    EXPECT_EQ(ToCodePage(1252, u"\u20AC", bytes), CodePageResult::kOk);
    EXPECT_EQ(bytes, "kept\x80");
}

TEST(Text, NothingIsReplacedByABestFit)
{
    for (const uint32_t page : {437U, 850U, 858U, 866U, 874U, 949U, 1250U, 1251U, 1252U, 1258U}) {
        if (FindCodePage(page) == nullptr) continue;  // not every Windows has all of them
        for (const char16_t character : {u'\u2260', u'\uFF21', u'\u0100', u'\u1EA4', u'\u0308', u'\u221E'}) {
            std::string bytes;
            const std::u16string text(1, character);
            if (ToCodePage(page, text, bytes) != CodePageResult::kOk) continue;
            // Whatever is said to be held must come back as itself.
            EXPECT_EQ(Widened(page, bytes), text) << page;
        }
    }
    std::string bytes;
    EXPECT_EQ(ToCodePage(1258, u"\u1EA4", bytes), CodePageResult::kUnmappable) << "decomposed into two bytes";
    EXPECT_EQ(ToCodePage(437, u"\u20AC", bytes), CodePageResult::kUnmappable);
    EXPECT_EQ(ToCodePage(1252, u"\u221E", bytes), CodePageResult::kUnmappable) << "made an 8";
    EXPECT_EQ(ToCodePage(1252, u"\u0100", bytes), CodePageResult::kUnmappable) << "made an A";
}

struct DoubleByteRow {
    uint32_t number;
    const char16_t* text;
    std::string bytes;

    friend void PrintTo(const DoubleByteRow& row, std::ostream* out) { *out << "code page " << row.number; }
};

class DoubleBytePage : public testing::TestWithParam<DoubleByteRow> {};

TEST_P(DoubleBytePage, ConvertsBothWays)
{
    const DoubleByteRow& row = GetParam();
    if (FindCodePage(row.number) == nullptr) GTEST_SKIP() << "this system has no code page " << row.number;
    std::string bytes;
    EXPECT_EQ(ToCodePage(row.number, row.text, bytes), CodePageResult::kOk);
    EXPECT_EQ(bytes, row.bytes);
    EXPECT_EQ(Widened(row.number, row.bytes), row.text);
    // A lead byte whose second one is missing or wrong must not swallow what follows.
    EXPECT_EQ(Widened(row.number, "\x81\x0Aok"), u"\uFFFD\x0Aok");
    EXPECT_EQ(Widened(row.number, row.bytes.substr(0, 1)), u"\uFFFD");
    const char16_t lone[] = {0xD800, 0};
    EXPECT_EQ(ToCodePage(row.number, lone, bytes), CodePageResult::kUnmappable);
}

INSTANTIATE_TEST_SUITE_P(
    Text, DoubleBytePage,
    testing::Values(DoubleByteRow{932, u"\u65E5\uFF71a", "\x93\xFA\xB1\x61"},
                    DoubleByteRow{936, u"\u4E2Da", "\xD6\xD0\x61"}, DoubleByteRow{949, u"\uD55Ca", "\xC7\xD1\x61"},
                    DoubleByteRow{950, u"\u4E2Da", "\xA4\xA4\x61"},
                    DoubleByteRow{54936, u"\u4E2D\u00E9\U0001F600a", "\xD6\xD0\xA8\xA6\x94\x39\xFC\x36\x61"}),
    [](const auto& row) { return std::to_string(row.param.number); });

TEST(Text, Utf8)
{
    // Table 3-8 of the Unicode Standard: overlong, surrogate, too large and cut-off sequences.
    EXPECT_EQ(Widened(65001, "\xC0\xAF\xE0\x80\xBF\xF0\x81\x82\x41"),
              u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDA");
    EXPECT_EQ(Widened(65001, "\xED\xA0\x80\xED\xBF\xBF\xED\xAF\x41"),
              u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDA");
    EXPECT_EQ(Widened(65001, "\xF4\x91\x92\x93\xFF\x41\x80\xBF\x42"), u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDA\uFFFD\uFFFDB");
    EXPECT_EQ(Widened(65001, "\xE1\x80\xE2\xF0\x91\x92\xF1\xBF\x41"), u"\uFFFD\uFFFD\uFFFD\uFFFDA");
    const char16_t lone[] = {u'a', 0xDC00, u'b', 0xD800, 0};
    EXPECT_EQ(Utf8FromUtf16(lone),
              "a\xEF\xBF\xBD"
              "b\xEF\xBF\xBD");
    EXPECT_EQ(Utf16FromUtf8("a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"), u"a\u00E9\u20AC\U0001F600");
}

TEST(Text, ThreadsMeetAtTheFirstUseOfAPage)
{
    std::thread threads[4];
    for (std::thread& thread : threads) {
        thread = std::thread([] {
            for (const uint32_t page : {861u, 950u, 28592u, 932u}) {
                std::string bytes;
                EXPECT_EQ(ToCodePage(page, u"A", bytes), CodePageResult::kOk);
                EXPECT_EQ(bytes, "A");
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

}  // namespace
}  // namespace marbex::platform
