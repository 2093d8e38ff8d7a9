#include <gtest/gtest.h>

#include <map>
#include <string>
#include <thread>
#include <vector>

#include "missing_code_pages.h"
#include "platform/text.h"
#include "printer/charset_encoder.h"
#include "printer/charset_switcher.h"
#include "printer/charset_tables.h"

namespace marbex::printer {
namespace {

using namespace std::string_literals;
using support::CharSetStruct;

const std::string kMarker(support::kNulMarker);
// FS % 0 ESC t, as it stands in converted data.
const std::string kPrefixA = "\x1C%" + kMarker + "\x1Bt";

std::vector<CharSetStruct> Sets(std::initializer_list<uint8_t> numbers)
{
    std::vector<CharSetStruct> sets;
    for (const uint8_t number : numbers)
        sets.push_back(*support::FindCharacterSet(number));
    return sets;
}

std::string Convert(const std::vector<CharSetStruct>& sets, uint32_t fixedCodePage, std::u16string_view text)
{
    CharsetSwitcher switcher(sets, fixedCodePage);
    std::string out;
    for (const char16_t character : text)
        switcher.ConvertCharacter(character, out);
    return out;
}

// A code page that this system may be without, and is.
bool IsMissing(uint32_t codePage)
{
    std::string bytes;
    return tests::MayBeMissing(codePage) &&
           platform::ToCodePage(codePage, u"A", bytes) == platform::CodePageResult::kUnknownCodePage;
}

// The system's own tables come from somewhere else than ours.
TEST(CharsetTables, AgreeWithTheSystem)
{
    for (const UnicodeTable& table : kUnicodeTables) {
        if (IsMissing(table.codePage)) continue;
        for (std::size_t i = 0; i < table.upperHalf.size(); ++i) {
            const char16_t character = table.upperHalf[i];
            if (character >= 0xF8BB && character <= 0xF8BD) continue;  // places that no published table defines
            std::string bytes;
            ASSERT_EQ(platform::ToCodePage(table.codePage, {&character, 1}, bytes), platform::CodePageResult::kOk);
            EXPECT_EQ(bytes, std::string(1, static_cast<char>(0x80 + i))) << table.codePage << " byte " << 0x80 + i;
        }
    }
}

TEST(CharsetTables, UndefinedPlacesOf857)
{
    const CodePageEncoder turkish(857);
    EXPECT_EQ(turkish.Encode(0xF8BB).View(), "\xD5");
    EXPECT_EQ(turkish.Encode(0xF8BC).View(), "\xE7");
    EXPECT_EQ(turkish.Encode(0xF8BD).View(), "\xF2");
}

TEST(CharsetEncoder, FindsExactlyWhatTheTablesHold)
{
    for (const UnicodeTable& table : kUnicodeTables) {
        std::map<char16_t, char> byteOf;
        for (std::size_t i = 0; i < table.upperHalf.size(); ++i) {
            byteOf.emplace(table.upperHalf[i], static_cast<char>(0x80 + i));
        }
        ASSERT_EQ(byteOf.size(), 128u) << table.codePage;
        const CodePageEncoder encoder(table.codePage);
        for (uint32_t character = 0x80; character <= 0xFFFF; ++character) {
            const auto held = byteOf.find(static_cast<char16_t>(character));
            const EncodedCharacter encoded = encoder.Encode(static_cast<char16_t>(character));
            ASSERT_EQ(encoded.View(), held == byteOf.end() ? ""s : std::string(1, held->second))
                << table.codePage << " U+" << std::hex << character;
        }
    }
}

TEST(CharsetEncoder, PlatformPagesAnswerTheSameTheSecondTime)
{
    const struct {
        uint32_t codePage;
        char16_t character;
        std::string bytes;  // empty: not held
    } rows[] = {
        {1252, u'\u20AC', "\x80"},
        {1251, u'\u0416', "\xC6"},
        {1251, u'\u00E9', ""},
        {949, u'\uAC00', "\xB0\xA1"},
        {936, u'\u4E2D', "\xD6\xD0"},
        {54936, u'\u00E9', "\xA8\xA6"},
        {54936, u'\u00C0', "\x81\x30\x86\x38"},
        {1252, u'\u0100', ""},  // no "A" in its place
        {1252, u'\xD83D', ""},
        {1252, u'\uFF1F', ""},
        {9999, u'\u00E9', ""},
    };
    for (int round = 0; round < 2; ++round) {
        for (const auto& row : rows) {
            if (IsMissing(row.codePage)) continue;
            EXPECT_EQ(CodePageEncoder(row.codePage).Encode(row.character).View(), row.bytes)
                << row.codePage << " U+" << std::hex << static_cast<int>(row.character);
        }
    }
    // Every character of a page, so that places in the memory are fought over.
    for (int round = 0; round < 2; ++round) {
        for (uint32_t character = 0x80; character < 0x3000; ++character) {
            const auto unit = static_cast<char16_t>(character);
            std::string bytes;
            platform::ToCodePage(1253, {&unit, 1}, bytes);
            ASSERT_EQ(CodePageEncoder(1253).Encode(unit).View(), bytes);
            bytes.clear();
            platform::ToCodePage(54936, {&unit, 1}, bytes);
            ASSERT_EQ(CodePageEncoder(54936).Encode(unit).View(), bytes);
        }
    }
}

// Devices on several threads share the memory of the platform's answers.
TEST(CharsetEncoder, ThreadsDoNotMixUpAnswers)
{
    const auto encodeAll = [](uint32_t codePage) {
        std::string all;
        for (uint32_t character = 0x80; character < 0x2200; ++character) {
            all += CodePageEncoder(codePage).Encode(static_cast<char16_t>(character)).View();
        }
        return all;
    };
    const uint32_t codePages[] = {1251, 1253, 936, 54936};
    std::string found[std::size(codePages)];
    {
        std::vector<std::jthread> threads;
        for (std::size_t i = 0; i < std::size(codePages); ++i) {
            threads.emplace_back([&, i] { found[i] = encodeAll(codePages[i]); });
        }
    }
    for (std::size_t i = 0; i < std::size(codePages); ++i)
        EXPECT_TRUE(found[i] == encodeAll(codePages[i]));
}

TEST(CharsetEncoder, EncodesText)
{
    std::string bytes = "<";
    EXPECT_EQ(EncodeToCodePage(437, u"A\u00E9\u20AC\0"s, '!', bytes), 4u);
    EXPECT_EQ(bytes, "<A\x82!\0"s);
    EXPECT_EQ(EncodeToCodePage(1252, u"A\u20AC", '?', bytes), 2u);
    EXPECT_EQ(bytes, "<A\x82!\0A\x80"s);
    EXPECT_EQ(EncodeToCodePage(1252, u"A\u0416", '?', bytes), 0u);
    EXPECT_EQ(bytes, "<A\x82!\0A\x80"s);
}

TEST(CharsetSwitcher, StaysSwitchesAndComesBack)
{
    const auto standard = Sets({0, 2, 3, 4, 5, 19});
    const std::string to850 = kPrefixA + "\x02", to858 = kPrefixA + "\x13", toFirst = kPrefixA + kMarker;
    EXPECT_EQ(Convert(standard, 0, u"\u00E9\u00E9"), "\x82\x82");
    EXPECT_EQ(Convert(standard, 0, u"\u20AC\u00E9"), to858 + "\xD5\x82");
    EXPECT_EQ(Convert(standard, 0, u"\u20AC\u2551\u03B1"), to858 + "\xD5\xBA" + toFirst + "\xE0");
    // From 858 the search goes round through 437 before it gets to 850.
    EXPECT_EQ(Convert(standard, 0, u"\u00D7\u20AC\u0131"), to850 + "\x9E" + to858 + "\xD5" + to850 + "\xD5");
    // What nobody holds leaves the set as it is.
    EXPECT_EQ(Convert(standard, 0, u"\u20AC\u4E2D\u20AC"), to858 + "\xD5?\xD5");
}

TEST(CharsetSwitcher, FirstSetOfTheListIsTable0WhateverItsCode)
{
    EXPECT_EQ(Convert(Sets({19, 17}), 0, u"\u20AC\u0416\u20AC"),
              "\xD5" + kPrefixA + "\x11\x86" + kPrefixA + kMarker + "\xD5");
    EXPECT_EQ(Convert(Sets({19, 0}), 0, u"\u20AC\u03B1"), "\xD5" + kPrefixA + kMarker + "\xE0");
}

TEST(CharsetSwitcher, DoubleByteSetsHaveCodesAndPrefixOfTheirOwn)
{
    if (!IsMissing(54936)) {
        EXPECT_EQ(Convert(Sets({0, 240}), 0, u"\u4E2D\u00C0\u2551"), "\x1C%\x01\xD6\xD0\x81\x30\x86\x38\xA8\x55");
    }
    EXPECT_EQ(Convert(Sets({0, 241}), 0, u"\uAC00\u00FC"), "\x1C%\x02\xB0\xA1" + kPrefixA + kMarker + "\x81");
    // "Latin 2" by its name, Western by its code page.
    EXPECT_EQ(Convert(Sets({0, 45}), 0, u"\u2022\u0159"), kPrefixA + "\x2D\x95?");
}

TEST(CharsetSwitcher, FixedCodePageSelectsNothing)
{
    EXPECT_EQ(Convert(Sets({0, 19}), 866, u"\u0416\u00E9\u20AC\u0436"), "\x86??\xA6");
    EXPECT_EQ(Convert({}, 866, u"\u0416"), "\x86");
    EXPECT_EQ(Convert({}, 936, u"\u4E2D"), "\xD6\xD0");
}

TEST(CharsetSwitcher, WithoutSetsAndAboveThePlane)
{
    EXPECT_EQ(Convert({}, 0, u"\u00E9\u20AC"), "??");
    EXPECT_EQ(Convert(Sets({0, 240}), 0, u"\U0001F600"), "??");
    EXPECT_EQ(Convert(Sets({0, 19}), 0, u"\uFFFD"), "?");
}

}  // namespace
}  // namespace marbex::printer
