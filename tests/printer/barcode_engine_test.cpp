#include <gtest/gtest.h>

#include <string>

#include "printer/barcode_engine.h"

namespace marbex::printer {
namespace {

TEST(BarcodeEngine, DataCheck)
{
    struct Case {
        Symbology symbology;
        std::string data;
        bool accepted;
    };
    const Case cases[] = {
        {Symbology::kUpcA, "01234567890", true},
        {Symbology::kUpcA, "012345678905", true},
        {Symbology::kUpcA, "012345678901", false},
        {Symbology::kUpcA, "0123456789", false},
        {Symbology::kUpcA, "0123456789A", false},
        {Symbology::kUpcA, "0123456789055", false},
        {Symbology::kEan13, "4006381333931", true},
        {Symbology::kEan13, "400638133393", true},
        {Symbology::kEan13, "4006381333930", false},
        {Symbology::kEan13, "40063813339", false},
        {Symbology::kEan8, "7351353", true},
        {Symbology::kEan8, "73513537", true},
        {Symbology::kEan8, "73513530", false},
        {Symbology::kEan8, "735135", false},
        {Symbology::kItf, "123456", true},
        {Symbology::kItf, "12345", false},
        {Symbology::kItf, "12345X", false},
        {Symbology::kUpcE, "01200000345", true},
        {Symbology::kUpcE, "01210000345", true},
        {Symbology::kUpcE, "01220000345", true},
        {Symbology::kUpcE, "01230000345", false},
        {Symbology::kUpcE, "01230000045", true},
        {Symbology::kUpcE, "01234000005", true},
        {Symbology::kUpcE, "01234500006", true},
        {Symbology::kUpcE, "01234500004", false},
        {Symbology::kUpcE, "012345000065", true},
        {Symbology::kUpcE, "012345000060", false},
        {Symbology::kUpcE, "11234500006", false},
        {Symbology::kUpcE, "0123450000", false},
        {Symbology::kCode39, "AZ09-./ $%+", true},
        {Symbology::kCode39, "a", false},
        {Symbology::kCode39, "A*B", false},
        {Symbology::kCodabar, "A123B", true},
        {Symbology::kCodabar, "A-./:$+D", true},
        {Symbology::kCodabar, "123", false},
        {Symbology::kCodabar, "a123b", false},
        {Symbology::kCodabar, "AB", false},
        {Symbology::kCodabar, "A12E", false},
        {Symbology::kCode93, "\x01z~\x7F", true},
        {Symbology::kCode93, "\x80", false},
        {Symbology::kCode128, "{A1", true},
        {Symbology::kCode128, "{A", false},
        {Symbology::kCode128, "{D1", false},
        {Symbology::kCode128, "123", false},
        {Symbology::kCode128, "{B\x80", false},
    };
    for (const Case& c : cases) {
        BarcodeEngine engine;
        EXPECT_EQ(engine.Encode(c.data, c.symbology, 2), c.accepted) << c.data;
        EXPECT_EQ(engine.GetWidth() > 0, c.accepted) << c.data;
    }
}

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

TEST(BarcodeEngine, HumanReadableText)
{
    struct Case {
        Symbology symbology;
        std::string data;
        std::string text;
    };
    const Case cases[] = {
        {Symbology::kUpcA, "01234567890", "012345678905"},
        {Symbology::kUpcA, "012345678905", "012345678905"},
        {Symbology::kUpcE, "01234500006", "01234500006"},
        {Symbology::kEan13, "400638133393", "4006381333931"},
        {Symbology::kEan13, "4006381333931", "4006381333931"},
        {Symbology::kEan8, "7351353", "73513537"},
        {Symbology::kEan8, "73513537", "73513537"},
        {Symbology::kCode39, "CODE 39", "CODE 39"},
        {Symbology::kItf, "123456", "123456"},
        {Symbology::kCodabar, "A123B", "A123B"},
        {Symbology::kCode93, "Test", "\xFETest\xFE"},
        {Symbology::kCode128, "{A12345", "12345"},
        {Symbology::kCode128, "{Bab{C1234{Ax{{y", "ab1234x{y"},
    };
    BarcodeEngine engine;
    for (const Case& c : cases) {
        ASSERT_TRUE(engine.Encode(c.data, c.symbology, 2)) << c.data;
        EXPECT_EQ(engine.GetHriText(), c.text);
    }
}

// Modules by the structure that each standard gives: what the service log tells as the width.
TEST(BarcodeEngine, WidthIsModulesTimesModuleWidth)
{
    struct Case {
        Symbology symbology;
        std::string data;
        uint32_t modules;
    };
    const Case cases[] = {
        {Symbology::kUpcA, "01234567890", 95},
        {Symbology::kUpcE, "01234500006", 51},
        {Symbology::kEan13, "400638133393", 95},
        {Symbology::kEan8, "7351353", 67},
        {Symbology::kCode39, "ABC", 5 * 16},
        {Symbology::kItf, "123456", 4 + 3 * 18 + 7 - 2},
        {Symbology::kCodabar, "A12B", 2 * 11 + 2 * 10},
        {Symbology::kCode93, "ABC", 7 * 9 + 1},
        {Symbology::kCode128, "{A12345", 7 * 11 + 13},
        {Symbology::kCode128, "{C123456", 5 * 11 + 13},
        {Symbology::kCode32, "00476333", 8 * 16},
    };
    for (const Case& c : cases) {
        for (const uint32_t moduleWidth : {1U, 2U, 3U}) {
            BarcodeEngine engine;
            ASSERT_TRUE(engine.Encode(c.data, c.symbology, moduleWidth));
            EXPECT_EQ(engine.GetWidth(), c.modules * moduleWidth) << c.data;
        }
    }
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
