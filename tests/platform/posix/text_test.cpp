#include "platform/text.h"

#include <gtest/gtest.h>
#include <iconv.h>
#include <unistd.h>

#include <cerrno>
#include <map>
#include <optional>

#include "platform/code_page.h"
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

// A conversion of the C library, one character at a time.
class Judge {
public:
    Judge(const char* to, const char* from) : handle_(iconv_open(to, from)) {}
    ~Judge()
    {
        if (Knows()) iconv_close(handle_);
    }
    Judge(const Judge&) = delete;
    Judge& operator=(const Judge&) = delete;

    bool Knows() const { return handle_ != reinterpret_cast<iconv_t>(-1); }

    // errno says why there is no answer.
    template <typename Unit, typename From>
    std::optional<std::basic_string<Unit>> operator()(std::basic_string<From> text) const
    {
        Unit room[8];
        char* from = reinterpret_cast<char*>(text.data());
        char* to = reinterpret_cast<char*>(room);
        std::size_t left = text.size() * sizeof(From);
        std::size_t space = sizeof room;
        iconv(handle_, nullptr, nullptr, nullptr, nullptr);
        if (iconv(handle_, &from, &left, &to, &space) != 0) return std::nullopt;
        if (iconv(handle_, nullptr, nullptr, &to, &space) != 0) return std::nullopt;
        return std::basic_string<Unit>(room, (sizeof room - space) / sizeof(Unit));
    }

private:
    iconv_t handle_;
};

std::string NameInTheCLibrary(uint32_t page)
{
    const std::map<uint32_t, std::string> names = {
        {949, "UHC"},      {10000, "MACINTOSH"}, {20127, "US-ASCII"}, {20866, "KOI8-R"},  {21866, "KOI8-U"},
        {51932, "EUC-JP"}, {51936, "EUC-CN"},    {51949, "EUC-KR"},   {54936, "GB18030"}, {65001, "UTF-8"}};
    if (const auto found = names.find(page); found != names.end()) return found->second;
    if (page > 28590 && page < 28610) return "ISO-8859-" + std::to_string(page - 28590);
    return "CP" + std::to_string(page);
}

// Bytes that Windows has as the first of characters which users define, and the C library has not.
bool BeginsUsersCharacter(uint32_t page, unsigned byte)
{
    return (page == 949 || page == 950) && byte >= 0x81 && byte <= 0xFE;
}

// Of every page that there is, the bytes that it leaves undefined included. A character for which the C library would
// print a similar one (a backslash for the yen sign in 932) is not held.
TEST(Text, EveryPageAgreesWithTheCLibrary)
{
    unsigned pages = 0;
    for (uint32_t number = 1; number < 0x10000; ++number) {
        const CodePage* page = FindCodePage(number);
        if (page == nullptr) continue;
        ++pages;
        const std::string name = NameInTheCLibrary(number);
        const Judge widen("UTF-16LE", name.c_str());
        const Judge narrow(name.c_str(), "UTF-16LE");
        ASSERT_TRUE(widen.Knows() && narrow.Knows()) << name;
        for (unsigned value = 0; value < 256; ++value) {
            const std::string byte(1, static_cast<char>(value));
            std::u16string wide;
            page->Widen(byte, wide);
            const auto judged = widen.operator()<char16_t>(byte);
            const bool begins = !judged && (errno == EINVAL || BeginsUsersCharacter(number, value) || number == 65001);
            const auto undefined = static_cast<char16_t>(begins ? 0xFFFD : value);
            ASSERT_EQ(wide, judged.value_or(std::u16string(1, undefined))) << number << " byte " << value;
        }
        for (unsigned unit = 0; unit < 0x10000; ++unit) {
            if (unit >= 0xD800 && unit <= 0xDFFF) continue;
            const std::u16string text(1, static_cast<char16_t>(unit));
            std::string bytes;
            std::u16string wide;
            const bool held = ToCodePage(number, text, bytes) == CodePageResult::kOk;
            page->Widen(bytes, wide);
            ASSERT_TRUE(!held || wide == text) << number << " character " << unit;
            const auto judged = narrow.operator()<char>(text);
            // Of Hebrew and Vietnamese the C library makes one character of several that are in the page.
            const bool composed = judged && judged->size() > 1 && (number == 1255 || number == 1258);
            const bool comesBack = judged && !composed && widen.operator()<char16_t>(*judged) == text;
            ASSERT_EQ(held, comesBack) << number << " character " << unit;
        }
    }
    EXPECT_GE(pages, 50U);
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
    EXPECT_EQ(NarrowAnsi(u"\u65E5\uFF71a\u0416\u00E9\u00A5"), "\x93\xFA\xB1\x61\x84\x47??");
    // What the page leaves undefined goes there and back as it is.
    EXPECT_EQ(WidenAnsi("\x80\xFD"), u"\u0080\u00FD");
    EXPECT_EQ(NarrowAnsi(u"\u0080"), "\x80");
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
