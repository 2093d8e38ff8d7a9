#include "printer/print_end_wait.h"

#include <gtest/gtest.h>

#include <string>

#include "opos/printer.h"
#include "printer/printer_encoder.h"
#include "printer/scripted_port.h"

namespace marbex::printer {
namespace {

using namespace std::string_literals;
using test::ScriptedClock;
using test::ScriptedPort;
using test::Trace;

const std::string kQuestion = "\x10\x04\x14";
const std::string kIdle = "\x10\x0F\0\0\0\0"s;
const std::string kPrinting = "\x10\x0F\0\x04\0\0"s;

class PrintEndWaitTest : public testing::Test {
protected:
    int32_t Wait() { return WaitForPrintEnd(PrinterLink(&port), clock, stop); }

    Trace trace;
    ScriptedClock clock{&trace};
    ScriptedPort port{trace};
    std::atomic<bool> stop{false};
};

TEST_F(PrintEndWaitTest, AsksUntilThePrinterHasPrinted)
{
    port.Answer(kQuestion, {kPrinting});
    port.Answer(kQuestion, {kPrinting.substr(0, 4), kPrinting.substr(4)});
    port.Answer(kQuestion, {});              // silence
    port.Answer(kQuestion, {std::nullopt});  // what a time-out looks like on Ethernet
    port.Answer(kQuestion, {"\x11\x0F\0\0\0\0"s});
    port.Answer(kQuestion, {kIdle});
    EXPECT_EQ(Wait(), 0);
    const std::string ask = "write " + kQuestion;
    EXPECT_EQ(trace, (Trace{"clean input", "sleep 100", ask, "sleep 50", ask, "sleep 50", ask, "sleep 50", ask,
                            "sleep 50", ask, "sleep 50", ask, "clean input"}));
}

TEST_F(PrintEndWaitTest, FailureBitsGoBeforeTheEnd)
{
    const std::string failures[] = {"\x10\x0F\x01\0\0\0"s, "\x10\x0F\0\x01\0\0"s, "\x10\x0F\0\x06\0\0"s,
                                    "\x10\x0F\0\0\x40\0"s};
    for (const std::string& failure : failures) {
        port.Answer(kQuestion, {kPrinting});
        port.Answer(kQuestion, {failure});
        EXPECT_EQ(Wait(), 1);
        EXPECT_EQ(trace.back(), "clean input");
    }
    // Near end, and everything else that may be set, is no failure.
    port.Answer(kQuestion, {"\x10\x0F\xFE\xF8\xBF\xFF"s});
    EXPECT_EQ(Wait(), 0);
}

TEST_F(PrintEndWaitTest, SixtySecondsFromTheFirstQuestion)
{
    const uint64_t before = clock.now;
    EXPECT_EQ(Wait(), 1);
    EXPECT_EQ(clock.now - before, 60100u);
}

TEST_F(PrintEndWaitTest, StopsWhenToldAndWhenTheLinkFails)
{
    port.onRead = [this] { stop = true; };
    EXPECT_EQ(Wait(), 1);
    EXPECT_EQ(std::count(trace.begin(), trace.end(), "write " + kQuestion), 1);

    stop = false;
    port.onRead = nullptr;
    port.failingWrite = 1;
    EXPECT_EQ(Wait(), kEncoderPortFailed);
}

TEST_F(PrintEndWaitTest, OnlyTheModelThatNeedsItWaits)
{
    const BitmapDataStruct bitmap{8, 1, opos::PTR_BM_LEFT, opos::PTR_RP_NORMAL, std::make_unique<uint8_t[]>(8)};
    EncoderTraits traits;
    CPrinterEncoder encoder(traits, clock);
    encoder.AttachPort(&port);
    EXPECT_EQ(encoder.PrintBitmap(bitmap), 0);
    EXPECT_EQ(trace.size(), 3u);

    traits.waitsForBitmapEnd = true;
    trace.clear();
    port.Answer(kQuestion, {"\x10\x0F\x01\0\0\0"s});
    EXPECT_EQ(encoder.PrintBitmap(bitmap), 1);
    EXPECT_EQ(trace.size(), 7u);

    encoder.RequestStop(true);
    trace.clear();
    EXPECT_EQ(encoder.PrintBitmap(bitmap), 1);
    EXPECT_EQ(trace.size(), 6u);  // no question at all

    trace.clear();
    port.failingWrite = 12;
    EXPECT_EQ(encoder.PrintBitmap(bitmap), kEncoderPortFailed);
    EXPECT_EQ(trace.size(), 3u);
}

}  // namespace
}  // namespace marbex::printer
