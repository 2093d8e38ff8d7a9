#include "device/print_data_converter.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "common/code_page_registry.h"
#include "common/service_log_capture.h"
#include "common/text_cases.h"
#include "common/wire_text.h"
#include "device/model_description.h"
#include "opos/common.h"
#include "opos/printer.h"
#include "platform/text.h"

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

class Converted : public ConverterTest, public testing::WithParamInterface<tests::TextCase> {};

TEST_P(Converted, ToTheByte)
{
    const ConverterTraits* traits = &kReference;
    for (const std::string& line : GetParam().lines) {
        SCOPED_TRACE(line);
        std::istringstream said(line);
        std::string verb, word;
        said >> verb >> word;
        if (verb == "@page") {
            if (!UseAnsiCodePage(static_cast<uint32_t>(std::stoul(word)))) {
                GTEST_SKIP() << "the system's code page cannot be chosen";
            }
        } else if (verb == "@model") {
            traits = &FindModel(word)->converter;
        } else if (verb == "@table") {
            subModel = word;
        } else if (verb == "@sets") {
            sets.clear();
            for (; said; said >> word)
                if (!word.empty()) sets.push_back(*support::FindCharacterSet(static_cast<uint8_t>(std::stoul(word))));
        } else {
            const std::size_t arrow = line.find(" =>");
            std::string bytes = arrow + 4 < line.size() ? line.substr(arrow + 4) : "";
            const std::size_t open = bytes.find("(open)");
            bytes = test::FromWireText(
                bytes.substr(0, open == std::string::npos ? open : open - std::min<std::size_t>(open, 1)));
            EXPECT_EQ(test::WireText(Convert(test::FromWireText(line.substr(0, arrow)), *traits)),
                      test::WireText(kOpening + bytes + (open == std::string::npos ? kClosing : kClosingLine)));
        }
    }
}

const std::vector<tests::TextCase> kPrintData = tests::TextCasesIn(
#include "device/print_data.txt"
);

INSTANTIATE_TEST_SUITE_P(PrintData, Converted, testing::ValuesIn(kPrintData),
                         [](const auto& one) { return one.param.name; });

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

TEST_F(ConverterTest, LogLines)
{
    const test::ServiceLogCapture log;
    subModel = "GREEK";
    const char* data = "x";
    const std::string address =
        std::to_string(static_cast<int32_t>(static_cast<uint32_t>(reinterpret_cast<uintptr_t>(data))));
    PrintDataConverter converter(kReference);
    std::string out;
    converter.DoValidateDataW(2, data, sets, subModel, out);
    converter.DoValidateDataW(4, data, sets, subModel, out);
    EXPECT_EQ(log.Taken(), (std::vector<std::string>{
                               "[TALIS2POSPrinter] DoValidateDataW Begin (2, " + address + ")",
                               "[OrvenPOSPrinter] DoValidateDataW bSubModel PC737 GREEK (Only if loaded in Printer)",
                               "[TALIS2POSPrinter] DoValidateDataW End",
                               "[TALIS2POSPrinter] DoValidateDataW Begin (4, " + address + ")"}));
}

}  // namespace
}  // namespace marbex::device
