// Asking a printer whether it has received what was sent: over which link, how long, and whose answer it is.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "printer/printer_encoder.h"
#include "printer/scripted_port.h"

namespace marbex::printer {
namespace {

using namespace std::string_literals;
using test::ScriptedClock;
using test::ScriptedPort;
using test::Trace;

const std::string kFullQuestion = "\x10\x04\x14";
const std::string kPrinterQuestion = "\x10\x04\x01";

class ReceiptConfirmationTest : public testing::Test {
protected:
    ReceiptConfirmationTest()
    {
        encoder.AttachPort(&port);
        port.SetTimeouts(5000, 3000);
    }

    // One answer more to both questions, whose full status has this second byte.
    void WillAnswer(char paper = 0, char cover = 0)
    {
        port.Answer(kFullQuestion, {"\x10\x0F"s + paper + cover + "\0\0"s});
        port.Answer(kPrinterQuestion, {"\x16"});
    }

    bool Told(const std::string& line) const { return std::find(trace.begin(), trace.end(), line) != trace.end(); }

    Trace trace;
    ScriptedClock clock;
    ScriptedPort port{trace};
    EncoderTraits traits;
    CPrinterEncoder encoder{traits, clock};
    PrinterStatus status;
};

TEST_F(ReceiptConfirmationTest, TheAnswerOverTheSameLinkConfirms)
{
    encoder.BeginOutput();
    ASSERT_EQ(encoder.PrintText("receipt"), 0);
    WillAnswer();
    EXPECT_TRUE(encoder.ConfirmReceipt(encoder.OutputBegin(), status));
    EXPECT_FALSE(encoder.IsInError());

    // A printer that hangs up while nothing is printed is connected anew before the first byte.
    encoder.BeginOutput();
    ++port.openings;
    ASSERT_EQ(encoder.PrintText("receipt"), 0);
    WillAnswer();
    EXPECT_TRUE(encoder.ConfirmReceipt(encoder.OutputBegin(), status));

    WillAnswer(1, 3);
    EXPECT_TRUE(encoder.ConfirmReceipt(encoder.OutputBegin(), status))
        << "the printer has it, and says why it does not print it";
    EXPECT_TRUE(status.CoverOpen());
    EXPECT_TRUE(status.PaperEnd());
}

TEST_F(ReceiptConfirmationTest, ALinkOpenedAnewSinceTheFirstByteConfirmsNothing)
{
    encoder.BeginOutput();
    ASSERT_EQ(encoder.PrintText("rec"), 0);
    ++port.openings;
    ASSERT_EQ(encoder.PrintText("eipt"), 0);
    WillAnswer();
    EXPECT_FALSE(encoder.ConfirmReceipt(encoder.OutputBegin(), status));
    EXPECT_TRUE(status.NoResponse());
    EXPECT_TRUE(encoder.IsInError());

    // Lost and found again by the question itself.
    encoder.BeginOutput();
    port.onRead = [this] { ++port.openings; };
    WillAnswer();
    EXPECT_FALSE(encoder.ConfirmReceipt(encoder.OutputBegin(), status));
}

TEST_F(ReceiptConfirmationTest, ItWaitsForTheAnswerAndForTheBytesOnTheirWay)
{
    encoder.BeginOutput();
    ASSERT_EQ(encoder.PrintText(std::string(2000, 'x')), 0);
    EXPECT_FALSE(encoder.ConfirmReceipt(encoder.OutputBegin(), status));
    EXPECT_TRUE(Told("read within 5000")) << "3 s and a millisecond a byte";

    trace.clear();
    port.baudRate = 9600;
    encoder.BeginOutput();
    ASSERT_EQ(encoder.Initialize(), 0);  // 2 bytes
    EXPECT_FALSE(encoder.ConfirmReceipt(encoder.OutputBegin(), status));
    EXPECT_TRUE(Told("read within 3002")) << "3 s and 12 bit times a byte";

    trace.clear();
    port.baudRate = 1;
    EXPECT_FALSE(encoder.ConfirmReceipt({port.openings, 0}, status));
    EXPECT_TRUE(Told("read within 60000")) << "nothing is waited for longer";
}

// The answer to an earlier question may still come, and stands for output that was sent after it was asked.
TEST_F(ReceiptConfirmationTest, ALateAnswerToAnEarlierQuestionIsNotEnough)
{
    EXPECT_NE(encoder.GetStatus(status, false), 0);
    encoder.BeginOutput();
    ASSERT_EQ(encoder.Initialize(), 0);  // never arrives
    WillAnswer();                        // late, and the last thing that this printer says
    EXPECT_FALSE(encoder.ConfirmReceipt(encoder.OutputBegin(), status));

    ++port.openings;
    encoder.BeginOutput();
    WillAnswer();
    EXPECT_TRUE(encoder.ConfirmReceipt(encoder.OutputBegin(), status)) << "a new link brings no old answers";
}

TEST_F(ReceiptConfirmationTest, NothingThatIsOnItsWayToThePrinterIsThrownAway)
{
    EncoderTraits cleansOutput;
    cleansOutput.status = StatusVariant::kReferenceCleansOutput;
    CPrinterEncoder other(cleansOutput, clock);
    other.AttachPort(&port);
    WillAnswer();
    EXPECT_TRUE(other.ConfirmReceipt(other.OutputBegin(), status));
    EXPECT_FALSE(Told("clean output"));
    other.DetachPort();
}

TEST_F(ReceiptConfirmationTest, AJamIsAnAnswerAndAFailure)
{
    EncoderTraits brisaHd;
    brisaHd.status = StatusVariant::kBrisaHd;
    CPrinterEncoder other(brisaHd, clock);
    other.AttachPort(&port);
    port.Answer(kFullQuestion, {"\x10\x0F\0\0\x40\0"s});
    port.Answer(kPrinterQuestion, {"\x16"});
    EXPECT_TRUE(other.ConfirmReceipt(other.OutputBegin(), status));
    EXPECT_TRUE(status.PaperJam());
    EXPECT_TRUE(other.IsInError());
    other.DetachPort();
}

}  // namespace
}  // namespace marbex::printer
