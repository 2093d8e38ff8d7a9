// A printer with its cover open, without paper, or jammed: what it says, what it keeps, what it throws away.

#include <gtest/gtest.h>

#include "bytes.h"

namespace marbex::virtual_printer {
namespace {

using Strings = std::vector<std::string>;

constexpr std::string_view kFull = "\x10\x04\x14";

TEST(Status, TellsTheCondition)
{
    VirtualPrinter printer("TALIS");
    const auto all = [&printer] { return printer.Feed("\x10\x04\x14\x10\x04\x01\x10\x04\x02"); };
    EXPECT_EQ(all(), (Bytes{0x10, 0x0F, 0x00, 0x00, 0x00, 0x00, 0x12, 0x12}));
    printer.SetCover(true);
    EXPECT_EQ(all(), (Bytes{0x10, 0x0F, 0x00, 0x03, 0x00, 0x00, 0x1A, 0x16}));
    printer.SetCover(false);
    printer.SetPaper(PaperState::kLow);
    EXPECT_EQ(all(), (Bytes{0x10, 0x0F, 0x04, 0x00, 0x00, 0x00, 0x12, 0x12}));
    printer.SetPaper(PaperState::kOut);
    EXPECT_EQ(all(), (Bytes{0x10, 0x0F, 0x05, 0x00, 0x00, 0x00, 0x1A, 0x32}));
    printer.SetPaper(PaperState::kOk);
    printer.SetDrawerSignal(true);
    EXPECT_EQ(all(), (Bytes{0x10, 0x0F, 0x00, 0x00, 0x00, 0x00, 0x16, 0x12}));
    printer.SetMute(true);
    EXPECT_TRUE(all().empty());
}

TEST(Status, BrisaHdTellsJamsAndTheEndOfAPicture)
{
    VirtualPrinter printer("BRISA-HD");
    printer.Feed("\x1B&l1P\x1B*b2M\x1B*b1W\x80\x1B*b0M\x1B*rB");
    EXPECT_EQ(printer.Feed(kFull)[3], 0x04);
    EXPECT_EQ(printer.Feed(kFull)[3], 0x04);
    EXPECT_EQ(printer.Feed(kFull)[3], 0x00);
    printer.SetPrintingHeld(true);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(printer.Feed(kFull)[3], 0x04);
    }
    printer.SetPrintingHeld(false);
    printer.SetJam(true);
    EXPECT_EQ(printer.Feed(kFull), (Bytes{0x10, 0x0F, 0x00, 0x00, 0x40, 0x00}));
    printer.Feed("waits\n");
    EXPECT_TRUE(printer.Lines().empty());
    printer.SetJam(false);
    EXPECT_EQ(printer.Lines(), Strings{"waits"});
    VirtualPrinter other("BRISA");
    other.SetJam(true);
    other.SetPrintingHeld(true);
    EXPECT_EQ(other.Feed(kFull), (Bytes{0x10, 0x0F, 0x00, 0x00, 0x00, 0x00}));
}

TEST(Stopped, KeepsWhatNeedsPaperAndAnswersTheRest)
{
    VirtualPrinter printer("TALIS");
    printer.Feed("begun ");
    printer.SetCover(true);
    EXPECT_EQ(printer.Feed("\x1DI\x01\x1Bp022"), Bytes{0x5F});
    EXPECT_EQ(printer.All<DrawerPulse>().size(), 1U);
    // Behind text everything waits its turn, except real-time requests.
    EXPECT_EQ(printer.Feed("and ended\n\x1DI\x01\x1Bi\x10\x04\x01"), Bytes{0x1A});
    EXPECT_TRUE(printer.Lines().empty());
    EXPECT_EQ(printer.State().waitingBytes, 10U + 3 + 2);
    printer.SetCover(false);
    EXPECT_EQ(printer.Lines(), Strings{"begun and ended"});
    EXPECT_EQ(printer.All<Cut>().size(), 1U);
    EXPECT_EQ(printer.Feed(""), Bytes{0x5F});
}

TEST(Stopped, TakesNoMoreThanItsBuffer)
{
    VirtualPrinter printer("TALIS");
    printer.SetPaper(PaperState::kOut);
    printer.Feed(std::string(VirtualPrinter::kStoppedBuffer - 10, 'x'));
    EXPECT_EQ(printer.Room(), 10U);
    printer.Feed("\x1B*b200W0123");  // an unfinished command takes room too
    EXPECT_EQ(printer.Room(), 0U);
    EXPECT_EQ(printer.All<Overrun>(), std::vector<Overrun>{{1}});
}

TEST(Stopped, CancelThrowsAwayWhatWaits)
{
    for (const char* cancel : {"\x18", "\x10\x05\x02"}) {
        VirtualPrinter printer("TALIS");
        printer.Feed("start");
        printer.SetCover(true);
        printer.Feed("lost\nlost\n");
        printer.Feed(cancel);
        EXPECT_EQ(printer.State().waitingBytes, 0U);
        EXPECT_EQ(printer.All<Cancelled>().back().discarded, 15);
        printer.SetCover(false);
        printer.Feed("printed\n");
        EXPECT_EQ(printer.Lines(), Strings{"printed"});
    }
}

// A till that gives a picture up in the middle of a row, because the cover was opened, asks for the status next. It
// must be answered, and what it prints later must not be taken for the rest of the row.
TEST(Stopped, ACommandCutShortCanBeGivenUp)
{
    for (const char* recover : {"\x18", "\x10\x05\x02"}) {
        VirtualPrinter printer("TALIS");
        printer.Feed("\x1B&l9P\x1B*b2M\x1B*b40W0123456789");
        printer.SetCover(true);
        EXPECT_EQ(printer.Feed(kFull).size(), 6U);
        printer.SetCover(false);
        printer.Feed(recover);
        EXPECT_EQ(printer.Feed(kFull).size(), 6U);
        printer.Feed("again\n");
        EXPECT_EQ(printer.Lines(), Strings{"again"}) << "after " << static_cast<int>(recover[0]);
    }
    // Without a stop the same bytes are a picture's.
    VirtualPrinter printer("TALIS");
    printer.Feed("\x1B&l1P\x1B*b0M\x1B*b7W\x18\x10\x04\x14\x10\x05\x02\x1B*rB");
    EXPECT_TRUE(printer.All<StatusQuery>().empty());
    EXPECT_TRUE(printer.All<Cancelled>().empty());
    EXPECT_EQ(printer.All<RasterImage>().at(0).rows.at(0), (Bytes{0x18, 0x10, 0x04, 0x14, 0x10, 0x05, 0x02}));
}

TEST(Stopped, ACommandCutShortGoesOnWhenItIsNotGivenUp)
{
    VirtualPrinter printer("TALIS");
    printer.Feed("\x1B&l2P\x1B*b0M\x1B*b4W\x01\x18");
    printer.SetCover(true);
    printer.Feed("\x10\x03\x1B*b1W\x05\x1B*rB");
    printer.SetCover(false);
    EXPECT_EQ(printer.All<RasterImage>().at(0).rows, (std::vector<Bytes>{{0x01, 0x18, 0x10, 0x03}, {0x05}}));
}

}  // namespace
}  // namespace marbex::virtual_printer
