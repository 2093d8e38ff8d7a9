#include "platform/text.h"

#include <gtest/gtest.h>
#include <iconv.h>
#include <unistd.h>

#include "temp_registry.h"

namespace marbex::platform {
namespace {

using tests::TempRegistry;

// A code page in force for one test.
class AnsiPageGuard {
public:
    explicit AnsiPageGuard(const std::string& page)
    {
        registry_.Write("[HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage]\n\"ACP\"=\"" + page +
                        "\"\n");
        LoadAnsiCodePage(SystemRegistry());
    }
    ~AnsiPageGuard()
    {
        registry_.Write("");
        LoadAnsiCodePage(SystemRegistry());
    }

private:
    TempRegistry registry_;
};

// What the C library makes of bytes; empty when it refuses them.
std::u16string Judged(const char* page, const std::string& bytes)
{
    const iconv_t handle = iconv_open("UTF-16LE", page);
    EXPECT_NE(handle, reinterpret_cast<iconv_t>(-1)) << page;
    std::string in = bytes;
    char16_t room[64];
    char* from = in.data();
    char* to = reinterpret_cast<char*>(room);
    std::size_t left = in.size();
    std::size_t space = sizeof room;
    const bool refused = iconv(handle, &from, &left, &to, &space) == static_cast<std::size_t>(-1) ||
                         iconv(handle, nullptr, nullptr, &to, &space) == static_cast<std::size_t>(-1);
    iconv_close(handle);
    if (refused) return {};
    return {room, (sizeof room - space) / sizeof(char16_t)};
}

TEST(Text, SingleBytePagesAgreeWithTheCLibrary)
{
    struct Row {
        const char* number;
        const char* name;
    };
    const Row rows[] = {{"437", "IBM437"},  {"737", "CP737"},   {"850", "IBM850"},   {"852", "IBM852"},
                        {"857", "CP857"},   {"858", "CP858"},   {"864", "IBM864"},   {"866", "IBM866"},
                        {"874", "CP874"},   {"1250", "CP1250"}, {"1251", "CP1251"},  {"1252", "CP1252"},
                        {"1253", "CP1253"}, {"1254", "CP1254"}, {"1255", "CP1255"},  {"1256", "CP1256"},
                        {"1257", "CP1257"}, {"1258", "CP1258"}, {"20866", "KOI8-R"}, {"28605", "ISO-8859-15"}};
    for (const Row& row : rows) {
        const AnsiPageGuard page(row.number);
        for (unsigned value = 1; value < 256; ++value) {
            const std::string byte(1, static_cast<char>(value));
            const std::u16string judged = Judged(row.name, byte);
            const std::u16string wide = WidenAnsi(byte);
            ASSERT_EQ(wide, judged.empty() ? std::u16string(1, static_cast<char16_t>(value)) : judged)
                << row.number << " byte " << value;
            std::string strict;
            const CodePageResult result = ToCodePage(AnsiCodePage(), wide, strict);
            if (!judged.empty()) {
                ASSERT_EQ(result, CodePageResult::kOk) << row.number << " byte " << value;
                ASSERT_EQ(WidenAnsi(strict), wide);
            }
        }
    }
}

TEST(Text, WesternPageRoundTripsEveryByte)
{
    const AnsiPageGuard page("1252");
    std::string all;
    for (unsigned value = 0; value < 256; ++value)
        all += static_cast<char>(value);
    EXPECT_EQ(NarrowAnsi(WidenAnsi(all)), all);
    EXPECT_EQ(WidenAnsi("\x81\x80"), u"\u0081\u20AC");
    EXPECT_EQ(NarrowAnsi(u"a\u4E2D\u0416\U0001F600z"), "a????z");
    std::string bytes;
    EXPECT_EQ(ToCodePage(20290, u"a", bytes), CodePageResult::kUnknownCodePage);
}

TEST(Text, Utf8AsTheSystemPage)
{
    const AnsiPageGuard page("65001");
    const std::string text = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";
    EXPECT_EQ(WidenAnsi(text), u"a\u00E9\u20AC\U0001F600");
    EXPECT_EQ(NarrowAnsi(WidenAnsi(text)), text);
    std::u16string appended = u"x";
    WidenAnsi("\xC3\xA9", appended);
    EXPECT_EQ(appended, u"x\u00E9");
    const char16_t lone[] = {u'a', 0xDC00, u'b', 0xD800, 0};
    EXPECT_EQ(NarrowAnsi(lone), Utf8FromUtf16(lone));
}

TEST(Text, DoubleBytePageAsTheSystemPage)
{
    const AnsiPageGuard page("932");
    EXPECT_EQ(WidenAnsi("\x93\xFA\xB1\x61"), u"\u65E5\uFF71a");
    EXPECT_EQ(NarrowAnsi(u"\u65E5\uFF71a\u0416\u00E9"), "\x93\xFA\xB1\x61\x84\x47?");
}

// The name of the device to open is converted before anybody has opened anything.
TEST(TextDeathTest, TheFirstConversionReadsTheSystemPage)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");  // a process of its own, in which nothing was converted yet
    const TempRegistry registry(
        "[HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage]\n\"ACP\"=\"1251\"\n");
    EXPECT_EXIT(_exit(NarrowAnsi(u"\u0416") == "\xC6" ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST(Text, UnknownSystemPageIsWestern)
{
    for (const char* page : {"", "x", "20290", "1252x", "0", "99999"}) {
        const AnsiPageGuard guard(page);
        EXPECT_EQ(AnsiCodePage(), 1252u) << page;
    }
}

}  // namespace
}  // namespace marbex::platform
