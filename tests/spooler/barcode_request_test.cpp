#include "spooler/barcode_request.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "opos/common.h"
#include "opos/printer.h"
#include "spooler/request_log.h"

namespace marbex::spooler {
namespace {

using namespace opos;

class BarcodeRequestTest : public testing::Test {
protected:
    int32_t Prepare(const BarcodeRequest& request, bool logsCastWidth = true)
    {
        return PrepareBarcode("CPrintSpoolerTalis", logsCastWidth, engine_, request, &payload_);
    }

    static std::vector<std::string>& Lines() { return test::RequestLog::Lines(); }

    test::RequestLog log_;
    printer::BarcodeEngine engine_;
    printer::BarcodeDataStruct payload_{};
};

std::vector<std::string> Tagged(const std::vector<std::string>& lines)
{
    std::vector<std::string> tagged;
    for (const std::string& line : lines) {
        tagged.push_back(line[0] == '[' ? line : "[CPrintSpoolerTalis] --- PrintBarCode" + line);
    }
    return tagged;
}

TEST_F(BarcodeRequestTest, WritesEveryLineInOrder)
{
    const BarcodeRequest request{"a\xE9", PTR_BCS_Code128, 80, 7, PTR_BC_CENTER, PTR_BC_TEXT_BELOW};
    EXPECT_EQ(Prepare(request), OPOS_E_ILLEGAL);
    EXPECT_EQ(Lines(), Tagged({" Begin", " - Buffer Size 2", " - Data Byte[00] = 97", " - Data Byte[01] = 233",
                               " - Code128 Without Start", " - Height 80", " - Width 7", " - Cast Width 3",
                               " - Alignment Center", " - Text Below", " - Type PTR_BCS_Code128",
                               " - BARCODE Data NOT Correct!"}));

    Lines().clear();
    EXPECT_EQ(Prepare({"Ab", PTR_BCS_Code93, 80, 4, 100, PTR_BC_TEXT_NONE}, false), OPOS_SUCCESS);
    std::vector<std::string> expected =
        Tagged({" Begin", " - Buffer Size 2", " - Data Byte[00] = 65", " - Data Byte[01] = 98", " - Height 80",
                " - Width 4", " - Alignment of 100 dots From the Left", " - Text None", " - Type PTR_BCS_Code93",
                "[DrawBarcode] A", "[DrawBarcode] b", " - BARCODE Data Correct!",
                " - Barcode HRI =  \xFE"
                "Ab\xFE",
                " - Barcode Width 128"});
    for (int i = 0; i < 31; ++i) {
        expected.push_back("[CPrintSpoolerTalis] --- PrintBarCode - RowBar [" + std::to_string(i) +
                           "]= " + std::to_string(payload_.bars[i]));
    }
    expected.push_back("[CPrintSpoolerTalis] --- PrintBarCode End");
    EXPECT_EQ(Lines(), expected);
}

TEST_F(BarcodeRequestTest, FillsThePayload)
{
    ASSERT_EQ(Prepare({"12345", PTR_BCS_Code128, 80, 5, PTR_BC_RIGHT, PTR_BC_TEXT_ABOVE}), OPOS_SUCCESS);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(payload_.data), payload_.dataLength), "{A12345");
    EXPECT_EQ(payload_.data[payload_.dataLength], 0);
    EXPECT_EQ(payload_.widthDots, 90U);
    EXPECT_EQ(payload_.symbology, PTR_BCS_Code128);
    EXPECT_EQ(payload_.height, 80);
    EXPECT_EQ(payload_.moduleWidth, 1);
    EXPECT_EQ(payload_.alignment, PTR_BC_RIGHT);
    EXPECT_EQ(payload_.textPosition, PTR_BC_TEXT_ABOVE);

    // A missing check digit is drawn and read out, not sent.
    ASSERT_EQ(Prepare({"400638133393", PTR_BCS_EAN13, 80, 2, 0, PTR_BC_TEXT_NONE}), OPOS_SUCCESS);
    EXPECT_EQ(payload_.dataLength, 12U);
}

TEST_F(BarcodeRequestTest, KeepsTheRowWithItsBytePairsExchanged)
{
    // 67 dots in nine bytes: the ninth is exchanged with the white byte behind the code.
    ASSERT_EQ(Prepare({"73513537", PTR_BCS_EAN8, 80, 1, 0, PTR_BC_TEXT_NONE}), OPOS_SUCCESS);
    const auto bars = engine_.Bars();
    ASSERT_NE(bars[8], 0);
    for (std::size_t i = 0; i < 8; ++i)
        EXPECT_EQ(payload_.bars[i], bars[i ^ 1U]) << i;
    for (std::size_t i = 8; i < sizeof payload_.bars; ++i)
        EXPECT_EQ(payload_.bars[i], 0) << i;
}

TEST_F(BarcodeRequestTest, ModuleWidthIsTheWidthModuloFour)
{
    EXPECT_EQ(BarcodeModuleWidth(0), 2U);
    EXPECT_EQ(BarcodeModuleWidth(4), 2U);
    EXPECT_EQ(BarcodeModuleWidth(5), 1U);
    EXPECT_EQ(BarcodeModuleWidth(7), 3U);
    EXPECT_EQ(BarcodeModuleWidth(-1), 3U);
    EXPECT_EQ(BarcodeModuleWidth(-7), 1U);
}

TEST_F(BarcodeRequestTest, RefusesWhatThePrinterCannotDraw)
{
    EXPECT_EQ(Prepare({"12345", PTR_BCS_EAN8, 80, 2, 0, -14}), OPOS_E_ILLEGAL);
    EXPECT_EQ(Lines().back(), "[CPrintSpoolerTalis] --- PrintBarCode - Text Not Supported");
    for (const int32_t symbology : {0, 100, PTR_BCS_TF, 111, 201, -1}) {
        EXPECT_EQ(Prepare({"123456", symbology, 80, 2, 0, PTR_BC_TEXT_NONE}), OPOS_E_ILLEGAL) << symbology;
        EXPECT_EQ(Lines().back(), "[CPrintSpoolerTalis] --- PrintBarCode - Type Not Supported");
    }
    const std::string longest(98, 'A');
    EXPECT_EQ(Prepare({longest, PTR_BCS_Code128, 80, 2, 0, PTR_BC_TEXT_NONE}), OPOS_SUCCESS);
    EXPECT_EQ(payload_.dataLength, 100U);
    for (const std::size_t length : {99U, 101U, 255U, 10000U}) {
        EXPECT_EQ(Prepare({std::string(length, 'A'), PTR_BCS_Code128, 80, 2, 0, PTR_BC_TEXT_NONE}), OPOS_E_ILLEGAL);
        EXPECT_EQ(Lines().back(), "[CPrintSpoolerTalis] --- PrintBarCode - BARCODE Data NOT Correct!");
    }
    EXPECT_EQ(Prepare({std::string(100, '0'), PTR_BCS_ITF, 80, 2, 0, PTR_BC_TEXT_NONE}), OPOS_SUCCESS);
    EXPECT_EQ(Prepare({std::string(102, '0'), PTR_BCS_ITF, 80, 2, 0, PTR_BC_TEXT_NONE}), OPOS_E_ILLEGAL);
    EXPECT_EQ(Prepare({"", PTR_BCS_Code39, 80, 2, 0, PTR_BC_TEXT_NONE}), OPOS_E_ILLEGAL);
}

}  // namespace
}  // namespace marbex::spooler
