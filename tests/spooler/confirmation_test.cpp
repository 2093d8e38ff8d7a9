// Output that is complete only when the printer has told that it has it.

#include <gtest/gtest.h>

#include <utility>

#include "common/service_log_capture.h"
#include "opos/common.h"
#include "spooler/spooler_bench.h"

namespace marbex::spooler {
namespace {

using opos::OPOS_ER_CLEAR;
using opos::OPOS_ER_RETRY;
using test::Condition;
using Texts = std::vector<std::string>;

class ConfirmationTest : public test::SpoolerBench {
protected:
    void SetUp() override
    {
        SpoolerBench::SetUp();
        spooler.ConfirmOutput(true);
        OnError([] { return OPOS_ER_RETRY; });
    }
};

TEST_F(ConfirmationTest, EveryPrintingJobIsConfirmedOnceAndRawBytesAreNot)
{
    const test::ServiceLogCapture log;
    spooler.PrintNormal("1", &id);
    spooler.CutPaper(100, &id);
    spooler.DirectIO(std::make_unique<printer::DirectIODataStruct>(), &id);
    ASSERT_TRUE(AwaitReport(CB_JOBCOMPLETE, 3));
    EXPECT_EQ(printer.Confirmations(), 2);
    EXPECT_EQ(log.Count("[CPrintSpoolerTalis] --- DoJob CONFIRMED"), 2U);

    EXPECT_EQ(spooler.PrintImmediate("now"), 0);
    spooler.BeginTransaction();
    spooler.PrintNormal("2", &id);
    spooler.CutPaper(100, &id);
    spooler.PrintNormal("3", &id);
    spooler.PrintTransaction();
    ASSERT_TRUE(AwaitReport(CB_JOBCOMPLETE, 4));
    EXPECT_EQ(printer.Confirmations(), 3) << "a transaction once, after its last job";

    spooler.ConfirmOutput(false);
    spooler.PrintNormal("4", &id);
    ASSERT_TRUE(AwaitReport(CB_JOBCOMPLETE, 5));
    EXPECT_EQ(printer.Confirmations(), 3);
}

TEST_F(ConfirmationTest, WhatAPrinterHoldsBackIsAskedForAgainAndNotSentAgain)
{
    const test::ServiceLogCapture log;
    printer.Confirm({Condition::kCoverOpen, Condition::kPaperEnd});
    spooler.PrintNormal("held back", &id);
    ASSERT_TRUE(AwaitReport(CB_JOBCOMPLETE));
    EXPECT_EQ(printer.Printed(), Texts{"held back"});
    EXPECT_EQ(Count(CB_PRINTERROR), 2U);
    EXPECT_TRUE(log.Has("[CPrintSpoolerTalis] --- DoJob NOT CONFIRMED 13172850"));
    EXPECT_TRUE(log.Has("[CPrintSpoolerTalis] --- DoJob NOT CONFIRMED 13303922"));

    printer.Confirm({Condition::kCoverOpen});
    spooler.BeginTransaction();
    spooler.PrintNormal("a", &id);
    spooler.CutPaper(100, &id);
    spooler.PrintTransaction();
    ASSERT_TRUE(AwaitReport(CB_JOBCOMPLETE, 2));
    EXPECT_EQ(printer.Printed(), (Texts{"held back", "a", "cut 100"}));
}

TEST_F(ConfirmationTest, WithoutAnAnswerTheOutputIsSentAgain)
{
    printer.Confirm({Condition::kSilent});
    spooler.PrintNormal("twice", &id);
    ASSERT_TRUE(AwaitReport(CB_JOBCOMPLETE));
    // Held back first, and gone when it is asked for again.
    printer.Confirm({Condition::kPaperEnd, Condition::kSilent});
    spooler.BeginTransaction();
    spooler.PrintNormal("a", &id);
    spooler.CutPaper(100, &id);
    spooler.PrintTransaction();
    ASSERT_TRUE(AwaitReport(CB_JOBCOMPLETE, 2));
    EXPECT_EQ(printer.Printed(), (Texts{"twice", "twice", "a", "cut 100", "a", "cut 100"}));
    EXPECT_EQ(Count(CB_PRINTERROR), 3U);
}

TEST_F(ConfirmationTest, ASynchronousCallReturnsWhatBecameOfIt)
{
    spooler.SetSyncMode();
    OnError([] { return OPOS_ER_CLEAR; });
    EXPECT_EQ(spooler.PrintNormal("well", &id), 0);
    for (const auto& [found, packed] : {std::pair{Condition::kCoverOpen, kCoverOpenResult},
                                        {Condition::kPaperEnd, kPaperEmptyResult},
                                        {Condition::kSilent, opos::OPOS_E_NOHARDWARE}}) {
        printer.Confirm({found});
        EXPECT_EQ(spooler.PrintNormal("not confirmed", &id), packed);
    }
    EXPECT_EQ(Count(CB_JOBCOMPLETE), 1U);
}

TEST_F(ConfirmationTest, AClearEndsTheQuestionForWhatIsHeldBack)
{
    OnError([this] {
        spooler.Clear();
        return OPOS_ER_RETRY;
    });
    printer.Confirm({Condition::kCoverOpen});
    spooler.PrintNormal("held back", &id);
    ASSERT_TRUE(AwaitReport(CB_IDLE));
    EXPECT_EQ(printer.Confirmations(), 1);
    EXPECT_EQ(Count(CB_JOBCOMPLETE), 0U);
}

}  // namespace
}  // namespace marbex::spooler
