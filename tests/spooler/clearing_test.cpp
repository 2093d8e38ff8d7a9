// What a clear, or a CLEAR answer, takes with it, and what it must leave.

#include <gtest/gtest.h>

#include <future>
#include <thread>

#include "common/wait_until.h"
#include "opos/common.h"
#include "spooler/spooler_bench.h"

namespace marbex::spooler {
namespace {

using opos::OPOS_ER_CLEAR;
using opos::OPOS_ER_RETRY;
using test::Condition;
using Texts = std::vector<std::string>;

class ClearingTest : public test::SpoolerBench {
protected:
    // The thread that queued the failing job may not have left AddJob yet.
    void Print(const std::string& text)
    {
        test::WaitUntil([&] { return spooler.PrintNormal(text, &id) != kBusy; });
    }
};

TEST_F(ClearingTest, OutputQueuedAfterTheAnswerIsNotMeantByIt)
{
    OnError([&] {
        Print("before");
        spooler.BeginTransaction();
        Print("collected before");
        spooler.NoteAnswer(OPOS_ER_CLEAR);
        Print("after");
        printer.SetCondition(Condition::kWell);
        return OPOS_ER_CLEAR;
    });
    printer.SetCondition(Condition::kCoverOpen);
    spooler.PrintNormal("failed", &id);
    ASSERT_TRUE(AwaitReport(CB_JOBCOMPLETE));
    ASSERT_TRUE(AwaitReport(CB_IDLE));
    EXPECT_EQ(printer.Printed(), Texts{"after"});
}

TEST_F(ClearingTest, OutputClearedWhileItsErrorIsOutIsNotPrintedByALaterRetry)
{
    std::promise<void> asked;
    std::promise<void> answerNow;
    OnError([&] {
        asked.set_value();
        answerNow.get_future().wait();
        return OPOS_ER_RETRY;
    });
    printer.SetCondition(Condition::kCoverOpen);
    spooler.PrintNormal("cleared", &id);
    asked.get_future().wait();
    spooler.PrintNormal("cleared too", &id);
    spooler.Clear();
    printer.SetCondition(Condition::kWell);
    answerNow.set_value();
    ASSERT_TRUE(AwaitReport(CB_IDLE));
    EXPECT_TRUE(printer.Printed().empty());
}

TEST_F(ClearingTest, ATransactionBegunAfterTheAnswerIsNotMeantByIt)
{
    OnError([&] {
        spooler.NoteAnswer(OPOS_ER_CLEAR);
        spooler.BeginTransaction();
        Print("collected");
        test::WaitUntil([this] { return spooler.PrintTransaction() != kBusy; });
        printer.SetCondition(Condition::kWell);
        return OPOS_ER_CLEAR;
    });
    printer.SetCondition(Condition::kCoverOpen);
    spooler.PrintNormal("failed", &id);
    ASSERT_TRUE(AwaitReport(CB_JOBCOMPLETE));
    EXPECT_EQ(printer.Printed(), Texts{"collected"});
}

// However the answer to the cleared job comes: what was queued since the clear is another matter.
TEST_F(ClearingTest, OutputQueuedAfterAClearOutlivesTheAnswerToWhatWasCleared)
{
    for (const bool noted : {false, true}) {
        for (const int32_t answer : {OPOS_ER_RETRY, OPOS_ER_CLEAR}) {
            if (noted && answer == OPOS_ER_CLEAR) continue;  // CLEAR said by the application means the new output, too
            SCOPED_TRACE(answer + (noted ? 100 : 0));
            OnError([&] {
                spooler.Clear();
                Print("new");
                if (noted) spooler.NoteAnswer(answer);
                printer.SetCondition(Condition::kWell);
                return answer;
            });
            const std::size_t before = printer.Printed().size();
            printer.SetCondition(Condition::kCoverOpen);
            spooler.PrintNormal("cleared", &id);
            ASSERT_TRUE(AwaitReport(CB_JOBCOMPLETE, before + 1));
            EXPECT_EQ(printer.Printed().back(), "new");
        }
    }
}

TEST_F(ClearingTest, AClearDuringATransferLeavesWhatIsQueuedAfterIt)
{
    OnError([&] {
        printer.SetCondition(Condition::kWell);
        spooler.NoteAnswer(OPOS_ER_RETRY);
        return OPOS_ER_RETRY;
    });
    printer.Hold();
    spooler.PrintNormal("cleared", &id);
    printer.WaitUntilHeld();
    spooler.Clear();
    Print("new");
    printer.SetCondition(Condition::kCoverOpen);
    printer.Resume();
    ASSERT_TRUE(AwaitReport(CB_JOBCOMPLETE));
    EXPECT_EQ(printer.Printed(), Texts{"new"});
}

TEST_F(ClearingTest, ASynchronousJobThatWaitsForThePrinterIsClearedToo)
{
    struct Waiting : ApplicationThread {
        std::atomic<bool> forPrinter{false};
        bool AcquirePrinter(platform::Mutex& mutex) override
        {
            forPrinter = true;
            return ApplicationThread::AcquirePrinter(mutex);
        }
    } application;
    CPrintSpooler cleared(reference, clock, application);
    OpenWith(cleared);
    printer.Hold();
    cleared.PrintNormal("slow", &id);
    printer.WaitUntilHeld();
    application.forPrinter = false;
    cleared.SetSyncMode();
    auto waits = std::async(std::launch::async, [&] { return cleared.PrintNormal("cleared", &id); });
    test::WaitUntil([&] { return application.forPrinter.load(); });
    cleared.Clear();
    printer.Resume();
    EXPECT_EQ(waits.get(), opos::OPOS_E_FAILURE);
    EXPECT_EQ(printer.Printed(), Texts{"slow"});
}

TEST_F(ClearingTest, ATransactionRefusedAsBusyIsKept)
{
    struct Refusing : ApplicationThread {
        bool refuses = true;
        bool AcquirePrinter(platform::Mutex& mutex) override
        {
            return !std::exchange(refuses, false) && ApplicationThread::AcquirePrinter(mutex);
        }
    } application;
    CPrintSpooler refused(reference, clock, application);
    OpenWith(refused);
    refused.SetSyncMode();
    refused.BeginTransaction();
    refused.PrintNormal("1", &id);
    refused.CutPaper(100, &id);
    EXPECT_EQ(refused.PrintTransaction(), kBusy);
    EXPECT_EQ(refused.PrintTransaction(), 0);
    EXPECT_EQ(printer.Printed(), (Texts{"1", "cut 100"}));
}

}  // namespace
}  // namespace marbex::spooler
