// The stream as a whole; pictures; mechanics; what only some models have. That it may be cut anywhere, its fuzzer
// shows.

#include <gtest/gtest.h>

#include "bytes.h"

namespace marbex::virtual_printer {
namespace {

using Strings = std::vector<std::string>;

// A receipt with everything in it, also bytes in payloads that would be requests elsewhere.
std::string Sample()
{
    return Joined({Z("\x1B@\x1B"
                     "a\0\x1Bt\0"),
                   "\x1B!\x08"
                   "bold\x10\x04\x14 and \x82\n",
                   Z("\x1B!\0\x1C%\0\x1Bt\x13"), "\xD5 1,20\n\x1C%\x01\xC4\xE3\xBA\xC3\x81\x30\x84\x36\n",
                   Z("\x1C%\0\x1D!\0\x1DL\x10\0"), "\x1DI\x01",
                   "\x1B&l3P\x1B*p100X\x1B*b2M\x1B*b3W\xFF\xFF\x4C\x1B*b0W\x1B*b8W\x10\x04\x01\x18\x10\x05\x02\x1B",
                   "\x1B*b0M\x1B*rB", Z("\x1Dh\x50\x1Dw\x02\x1B$\x64\0\x1DH\x02\x1DkI\x04{A12"),
                   "\x1DkH\x05\x10\x04\x01\x18z\x1B"
                   "a\x01",
                   "\x1Bp022\x1D\xF8\x10\x04\x01\x1Bm\n\x1Bi\n\x1D"
                   "e\x03\x0A\x1D"
                   "e\x05",
                   "\x1C<EPOS>\x10\x04\x07\x1B*z1Q\x1DkB\x03"
                   "abc",
                   "gone\x18stay\x10\x05\x02\x7F\n\x1C<no\n"});
}

TEST(Decoder, UnderstandsTheSampleAsItIsMeant)
{
    VirtualPrinter printer("OSTRA");
    printer.Feed(Sample());
    EXPECT_EQ(printer.Lines(), (Strings{"bold and é", "€ 1,20", "你好¥", "", "", "", ""}));
    EXPECT_EQ(printer.All<StatusQuery>().size(), 2U);
    EXPECT_EQ(printer.All<IdentityQuery>().size(), 1U);
    EXPECT_EQ(printer.All<Cut>(), (std::vector<Cut>{{false}, {true}}));
    EXPECT_EQ(printer.All<PresenterMove>(), (std::vector<PresenterMove>{{3, 10}, {5, 0}}));
    EXPECT_EQ(printer.All<DrawerPulse>(), (std::vector<DrawerPulse>{{0x30, 100, 100, false}}));
    EXPECT_EQ(printer.All<MarkFeed>().size(), 1U);
    EXPECT_EQ(printer.All<StartUp>(), std::vector<StartUp>{{"EPOS"}});
    const auto barcodes = printer.All<Barcode>();
    ASSERT_EQ(barcodes.size(), 3U);
    EXPECT_EQ(barcodes[0].x, 116);  // 100 dots from a margin of 16
    EXPECT_EQ(barcodes[0].text, "12");
    EXPECT_EQ(barcodes[1].data, "\x10\x04\x01\x18z");
    EXPECT_FALSE(barcodes[2].printed);
    const auto images = printer.All<RasterImage>();
    ASSERT_EQ(images.size(), 1U);
    EXPECT_EQ(images[0].rows[2], (Bytes{0x10, 0x04, 0x01, 0x18, 0x10, 0x05, 0x02, 0x1B}));
}

TEST(Decoder, CopiesEveryCommandAndNoStatusRequest)
{
    VirtualPrinter printer("TALIS");
    std::string copy;
    printer.CopyCommands([&copy](std::span<const uint8_t> command) { copy.append(command.begin(), command.end()); });
    const std::string row = "\x1B*b3W\x10\x04\x01";  // its data only look like a request
    printer.Feed("\x1B@one\x10\x04\x14two\n" + row + "\x10\x04\x01\x1Bi");
    EXPECT_EQ(copy, "\x1B@onetwo\n" + row + "\x1Bi");
}

TEST(Raster, PutsRowsWhereTheyBelong)
{
    VirtualPrinter printer("TALIS");
    printer.Feed(
        Z("\x1B&l4P\x1B*p404X\x1B*b2M\x1B*b3W\xFF\xFF\x19\x1B*b0W\x1B*b1W\x80\x1B*b0M\x1B*b2W\0\x01"
          "\x1B*b0M\x1B*rB"));
    const auto images = printer.All<RasterImage>();
    ASSERT_EQ(images.size(), 1U);
    const RasterImage expected{.x = 404,
                               .width = 200,
                               .height = 4,
                               .declaredRows = 4,
                               .complete = true,
                               .clipped = false,
                               .rows = {Bytes(25, 0xFF), {}, {0x80}, {0x00, 0x01}}};
    EXPECT_EQ(images[0], expected);
    const Paper& paper = printer.GetPaper();
    ASSERT_EQ(paper.Rows(), 4U);
    for (int x = 0; x < 608; ++x) {
        ASSERT_EQ(paper.Dot(0, x, 0), x >= 404 && x < 604) << x;
        ASSERT_FALSE(paper.Dot(0, x, 1)) << x;
        ASSERT_EQ(paper.Dot(0, x, 2), x == 404) << x;
        ASSERT_EQ(paper.Dot(0, x, 3), x == 404 + 15) << x;
    }
    EXPECT_TRUE(printer.All<Unknown>().empty());
}

TEST(Raster, TellsWhatIsWrongWithAnImage)
{
    VirtualPrinter printer("NESTO");
    printer.Feed("\x1B&l2P\x1B*p380X\x1B*b2M\x1B*b1W\x81\x1B*b2W\xAA\xAA\x1B*rBtext\n");
    printer.Feed("\x1B&l2P\x1B*b1W\x81text\n");
    const auto images = printer.All<RasterImage>();
    ASSERT_EQ(images.size(), 2U);
    EXPECT_TRUE(images[0].clipped);
    EXPECT_FALSE(images[1].complete);
    const auto unknown = printer.All<Unknown>();
    ASSERT_EQ(unknown.size(), 1U);
    EXPECT_EQ(unknown[0].why, "damaged raster row");
    EXPECT_EQ(printer.Lines(), (Strings{"text", "text"}));
}

// What each answers, the drivers of the models judge.
TEST(Models, AnswerWithAnotherIdentityWhenTheyAreTold)
{
    VirtualPrinter other("LUMEN", {.identity = 0x1A8});
    EXPECT_EQ(other.Feed("\x1DI\x01\x1DI\xFF"), (Bytes{0xFF, 0x01, 0xA8}));
    EXPECT_THROW(VirtualPrinter("TALIS "), std::invalid_argument);
}

TEST(Models, DorinTellsItsMechanism)
{
    const std::string_view question = Z("\x1C\xDD\x01\xFF\0");
    VirtualPrinter narrow("DORIN");
    VirtualPrinter wide("DORIN", {.wide = true});
    for (VirtualPrinter* printer : {&narrow, &wide}) {
        const Bytes answer = printer->Feed(question);
        ASSERT_GE(answer.size(), 7U);
        EXPECT_LE(answer[0] & 0x0F, static_cast<int>(answer.size()) - 1);
        EXPECT_EQ((answer[6] & 0x02) != 0, printer == &wide);
    }
    EXPECT_EQ(narrow.GetPaper().Width(), 640);
    EXPECT_EQ(wide.GetPaper().Width(), 976);
    VirtualPrinter other("TALIS");
    EXPECT_TRUE(other.Feed(question).empty());
    EXPECT_EQ(other.All<Unknown>().size(), 1U);
}

TEST(Models, ReportCommandsForPartsTheyDoNotHave)
{
    VirtualPrinter nesto("NESTO");
    nesto.Feed(
        "\x1Bi\x1Bm\x1D"
        "e\x05");
    EXPECT_EQ(nesto.All<Unknown>().size(), 3U);
    EXPECT_TRUE(nesto.All<Cut>().empty());
    VirtualPrinter talis("TALIS");
    talis.Feed(
        Z("\x1D"
          "e\x03\x03\x1B\xB2"
          "D\x1F$\0\0\x1C<EPOS>"));
    EXPECT_EQ(talis.All<Unknown>().size(), 4U);
    VirtualPrinter orven("ORVEN");
    orven.Feed(
        "\n\x1Bm\n\x1D"
        "e\x03\x03\x1D"
        "e\x05");
    EXPECT_TRUE(orven.All<Unknown>().empty());
}

TEST(Display, ShowsWhatComesBetweenItsSelections)
{
    VirtualPrinter printer("VELA PC");
    printer.Feed(
        Z("before \x1B\xB2"
          "D\x1B\xA0\0\x1B\xB2P"));
    printer.Feed(
        Z("\x1B\xB2"
          "D\x1F$\x01\x05"
          "A\x82\x1B\xB2P"));
    printer.Feed(
        "\x1B\xB2"
        "D0123456789ABCDEFGHIJKL\x1B\xB2Pafter\n");
    const auto contents = printer.All<DisplayContent>();
    ASSERT_EQ(contents.size(), 3U);
    EXPECT_EQ(contents[0].rows, Strings(2, std::string(20, ' ')));
    EXPECT_EQ(contents[1].rows[1], "     Aé             ");
    // The text went on behind the last one, and from the end of the last row to the first.
    EXPECT_EQ(contents[2].rows, (Strings{"DEFGHIJKL           ", "     Aé0123456789ABC"}));
    EXPECT_EQ(printer.Lines(), Strings{"before after"});
    EXPECT_TRUE(printer.All<Unknown>().empty());
}

}  // namespace
}  // namespace marbex::virtual_printer
