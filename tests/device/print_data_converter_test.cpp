#include "device/print_data_converter.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/code_page_registry.h"
#include "opos/common.h"
#include "opos/printer.h"
#include "platform/files.h"
#include "platform/text.h"
#include "support/service_log.h"

namespace marbex::device {
namespace {

using namespace std::string_literals;

// The bytes for the printer: every marker a 0x00.
std::string Unmark(std::string text)
{
    for (std::size_t at = 0; (at = text.find(support::kNulMarker, at)) != std::string::npos; ++at) {
        text.replace(at, support::kNulMarker.size(), 1, '\0');
    }
    return text;
}

const std::string kOpening = "\x1B\x61\0\x1Bt\0"s;
const std::string kClosing = "\x1B!\0\x1Bt\0"s;
const std::string kClosingLine = "\x1B!\0\n\x1Bt\0"s;  // of a line that was open

constexpr ConverterTraits kReference{"TALIS2POSPrinter", kCutAfterFourFeeds, false};

class ConverterTest : public testing::Test {
protected:
    ConverterTest() { UseAnsiCodePage(1252); }
    ~ConverterTest() override { UseAnsiCodePage(1252); }

    // False on a system whose code page cannot be chosen.
    static bool UseAnsiCodePage(uint32_t number)
    {
        platform::LoadAnsiCodePage(test::CodePageRegistry(std::to_string(number)));
        return platform::AnsiCodePage() == number;
    }

    std::string Convert(std::string_view data, const ConverterTraits& traits = kReference)
    {
        PrintDataConverter converter(traits);
        std::string out = "left over";
        EXPECT_EQ(converter.DoValidateDataW(opos::PTR_S_RECEIPT, data, sets, subModel, out), opos::OPOS_SUCCESS);
        return Unmark(out);
    }

    static std::vector<support::CharSetStruct> Sets(std::initializer_list<uint8_t> numbers)
    {
        std::vector<support::CharSetStruct> chosen;
        for (const uint8_t number : numbers)
            chosen.push_back(*support::FindCharacterSet(number));
        return chosen;
    }

    std::vector<support::CharSetStruct> sets = Sets({0, 2, 3, 4, 5, 19});
    std::string subModel;
};

TEST_F(ConverterTest, LinesAndTheirEnds)
{
    const struct {
        std::string data, converted;
    } rows[] = {
        {"", kClosing},
        {"ABC", "ABC" + kClosingLine},
        {"ABC\n", "ABC\n" + kClosing},
        {"AB\r\n", "AB\n" + kClosing},
        {"AB\r", "AB" + kClosing},  // dropped, and yet it ends the line
        {"\r", kClosing},
        {"A\rB", "AB" + kClosingLine},
        {"\n\nA", "\n\nA" + kClosingLine},
        {"\x07\x7F\t", "\x07\x7F\t" + kClosingLine},
        {"\x1B", "\x1B" + kClosingLine},
        {"\x1B@A\n", "\x1B@A\n" + kClosing},
        {"A\x1B\n", "A\x1B\n" + kClosing},
        {"\x1B\x1B|N", "\x1B\x1B!\0"s + kClosingLine},
        {"AB\0CD\x1B|P"s, "AB" + kClosingLine},  // text ends at its first zero
    };
    for (const auto& row : rows)
        EXPECT_EQ(Convert(row.data), kOpening + row.converted) << row.data;
}

TEST_F(ConverterTest, EveryEscapeSequence)
{
    const struct {
        std::string data, converted;
    } rows[] = {
        {"P", "\n\n\n\n\x1Bi"},
        {"100P", "\n\n\n\n\x1Bi"},
        {"99P", "\n\n\n\n\x1Bm"},
        {"0P", "\n\n\n\n\x1Bm"},
        {"-1P", "\n\n\n\n\x1Bm"},
        {"+P", "\n\n\n\n\x1Bm"},  // a number field without a digit is number 0
        {"4fP", ""},
        {"5sP", ""},
        {"sL", ""},
        {"3B", ""},
        {"tL", ""},
        {"bL", ""},
        {"lF", "\n"},
        {"3lF", "\n\n\n"},
        {"0lF", ""},
        {"-2lF", ""},
        {"24uF", ""},
        {"E", ""},
        {"0E", ""},
        {"-3E", ""},
        {"1fT", ""},
        {"bC", "\x1B!\x08"},
        {"uC", "\x1B!\x80"},
        {"5uC", "\x1B!\x80"},
        {"iC", "\x1B!\x40"},
        {"rC", ""},
        {"rvC", ""},
        {"50sC", ""},
        {"1C", "\x1B!\0"s},
        {"2C", "\x1B!\x20"},
        {"3C", "\x1B!\x10"},
        {"4C", "\x1B!\x30"},
        {"C", ""},
        {"0C", ""},
        {"5C", ""},
        {"1hC", "\x1D!\0"s},
        {"2hC", "\x1D!\x10"},
        {"8hC", "\x1D!\x70"},
        {"9hC", ""},
        {"0hC", ""},
        {"hC", ""},
        {"1vC", "\x1D!\0"s},
        {"2vC", "\x1D!\x01"},
        {"8vC", "\x1D!\x07"},
        {"-1vC", ""},
        {"vC", ""},
        {"2fC", ""},
        {"tbC", ""},
        {"tpC", ""},
        {"cA", "\x1B\x61\x01"},
        {"rA", "\x1B\x61\x02"},
        {"N", "\x1B!\0"s},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Convert("\x1B|" + row.data), kOpening + row.converted + kClosing) << row.data;
    }
}

TEST_F(ConverterTest, SequencesInText)
{
    const struct {
        std::string data, converted;
    } rows[] = {
        // Which sequences end the line and which leave it as it is.
        {"A\x1B|P", "A\n\n\n\n\x1Bi" + kClosing},
        {"A\x1B|lF", "A\n" + kClosing},
        {"A\x1B|0lF", "A" + kClosingLine},
        {"A\x1B|bC", "A\x1B!\x08" + kClosingLine},
        {"A\n\x1B|bC", "A\n\x1B!\x08" + kClosing},
        // Only the letters of the sequence are taken.
        {"\x1B|Price", "\n\n\n\n\x1Birice" + kClosingLine},
        {"\x1B|cAlA", "\x1B\x61\x01lA" + kClosingLine},
        // Unknown ones keep the ESC and their letters.
        {"\x1B|lA", "\x1BlA" + kClosingLine},
        {"\x1B|12x\n", "\x1Bx\n" + kClosing},
        {"\x1B|fx",
         "\x1B"
         "fx" +
             kClosingLine},
        {"\x1B|12", "\x1B" + kClosingLine},
        {"\x1B|", "\x1B" + kClosingLine},
        {"A\n\x1B|1\r\n2", "A\n\x1B" + kClosingLine},
        {"\x1B|5M", "\x1BM" + kClosingLine},
        // Everything up to the first letter is the number field.
        {"\x1B|1\n2\x1B|bC", "\x1B!\x08" + kClosing},
        {"\x1B| 2hC\x1B|-2hC", "\x1D!\x10" + kClosing},
        {"\x1B|2.9hC\x1B|99999999999999999999P", "\x1D!\x10\n\n\n\n\x1Bi" + kClosing},
        {"\x1B|-99999999999999999999P", "\n\n\n\n\x1Bm" + kClosing},
        {"\x1B|4294967298hC", "" + kClosing},  // not 2 by losing its upper half
        {"\x1B|2\xE9hC", "\x1D!\x10" + kClosing},
        // Sizes add up until "1C" or "N".
        {"\x1B|3C\x1B|bC\x1B|2C\x1B|1C\x1B|uC", "\x1B!\x10\x1B!\x18\x1B!\x38\x1B!\0\x1B!\x80"s + kClosing},
        {"\x1B|2C\x1B|N", "\x1B!\x20\x1B!\0"s + kClosing},
        {"\x1B|iC\x1B|4C\x1B|4C", "\x1B!\x40\x1B!\x70\x1B!\x70" + kClosing},
        // What one scale sends depends on the other, and on the size set before.
        {"\x1B|3hC\x1B|4vC\x1B|9hC\x1B|1hC", "\x1D!\x20\x1D!\x23\x1D!\x03" + kClosing},
        {"\x1B|2C\x1B|3vC", "\x1B!\x20\x1D!\x12" + kClosing},
        {"\x1B|3C\x1B|3hC\x1B|N\x1B|3hC", "\x1B!\x10\x1D!\x21\x1B!\0\x1D!\x20"s + kClosing},
        {"\x1B|rA\x1B|N", "\x1B\x61\x02\x1B!\0"s + kClosing},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Convert(row.data), kOpening + row.converted) << row.data;
}

TEST_F(ConverterTest, EmbeddedBytesPassAsTheyAre)
{
    const struct {
        std::string data, converted;
    } rows[] = {
        {"\x1B|5E\x1B|N\x80\xFFX", "\x1B|N\x80\xFFX" + kClosingLine},
        {"\x1B|4E\r\n\x1B\x82", "\r\n\x1B\x82" + kClosing},  // no printable output
        {"A\x1B|1E\n", "A\n" + kClosingLine},                // nor the end of a line
        {"\x1B|100EAB", "AB" + kClosing},
        {"\x1B|2E", "" + kClosing},
        {"\x1B|EAB", "AB" + kClosingLine},
        {"\x1B|3EMaR\x1B|bC", "MaR\x1B!\x08" + kClosing},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Convert(row.data), kOpening + row.converted) << row.data;
}

TEST_F(ConverterTest, CutSequencesOfTheFamily)
{
    const struct {
        CutSequence cut;
        std::string none, at100, at50;
        bool endsLine;
    } rows[] = {
        {kCutAfterFourFeeds, "\n\n\n\n\x1Bi", "\n\n\n\n\x1Bi", "\n\n\n\n\x1Bm", true},
        {kCutAfterSixFeeds, "\n\n\n\n\n\n\x1Bi", "\n\n\n\n\n\n\x1Bi", "\n\n\n\n\n\n\x1Bm", true},
        {kCutAfterFiveFeeds, "\n\n\n\n\n\x1Bi", "\n\n\n\n\n\x1Bi", "\n\n\n\n\n\x1Bm", true},
        {kPartialCutAfterFiveFeeds, "\n\n\n\n\n\x1Bm", "\n\n\n\n\n\x1Bm", "\n\n\n\n\n\x1Bm", true},
        {kPartialCutAndPresent, "\n\x1Bm\n\x1D\x65\x03\x03", "\n\x1Bm\n\x1D\x65\x03\x03", "\n\x1Bm\n\x1D\x65\x03\x03",
         true},
        {kFullCutAndPresent, "\n\x1Bi\n\x1D\x65\x03\x03", "\n\x1Bi\n\x1D\x65\x03\x03", "\n\x1Bi\n\x1D\x65\x03\x03",
         true},
        {kThreeFeedsNoCut, "\n\n\n", "\n\n\n", "\n\n\n", true},
        {kNoCut, "", "", "", false},
    };
    for (const auto& row : rows) {
        const ConverterTraits traits{"X", row.cut, false};
        const std::string closing = row.endsLine ? kClosing : kClosingLine;
        EXPECT_EQ(Convert("A\x1B|P", traits), kOpening + "A" + row.none + closing);
        EXPECT_EQ(Convert("A\x1B|100P", traits), kOpening + "A" + row.at100 + closing);
        EXPECT_EQ(Convert("A\x1B|50P", traits), kOpening + "A" + row.at50 + closing);
    }
}

TEST_F(ConverterTest, LeftMarginWhereTheModelKnowsIt)
{
    const ConverterTraits traits{"OrvenPOSPrinter", kPartialCutAndPresent, true};
    EXPECT_EQ(Convert("\x1B|300M", traits), kOpening + "\x1DL\x2C\x01" + kClosing);
    EXPECT_EQ(Convert("\x1B|M", traits), kOpening + "\x1DL\0\0"s + kClosing);
    EXPECT_EQ(Convert("\x1B|256M", traits), kOpening + "\x1DL\0\x01"s + kClosing);
    EXPECT_EQ(Convert("\x1B|-1M", traits), kOpening + "\x1DL\xFF\xFF" + kClosing);
}

TEST_F(ConverterTest, HugeFeedsAreBounded)
{
    EXPECT_EQ(Convert("\x1B|512001lF"), kOpening + std::string(512000, '\n') + kClosing);
    EXPECT_EQ(Convert("\x1B|9999999999lF").size(), kOpening.size() + 512000 + kClosing.size());
}

TEST_F(ConverterTest, ForeignCharactersOfASingleBytePage)
{
    ASSERT_EQ(platform::AnsiCodePage(), 1252u);
    // e acute, euro, e acute; then what no set holds.
    EXPECT_EQ(Convert("a\xE9 \x80\xE9\n"), kOpening + "a\x82 \x1C%\0\x1Bt\x13\xD5\x82\n"s + kClosing);
    EXPECT_EQ(Convert("\xE9\xB8"), kOpening + "\x82\x1C%\0\x1Bt\x02\xF7"s + kClosingLine);
    EXPECT_EQ(Convert("\n\x81"), kOpening + "\n?" + kClosingLine);
    subModel = "RUSSIAN";
    EXPECT_EQ(Convert("\xE9\xA4"), kOpening + "?\xFD" + kClosingLine);
    subModel = "Russian";  // keys are compared with their case
    EXPECT_EQ(Convert("\xE9"), kOpening + "\x82" + kClosingLine);
    subModel.clear();
    sets.clear();
    EXPECT_EQ(Convert("\xE9"), kOpening + "?" + kClosingLine);
}

TEST_F(ConverterTest, Utf8)
{
    if (!UseAnsiCodePage(65001)) GTEST_SKIP() << "the system's code page cannot be chosen";
    EXPECT_EQ(Convert("\xC3\xA9\xE2\x82\xAC!"), kOpening + "\x82\x1C%\0\x1Bt\x13\xD5!"s + kClosingLine);
    EXPECT_EQ(Convert("\xC3\x1B|bC\xA9\n"), kOpening + "?\x1B!\x08?\n" + kClosing);  // malformed
    EXPECT_EQ(Convert("\x1B|2\xC3\xA9hC"), kOpening + "\x1D!\x10" + kClosing);
    // Embedded data counts bytes; text goes on right after them, wherever they end.
    EXPECT_EQ(Convert("\x1B|2E\xC3\xA9\xC3\xA9"), kOpening + "\xC3\xA9\x82" + kClosingLine);
    EXPECT_EQ(Convert("\x1B|3E\x1BJ\xC3"
                      "A\xC3\xA9"),
              kOpening +
                  "\x1BJ\xC3"
                  "A\x82" +
                  kClosingLine);
    EXPECT_EQ(Convert("\xF0\x9F\x98\x80"), kOpening + "??" + kClosingLine);
}

// In the double-byte pages the second byte may look like a letter, a backslash or a bar.
TEST_F(ConverterTest, DoubleByteAnsiPages)
{
    sets = Sets({0, 240});
    if (!UseAnsiCodePage(936)) GTEST_SKIP() << "the system's code page cannot be chosen";
    EXPECT_EQ(Convert("\x81\x5C\x81\x7C"), kOpening + "\x1C%\x01\x81\x5C\x81\x7C" + kClosingLine);
    EXPECT_EQ(Convert("\x1B|2\x81\x41hC"), kOpening + "\x1D!\x10" + kClosing);
    EXPECT_EQ(Convert("\x1B|1E\x81\x41\n"), kOpening + "\x81\x41\n" + kClosing);
    sets = Sets({0});
    EXPECT_EQ(Convert("\x81\x1B|bC\n"), kOpening + "?\x1B!\x08\n" + kClosing);  // a first byte without its second

    ASSERT_TRUE(UseAnsiCodePage(932));
    sets = Sets({0});
    // Half-width kana are one byte; the second byte of the next character is "A".
    EXPECT_EQ(Convert("\xB1\x83\x41"
                      "A"),
              kOpening + "??A" + kClosingLine);
    EXPECT_EQ(Convert("\x1B|2\xB1\x83\x41"
                      "hC"),
              kOpening + "\x1D!\x10" + kClosing);

    ASSERT_TRUE(UseAnsiCodePage(949));
    sets = Sets({0, 241});
    EXPECT_EQ(Convert("\xB0\xA1\x81\x41\x81[\n"), kOpening + "\x1C%\x02\xB0\xA1\x81\x41?[\n" + kClosing);
    ASSERT_TRUE(UseAnsiCodePage(950));
    EXPECT_EQ(Convert("\xA4\x40|\xA5\x7C\n"), kOpening + "\x1C%\x02\xEC\xE9|\xDE\xCC\n" + kClosing);

    ASSERT_TRUE(UseAnsiCodePage(54936));
    sets = Sets({0, 240});
    EXPECT_EQ(Convert("\x81\x40\n"), kOpening + "\x1C%\x01\x81\x40\n" + kClosing);
    EXPECT_EQ(Convert("\x81\x30\x81\x30\n"), kOpening + "\x1C%\x01\x81\x30\x81\x30\n" + kClosing) << "of four bytes";
}

// The search for the next special byte goes eight at a time.
TEST_F(ConverterTest, SpecialBytesAreFoundAtEveryPlace)
{
    for (std::size_t at = 0; at < 20; ++at) {
        const std::string before(at, 'x'), after = "yyyyyyyyy\n";
        EXPECT_EQ(Convert(before + "\r" + after), kOpening + before + after + kClosing);
        EXPECT_EQ(Convert(before + "\x1B|bC" + after), kOpening + before + "\x1B!\x08" + after + kClosing);
        EXPECT_EQ(Convert(before + "\xE9" + after), kOpening + before + "\x82" + after + kClosing);
        // Neighbours of the special ones are none.
        EXPECT_EQ(Convert(before + "\x0C\x0E\x1A\x1C\x7F" + after),
                  kOpening + before + "\x0C\x0E\x1A\x1C\x7F" + after + kClosing);
    }
}

TEST_F(ConverterTest, OnlyTheReceiptStation)
{
    PrintDataConverter converter(kReference);
    std::string out = "as it was";
    for (const int32_t station : {0, 1, 4, 6, -2}) {
        EXPECT_EQ(converter.DoValidateDataW(station, "text", sets, subModel, out), opos::OPOS_E_ILLEGAL);
        EXPECT_EQ(out, "as it was");
    }
}

TEST_F(ConverterTest, ScalesAreBackAtOneForTheNextCall)
{
    PrintDataConverter converter(kReference);
    std::string out;
    converter.DoValidateDataW(opos::PTR_S_RECEIPT, "\x1B|4hC\x1B|4vC", sets, subModel, out);
    converter.DoValidateDataW(opos::PTR_S_RECEIPT, "\x1B|2vC", sets, subModel, out);
    EXPECT_EQ(Unmark(out), kOpening + "\x1D!\x01" + kClosing);
}

std::string& LogLines()
{
    static std::string lines;
    return lines;
}

TEST_F(ConverterTest, LogLines)
{
    LogLines().clear();
    platform::CaptureDebugOutput([](std::string_view line) { LogLines() += line.substr(line.find(']') + 1); });
    support::LogOpen("", 1, 1, 1);
    subModel = "GREEK";
    const char* data = "x";
    const auto address = static_cast<int32_t>(static_cast<uint32_t>(reinterpret_cast<uintptr_t>(data)));
    PrintDataConverter converter(kReference);
    std::string out;
    converter.DoValidateDataW(2, data, sets, subModel, out);
    converter.DoValidateDataW(4, data, sets, subModel, out);
    support::LogClose();
    platform::CaptureDebugOutput(nullptr);
    const std::string pointer = std::to_string(address);
    EXPECT_EQ(LogLines(), "[TALIS2POSPrinter] DoValidateDataW Begin (2, " + pointer +
                              ")\r\n[OrvenPOSPrinter] DoValidateDataW bSubModel PC737 GREEK (Only if loaded in "
                              "Printer)\r\n[TALIS2POSPrinter] DoValidateDataW End\r\n"
                              "[TALIS2POSPrinter] DoValidateDataW Begin (4, " +
                              pointer + ")\r\n");
}

}  // namespace
}  // namespace marbex::device
