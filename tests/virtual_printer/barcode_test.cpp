// The barcodes the printer draws, read back from its paper by zbarimg.

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <memory>

#include "bytes.h"

namespace marbex::virtual_printer {
namespace {

// What zbarimg finds in a picture: "TYPE:data" lines.
std::vector<std::string> Read(const Paper& paper)
{
    const std::string file =
        testing::TempDir() + testing::UnitTest::GetInstance()->current_test_info()->name() + ".png";
    EXPECT_TRUE(paper.Save(file));
    const std::string command = "zbarimg -q --nodbus '-S*.enable' " + file + " 2>/dev/null";
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.c_str(), "r"), ::pclose);
    std::vector<std::string> found;
    std::array<char, 512> line{};
    while (std::fgets(line.data(), line.size(), pipe.get()) != nullptr) {
        std::string text = line.data();
        found.push_back(text.substr(0, text.find('\n')));
    }
    std::remove(file.c_str());
    return found;
}

struct Case {
    char symbology;
    const char* data;
    const char* read;  // by zbarimg
    const char* text;  // human-readable
};

constexpr Case kCases[] = {
    {'A', "01234567890", "UPC-A:012345678905", "012345678905"},
    {'A', "725272730706", "UPC-A:725272730706", "725272730706"},
    {'B', "01234500006", "UPC-E:01234565", "01234565"},
    {'B', "01200000789", "UPC-E:01278907", "01278907"},
    {'B', "012300000451", "UPC-E:01234531", "01234531"},
    {'B', "012340000053", "UPC-E:01234543", "01234543"},
    {'C', "400638133393", "EAN-13:4006381333931", "4006381333931"},
    {'C', "5901234123457", "EAN-13:5901234123457", "5901234123457"},
    {'D', "9638507", "EAN-8:96385074", "96385074"},
    {'E', "MARBEX-10", "CODE-39:MARBEX-10", "*MARBEX-10*"},
    {'E', "$/+% .Z9", "CODE-39:$/+% .Z9", "*$/+% .Z9*"},
    {'F', "0123456789", "I2/5:0123456789", "0123456789"},
    {'G', "A12-$:/.+3B", "Codabar:A12-$:/.+3B", "A12-$:/.+3B"},
    {'G', "C4567890D", "Codabar:C4567890D", "C4567890D"},
    {'H', "CODE 93", "CODE-93:CODE 93", "CODE 93"},
    {'H', "a{z}@~!:;", "CODE-93:a{z}@~!:;", "a{z}@~!:;"},
    {'I', "{BHello, World", "CODE-128:Hello, World", "Hello, World"},
    {'I', "{C1234567890", "CODE-128:1234567890", "1234567890"},
    {'I', "{AAB{Bab{C4711{A9", "CODE-128:ABab47119", "ABab47119"},
    {'I', "{B{{x}", "CODE-128:{x}", "{x}"},
};

std::string Command(const Case& one)
{
    const std::string data = one.data;
    return "\x1Dk" + std::string(1, one.symbology) + static_cast<char>(data.size()) + data;
}

TEST(Barcodes, AreReadableInEverySymbology)
{
    for (const char width : {'\2', '\3'}) {
        for (const Case& one : kCases) {
            VirtualPrinter printer("OSTRA");
            printer.Feed(
                Joined({"\x1Dh\x50\x1DH\x02\x1B"
                        "a\x01\x1Dw",
                        {&width, 1},
                        Command(one)}));
            const auto barcodes = printer.All<Barcode>();
            ASSERT_EQ(barcodes.size(), 1U);
            EXPECT_TRUE(barcodes[0].printed) << one.read << ": " << barcodes[0].problem;
            EXPECT_EQ(barcodes[0].text, one.text);
            EXPECT_NEAR(barcodes[0].x, (1248 - barcodes[0].width) / 2, 1);
            EXPECT_EQ(Read(printer.GetPaper()), std::vector<std::string>{one.read})
                << "module width " << static_cast<int>(width);
        }
    }
}

TEST(Barcodes, StandOneBelowTheOtherOnOnePaper)
{
    VirtualPrinter printer("TALIS");
    printer.Feed("\x1Dh\x40\x1Dw\x02\x1DH\x03");
    std::vector<std::string> expected;
    for (const std::size_t which : {0U, 6U, 9U, 16U}) {
        printer.Feed(Command(kCases[which]) + "\n");
        expected.insert(expected.begin(), kCases[which].read);  // zbarimg reads from the bottom
    }
    EXPECT_EQ(Read(printer.GetPaper()), expected);
}

TEST(Barcodes, AreRefusedWithAReason)
{
    constexpr Case kBad[] = {
        {'A', "012345678901", "", ""}, {'A', "0123", "", ""},         {'B', "11234500006", "", ""},
        {'B', "01234567890", "", ""},  {'C', "40063813339x", "", ""}, {'D', "96385070", "", ""},
        {'E', "lower", "", ""},        {'F', "12345", "", ""},        {'G', "1234", "", ""},
        {'G', "A1B2C", "", ""},        {'H', "\xE9", "", ""},         {'I', "12345", "", ""},
        {'I', "{C123", "", ""},        {'I', "{Aab", "", ""},         {'I', "{Bab{", "", ""},
    };
    for (const Case& one : kBad) {
        VirtualPrinter printer("TALIS");
        printer.Feed(Command(one));
        const auto barcodes = printer.All<Barcode>();
        ASSERT_EQ(barcodes.size(), 1U);
        EXPECT_FALSE(barcodes[0].printed) << one.data;
        EXPECT_FALSE(barcodes[0].problem.empty()) << one.data;
        EXPECT_EQ(printer.GetPaper().Rows(), 0U);
    }
    VirtualPrinter printer("NESTO");
    printer.Feed("\x1Dw\x01" + Command(kCases[16]));
    EXPECT_EQ(printer.All<Barcode>().at(0).width, (11 * 14 + 13));  // start, data, check character, stop
    printer.TakeHappenings();
    printer.Feed("\x1Dw\x03" + Command(kCases[16]));
    EXPECT_EQ(printer.All<Barcode>().at(0).problem, "wider than the printable area");
}

}  // namespace
}  // namespace marbex::virtual_printer
