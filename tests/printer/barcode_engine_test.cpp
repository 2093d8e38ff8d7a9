#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "common/text_cases.h"
#include "common/wire_text.h"
#include "printer/barcode_engine.h"

namespace marbex::printer {
namespace {

constexpr const char* kSymbologies[] = {"UpcA", "UpcE",    "Ean13",  "Ean8",    "Code39",
                                        "Itf",  "Codabar", "Code93", "Code128", "Code32"};

const std::vector<tests::TextCase> kBarcodes = tests::TextCasesIn(
#include "printer/barcodes.txt"
);

class Barcodes : public testing::TestWithParam<tests::TextCase> {};

TEST_P(Barcodes, AreDrawnOrRefused)
{
    const auto symbology = static_cast<Symbology>(std::ranges::find(kSymbologies, GetParam().name) - kSymbologies);
    for (const std::string& line : GetParam().lines) {
        const std::size_t arrow = line.find(" => ");
        for (const uint32_t moduleWidth : {1U, 2U, 3U}) {
            BarcodeEngine engine;
            const bool accepted = engine.Encode(test::FromWireText(line.substr(0, arrow)), symbology, moduleWidth);
            EXPECT_EQ(engine.GetWidth() % moduleWidth, 0U);
            EXPECT_EQ(accepted
                          ? std::to_string(engine.GetWidth() / moduleWidth) + " " + test::WireText(engine.GetHriText())
                          : "refused",
                      line.substr(arrow + 4));
            EXPECT_EQ(engine.GetWidth() > 0, accepted);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Engine, Barcodes, testing::ValuesIn(kBarcodes),
                         [](const auto& one) { return one.param.name; });

// The lengths at the borders of the rules and of the job, and one far beyond, in every symbology.
TEST(BarcodeEngine, LengthsAreJudgedWithoutHarm)
{
    struct Case {
        Symbology symbology;
        std::string head;
        std::string fill;
        std::string tail;
        std::size_t longest;
    };
    const std::size_t unlimited = 10000;
    const Case cases[] = {
        {Symbology::kUpcA, "", "0", "", 0},
        {Symbology::kUpcE, "", "0", "", 0},
        {Symbology::kEan13, "", "0", "", 0},
        {Symbology::kEan8, "", "0", "", 0},
        {Symbology::kCode39, "", "A", "", unlimited},
        {Symbology::kItf, "", "0", "", unlimited},
        {Symbology::kCodabar, "A", "1", "B", unlimited},
        {Symbology::kCode93, "", "a", "", 255},
        {Symbology::kCode128, "{B", "a", "", 255},
    };
    for (const Case& c : cases) {
        for (const std::size_t length : {0U, 100U, 101U, 255U, 256U, 10000U}) {
            SCOPED_TRACE(testing::Message() << "symbology " << static_cast<int>(c.symbology) << " length " << length);
            std::string data;
            if (length > 0) {
                data = c.head;
                while (data.size() + c.tail.size() < length)
                    data += c.fill;
                data += c.tail;
            }
            const bool odd = c.symbology == Symbology::kItf && length % 2 != 0;
            BarcodeEngine engine;
            EXPECT_EQ(engine.Encode(data, c.symbology, 3), length > 0 && length <= c.longest && !odd);
            EXPECT_LE(engine.GetWidth(), BarRow::kDots);
        }
    }
    BarcodeEngine engine;
    for (const std::size_t length : {0U, 100U, 101U, 255U, 10000U}) {
        EXPECT_TRUE(engine.Encode(std::string(length, '1'), Symbology::kCode32, 3));
        EXPECT_EQ(engine.GetWidth(), 0U);
    }
}

TEST(BarcodeEngine, DataEndsAtItsFirstZero)
{
    BarcodeEngine engine;
    EXPECT_TRUE(engine.Encode(std::string("123456\0X", 8), Symbology::kItf, 1));
    EXPECT_EQ(engine.GetHriText(), "123456");
}

TEST(BarcodeEngine, DrawingStopsAtTheEndOfTheRow)
{
    BarcodeEngine engine;
    ASSERT_TRUE(engine.Encode(std::string(100, 'A'), Symbology::kCode39, 3));
    EXPECT_EQ(engine.GetWidth(), 4000U);
    ASSERT_TRUE(engine.Encode("7351353", Symbology::kEan8, 1));
    EXPECT_EQ(engine.GetWidth(), 67U);
    for (std::size_t i = 9; i < engine.Bars().size(); ++i)
        EXPECT_EQ(engine.Bars()[i], 0) << i;
}

}  // namespace
}  // namespace marbex::printer
