#include "platform/reg_file.h"

#include <gtest/gtest.h>

#include "platform/text.h"

namespace marbex::platform {
namespace {

constexpr const char* kHeader = "Windows Registry Editor Version 5.00\n";
constexpr const char* kKey = "HKEY_LOCAL_MACHINE\\A";

RegDocument Parsed(const std::string& bytes)
{
    auto result = ParseRegFile(bytes);
    if (const auto* problem = std::get_if<RegParseProblem>(&result)) {
        ADD_FAILURE() << "line " << problem->line << ": " << problem->message;
        return {};
    }
    return std::get<RegDocument>(std::move(result));
}

RegDocument ParsedLines(const std::string& lines)
{
    return Parsed(kHeader + lines);
}

RegistryValue ValueOf(const RegDocument& document, std::string_view name)
{
    const RegEntry* entry = document.FindEntry(kKey, name);
    if (entry == nullptr) {
        ADD_FAILURE() << "no value " << name;
        return {};
    }
    return entry->value;
}

std::string Utf16File(const std::string& utf8, bool bigEndian)
{
    std::string bytes = bigEndian ? "\xFE\xFF" : "\xFF\xFE";
    for (const char16_t unit : Utf16FromUtf8(utf8)) {
        const char low = static_cast<char>(unit & 0xFF);
        const char high = static_cast<char>(unit >> 8);
        bytes += bigEndian ? high : low;
        bytes += bigEndian ? low : high;
    }
    return bytes;
}

TEST(RegFile, ReadsEveryKindOfValue)
{
    struct Row {
        const char* literal;
        RegistryType type;
        std::string data;
    };
    using std::string_literals::operator""s;
    const Row rows[] = {
        {R"("plain")", RegistryType::kSz, "plain"},
        {R"("C:\\logs \"x\"")", RegistryType::kSz, R"(C:\logs "x")"},
        {R"("C:\temp\new")", RegistryType::kSz, R"(C:\temp\new)"},  // typed by hand
        {R"("a;b]=")", RegistryType::kSz, "a;b]="},
        {"\"two\nlines\"", RegistryType::kSz, "two\nlines"},
        {"dword:0000238c", RegistryType::kDword, "\x8c\x23\0\0"s},
        {"DWORD:1 ; one", RegistryType::kDword, "\1\0\0\0"s},
        {"hex:", RegistryType::kBinary, ""},
        {"hex:06,00,2,\\\n  03,\\\n\t04", RegistryType::kBinary, "\6\0\2\3\4"s},
        {"hex(0):ff", RegistryType::kNone, "\xff"},
        {"hex(1):e9,00,20,00,ac,20,00,00", RegistryType::kSz, "\xC3\xA9 \xE2\x82\xAC"},
        {"hex(1):43,00,4f,00,4d,00,33,00,00,00,78,00,00,00", RegistryType::kSz, "COM3"},
        {"hex(2):25,00,78,00,25,00,00,00", RegistryType::kExpandSz, "%x%"},
        {"hex(7):61,00,00,00,62,00,00,00,00,00", RegistryType::kMultiSz, "a\0b\0\0"s},
        {"hex(b):01,02,03,04,05,06,07,08", RegistryType::kQword, "\1\2\3\4\5\6\7\x8"},
        {"hex(4):01,00", RegistryType::kDword, "\1\0"s},
        {"hex(ffff0001):00", static_cast<RegistryType>(0xffff0001), "\0"s},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.literal);
        const RegDocument read =
            ParsedLines("[HKEY_LOCAL_MACHINE\\A]\n\"v\"=" + std::string(row.literal) + "\n@=\"end\"\n");
        EXPECT_EQ(ValueOf(read, "V").type, row.type);
        EXPECT_EQ(ValueOf(read, "V").data, row.data);
        EXPECT_EQ(ValueOf(read, "").data, "end");

        // The same value set by a program, and so written in our own words, must read the same.
        RegDocument made;
        made.Set(kKey, RegEntry{{"v", row.type, row.data}, {}, {}});
        const RegDocument again = Parsed(WriteRegFile(made));
        EXPECT_EQ(ValueOf(again, "v").type, row.type);
        EXPECT_EQ(ValueOf(again, "v").data, row.data);
    }
}

TEST(RegFile, NamesTheLineOfAMistake)
{
    struct Row {
        const char* text;
        std::size_t line;
    };
    const Row rows[] = {
        {"REGEDIT5\n", 1},
        {"[HKEY_LOCAL_MACHINE\\A]\n", 1},
        {"Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\A\n", 3},
        {"Windows Registry Editor Version 5.00\n\n[SOFTWARE\\A]\n", 3},
        {"Windows Registry Editor Version 5.00\n\"a\"=\"b\"\n", 2},
        {"Windows Registry Editor Version 5.00\n[HKLM\\A]\nPort=9100\n", 3},
        {"Windows Registry Editor Version 5.00\n[HKLM\\A]\n\"Port\"=9100\n", 3},
        {"Windows Registry Editor Version 5.00\n[HKLM\\A]\n\"Port\" dword:1\n", 3},
        {"Windows Registry Editor Version 5.00\n[HKLM\\A]\n\"Port\"=dword:123456789\n", 3},
        {"Windows Registry Editor Version 5.00\n[HKLM\\A]\n\"Port\"=dword:12G\n", 3},
        {"Windows Registry Editor Version 5.00\n[HKLM\\A]\n\"F\"=hex:01,\\\n  0x,\n", 3},
        {"Windows Registry Editor Version 5.00\n[HKLM\\A]\n\"F\"=hex:012\n", 3},
        {"Windows Registry Editor Version 5.00\n[HKLM\\A]\n\"F\"=hex:01,,02\n", 3},
        // The missing quote is found only on the next line, but it is missing on this one.
        {"Windows Registry Editor Version 5.00\n[HKLM\\A]\n\"P\"=\"C:\\\"\n\"Q\"=\"x\"\n", 3},
        {"Windows Registry Editor Version 5.00\n[HKLM\\A]\n\n\n\"P\"=\"never closed\n", 5},
        {"Windows Registry Editor Version 5.00\n[HKLM\\A]\n; fine\n\"P\"=\"\xE9\"\n", 4},
    };
    for (const Row& row : rows) {
        const auto result = ParseRegFile(row.text);
        const auto* problem = std::get_if<RegParseProblem>(&result);
        ASSERT_NE(problem, nullptr) << row.text;
        EXPECT_EQ(problem->line, row.line) << row.text << problem->message;
        EXPECT_FALSE(problem->message.empty());
    }
}

// A till must not stand still because of a file that somebody made large.
TEST(RegFile, TakesBoundedTimeAndMemory)
{
    const auto lines = [](std::size_t count, const std::string& before, const std::string& behind) {
        std::string all;
        for (std::size_t i = 0; i < count; ++i)
            all += before + std::to_string(i) + behind;
        return all;
    };
    const std::string key = "[HKLM\\A]\n";
    for (const auto& [text, message] : std::vector<std::pair<std::string, std::string>>{
             {lines(100'001, "[HKLM\\", "]\n"), "more than 100000 keys"},
             {key + lines(51, "\"", "\"=-\n") + lines(50, "[-HKLM\\", "]\n"), "more than 100 deletions"},
             {"[HKLM" + lines(513, "\\", "") + "]\n", "a key of more than 512 parts"}}) {
        const auto result = ParseRegFile(kHeader + text);
        const auto* problem = std::get_if<RegParseProblem>(&result);
        ASSERT_NE(problem, nullptr) << message;
        EXPECT_EQ(problem->message, message);
    }

    // The values of one key, of which there are many; looking through all of them for each would take minutes.
    constexpr int kMany = 40'000;
    RegDocument document = ParsedLines(key + lines(kMany, "\"v", "\"=\"old\"\n") + lines(kMany, "\"V", "\"=\"new\"\n"));
    for (const char* name : {"v0", "v17", "v20000"})
        ASSERT_TRUE(document.DeleteEntry(kKey, name));
    EXPECT_FALSE(document.DeleteEntry(kKey, "v17"));
    document.Set(kKey, RegEntry{{"v17", RegistryType::kSz, "again"}, {}, {}});
    EXPECT_EQ(document.EntryCount(), kMany - 2U);
    EXPECT_EQ(ValueOf(document, "v1").data, "new");
    EXPECT_EQ(ValueOf(document, "v19999").data, "new");
    EXPECT_EQ(ValueOf(document, "v20001").data, "new");
    EXPECT_EQ(ValueOf(document, "v17").data, "again");
    EXPECT_EQ(document.FindEntry(kKey, "v0"), nullptr);
}

TEST(RegFile, ReadsTheEncodingsOfExports)
{
    const std::string text =
        "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_LOCAL_MACHINE\\A]\r\n\"K\xC3\xB6ln\"=\"\xE2\x82\xAC\"\r\n";
    for (const std::string& bytes : {text, "\xEF\xBB\xBF" + text, Utf16File(text, false), Utf16File(text, true)}) {
        RegDocument document = Parsed(bytes);
        EXPECT_EQ(ValueOf(document, "k\xC3\x96LN").data, "\xE2\x82\xAC");
        // What was read is written back byte for byte (big-endian files turn little-endian).
        EXPECT_EQ(WriteRegFile(document), bytes.starts_with("\xFE\xFF") ? Utf16File(text, false) : bytes);
    }
    // The predecessor tells text in the ANSI code page, also inside hex(2).
    const RegDocument old =
        Parsed("REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\A]\r\n\"n\"=\"\xE9\"\r\n\"e\"=hex(2):80,00\r\n");
    EXPECT_EQ(ValueOf(old, "n").data, "\xC3\xA9");
    EXPECT_EQ(ValueOf(old, "e").data, "\xE2\x82\xAC");
    const RegDocument renewed = Parsed(WriteRegFile(old));
    EXPECT_EQ(ValueOf(renewed, "n").data, "\xC3\xA9");
    EXPECT_EQ(ValueOf(renewed, "e").data, "\xE2\x82\xAC");
    EXPECT_TRUE(Parsed("").Sections().empty());
}

TEST(RegFile, DeletionsActOnWhatStandsAbove)
{
    const RegDocument document = ParsedLines(
        "[HKLM\\A]\n\"keep\"=\"1\"\n\"drop\"=\"2\"\n[HKLM\\A\\B]\n[HKLM\\A\\B\\C]\n[HKLM\\AB]\n"
        "[-HKLM\\a\\b]\n\"below a deleted key\"=\"x\"\n[HKEY_LOCAL_MACHINE\\a]\n\"DROP\"=-\n\"again\"=\"3\"\n");
    EXPECT_EQ(ValueOf(document, "keep").data, "1");
    EXPECT_EQ(ValueOf(document, "again").data, "3");
    EXPECT_EQ(document.FindEntry(kKey, "drop"), nullptr);
    EXPECT_FALSE(document.KeyExists("HKEY_LOCAL_MACHINE\\A\\B"));
    EXPECT_EQ(document.Subkeys("HKEY_LOCAL_MACHINE"), (std::vector<std::string>{"A", "AB"}));
}

TEST(RegFile, LeavesWhatNobodyChangedAsItStood)
{
    const std::string text = std::string(kHeader) +
                             "\n; till 4\n[HKEY_CURRENT_USER\\Other]\n\"x\"=hex(2):25,00,\\\n  00,00\n"
                             "\n[HKEY_LOCAL_MACHINE\\B]\n; the printer by the door\n\"Port\"=DWORD:238C ; usual\n"
                             "\n[HKEY_LOCAL_MACHINE\\A\\Deep]\n@=\"d\"\n"
                             "\n[HKEY_LOCAL_MACHINE\\B\\Sub]\n\n; the end\n";
    RegDocument document = Parsed(text);
    EXPECT_EQ(WriteRegFile(document), text);

    document.Set("HKEY_LOCAL_MACHINE\\B", RegEntry{{"port", RegistryType::kDword, std::string("\1\0\0\0", 4)}, {}, {}});
    document.Ensure("HKEY_LOCAL_MACHINE\\A\\New");
    document.DeleteKey("HKEY_LOCAL_MACHINE\\A\\Deep");
    document.DeleteKey("HKEY_LOCAL_MACHINE\\A\\New");
    const std::string expected = std::string(kHeader) +
                                 "\n; till 4\n[HKEY_CURRENT_USER\\Other]\n\"x\"=hex(2):25,00,\\\n  00,00\n"
                                 "\n[HKEY_LOCAL_MACHINE\\B]\n; the printer by the door\n\"port\"=dword:00000001\n"
                                 "\n[HKEY_LOCAL_MACHINE\\B\\Sub]\n"
                                 "\n[HKEY_LOCAL_MACHINE\\A]\n\n; the end\n";
    EXPECT_EQ(WriteRegFile(document), expected);
}

}  // namespace
}  // namespace marbex::platform
