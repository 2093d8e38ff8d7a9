// A printer with its cover open, without paper, jammed, busy or without power: what it says, what it keeps, what it
// throws away.

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
    printer.Feed(std::string(FindModel("TALIS")->buffer - 10, 'x'));
    EXPECT_EQ(printer.Room(), 10U);
    printer.Feed("\x1B*b200W0123");  // an unfinished command takes room too
    EXPECT_EQ(printer.Room(), 0U);
    EXPECT_EQ(printer.All<Overrun>(), std::vector<Overrun>{{1}});
    VirtualPrinter small("TALIS", {.buffer = 20});
    small.Feed("a row that is longer than the buffer goes through a printer that runs\n");
    small.SetCover(true);
    small.Feed("twenty and some more\n");
    EXPECT_EQ(small.Room(), 0U);
    small.SetCover(false);
    EXPECT_EQ(small.Room(), 20U);
    small.Feed("\n");
    EXPECT_EQ(small.Lines().back(), "twenty and some more");
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

// 32 dots a line at 8 dots a millimetre: 40 ms at 100 mm/s.
TEST(Busy, PrintsAsFastAsThePaperMoves)
{
    using std::chrono::milliseconds;
    const VirtualPrinter::Clock::time_point start{std::chrono::hours(1)};
    VirtualPrinter printer("TALIS", {.speed = 100});
    printer.GoOn(start);
    EXPECT_EQ(printer.Feed("one\ntwo\nthree\n\x10\x04\x01\x1DI\x01"), Bytes{0x12});
    EXPECT_EQ(printer.Lines(), Strings{"one"});
    EXPECT_EQ(printer.State().waitingBytes, 4U + 6 + 3);
    EXPECT_EQ(printer.Room(), FindModel("TALIS")->buffer - 13);
    EXPECT_EQ(printer.Due(), start + milliseconds(40));
    printer.GoOn(start + milliseconds(79));
    EXPECT_EQ(printer.Lines(), (Strings{"one", "two"}));
    // A recovery is for a printer that has stopped: it does not take away what this one is about to print.
    printer.Feed("\x10\x05\x02");
    printer.SetCover(true);
    printer.GoOn(start + milliseconds(1000));
    EXPECT_EQ(printer.Lines().size(), 2U);
    printer.SetCover(false);
    EXPECT_EQ(printer.Lines().back(), "three");
    EXPECT_EQ(printer.Feed(""), Bytes{0x5F});
    EXPECT_EQ(printer.Due(), start + milliseconds(1040));
    printer.SetSpeed(0);
    EXPECT_EQ(printer.Due(), std::nullopt);
}

TEST(Power, WhatIsNotOnPaperIsLostAndCounted)
{
    VirtualPrinter printer("VELA PC", {.speed = 1});
    printer.Feed("\x1B!\x08paper\n");
    printer.SetPower(false);
    EXPECT_EQ(printer.All<PowerOff>().back(), (PowerOff{9, 0, 9}));
    EXPECT_TRUE(printer.Feed("\x10\x04\x01missed").empty());
    printer.SetPower(true);
    EXPECT_EQ(printer.All<PowerOn>(), std::vector<PowerOn>{{9}});
    // A line that waits, and requests answered at once among what is lost.
    printer.Feed("plain\nwaits\n\x10\x04\x01\x1B*b9W12");
    EXPECT_EQ(printer.All<TextLine>().back().runs.at(0).style, Style{}) << "the settings are the usual ones again";
    printer.SetPower(false);
    EXPECT_EQ(printer.All<PowerOff>().back(), (PowerOff{9 + 6, 6 + 7, 9 + 6 + 6 + 3 + 7}));
    printer.SetPower(true);
    // An unfinished line with what is set in it, and nothing of what was done before it.
    printer.SetSpeed(0);
    printer.Feed("\n\x1B!\x08half \x1B!\x02way");
    const uint64_t all = printer.Received();
    printer.SetPower(false);
    EXPECT_EQ(printer.All<PowerOff>().back(), (PowerOff{all - 11, 11, all}));
    printer.SetPower(true);
    EXPECT_EQ(printer.Feed("\x1DI\x01"), Bytes{0xFF});
    printer.Feed("after\n");
    EXPECT_EQ(printer.Lines(), (Strings{"paper", "plain", "", "after"}));
}

TEST(Power, TheLinkMayAlsoBringHalfAnAnswer)
{
    VirtualPrinter printer("TALIS");
    printer.HalveAnswers(2);
    EXPECT_EQ(printer.Feed("\x10\x04\x14\x10\x04\x01"), (Bytes{0x10, 0x0F, 0x00}));
    EXPECT_EQ(printer.Feed(kFull).size(), 6U);
}

// No stream of bytes makes it keep more and more.
TEST(Memory, StaysWithinBounds)
{
    VirtualPrinter printer("TALIS");
    printer.Feed("\x1Bt\x14" + std::string(5000, '\xD1'));  // Thai vowels that stand above: they take no room
    EXPECT_EQ(printer.Lines().size(), 4U);
    VirtualPrinter wide("OSTRA");
    wide.Feed("\x1B*b2M");
    std::string row = "\x1B*b96W";
    for (int i = 0; i < 32; ++i)
        row += std::string(2, static_cast<char>(i % 2 + 1)) + "\xFF";
    for (int i = 0; i < 2000; ++i)
        wide.Feed(row);
    wide.Feed("\x1B*rB");
    const RasterImage image = wide.All<RasterImage>().at(0);
    std::size_t kept = 0;
    for (const Bytes& one : image.rows)
        kept += one.size();
    EXPECT_GT(kept, 4U << 20U);
    EXPECT_LE(kept, 8U << 20U);
    EXPECT_EQ(image.height, 2000);
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
