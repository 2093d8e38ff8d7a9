// Jobs through the spooler to a printer that fails on demand.

#include "spooler/print_spooler.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <mutex>
#include <thread>

#include "common/service_log_capture.h"
#include "common/wait_until.h"
#include "opos/common.h"
#include "spooler/spooler_bench.h"

namespace marbex::spooler {
namespace {

using opos::OPOS_ER_CLEAR;
using opos::OPOS_ER_RETRY;
using test::Condition;
using test::kSoon;
using test::Report;

class PrintSpoolerTest : public test::SpoolerBench {};

TEST_F(PrintSpoolerTest, QueuedJobsPrintInOrderAndEachReportsItsCompletion)
{
    std::vector<std::string> expected;
    for (int i = 1; i <= 300; ++i) {
        ASSERT_EQ(spooler.PrintNormal("line " + std::to_string(i), &id), 0);
        EXPECT_EQ(id.load(), i) << "identifiers count from 1";
        expected.push_back("line " + std::to_string(i));
    }
    ASSERT_TRUE(AwaitReport(CB_JOBCOMPLETE, 300));
    EXPECT_EQ(printer.Printed(), expected);
    const std::lock_guard hold(mutex);
    int32_t last = 0;
    for (const Report& report : reports) {
        if (report.code == CB_JOBCOMPLETE) {
            EXPECT_EQ(report.argument2, ++last);
        }
    }
}

TEST_F(PrintSpoolerTest, ASynchronousJobReturnsThePrintersErrorPacked)
{
    spooler.SetSyncMode();
    OnError([] { return OPOS_ER_CLEAR; });
    const std::pair<Condition, int32_t> cases[] = {{Condition::kCoverOpen, 0x00C90072},
                                                   {Condition::kPaperEnd, 0x00CB0072},
                                                   {Condition::kSilent, opos::OPOS_E_NOHARDWARE}};
    for (const auto& [condition, packed] : cases) {
        printer.SetCondition(condition);
        EXPECT_EQ(spooler.PrintNormal("lost", &id), packed);
        printer.SetCondition(Condition::kWell);
        EXPECT_EQ(spooler.PrintNormal("found", &id), 0) << "a printer that came back is used without a report";
    }
    EXPECT_EQ(Count(CB_PRINTERROR), 3U);
    EXPECT_EQ(Count(CB_JOBCOMPLETE), 3U);
}

TEST_F(PrintSpoolerTest, RetryRepeatsTheJobUntilItPrintsAndClearDropsTheQueue)
{
    int asked = 0;
    OnError([&] {
        if (++asked == 3) printer.SetCondition(Condition::kWell);
        return OPOS_ER_RETRY;
    });
    printer.SetCondition(Condition::kCoverOpen);
    spooler.PrintNormal("A", &id);
    spooler.PrintNormal("B", &id);
    ASSERT_TRUE(AwaitReport(CB_JOBCOMPLETE, 2));
    EXPECT_EQ(printer.Printed(), (std::vector<std::string>{"A", "B"}));
    EXPECT_EQ(asked, 3);

    OnError([&] {
        printer.SetCondition(Condition::kWell);
        return OPOS_ER_CLEAR;
    });
    printer.Hold();
    spooler.PrintNormal("C", &id);
    printer.WaitUntilHeld();
    spooler.PrintNormal("D", &id);
    spooler.PrintNormal("E", &id);
    printer.SetCondition(Condition::kPaperEnd);
    printer.Resume();
    ASSERT_TRUE(AwaitReport(CB_PRINTERROR, 4));
    ASSERT_TRUE(AwaitReport(CB_IDLE, 2));
    EXPECT_EQ(printer.Printed().size(), 2U);
    EXPECT_EQ(Count(CB_JOBCOMPLETE), 2U);
}

TEST_F(PrintSpoolerTest, ATransactionMergesTextsPrintsAsOneAndIsRepeatedWhole)
{
    spooler.SetSyncMode();
    EXPECT_EQ(spooler.PrintTransaction(), 0) << "nothing is open";
    spooler.BeginTransaction();
    spooler.PrintNormal("1", &id);
    spooler.PrintNormal("2", &id);
    spooler.CutPaper(100, &id);
    spooler.PrintNormal("3", &id);
    EXPECT_EQ(spooler.PrintImmediate("now"), 0);
    EXPECT_EQ(printer.Printed(), std::vector<std::string>{"now"});

    printer.FailAfter(3, Condition::kCoverOpen);
    OnError([&] {
        printer.SetCondition(Condition::kWell);
        return OPOS_ER_RETRY;
    });
    EXPECT_EQ(spooler.PrintTransaction(), 0);
    EXPECT_EQ(printer.Printed(), (std::vector<std::string>{"now", "12", "cut 100", "12", "cut 100", "3"}));
    EXPECT_EQ(Count(CB_JOBCOMPLETE), 1U);
    EXPECT_EQ(spooler.PrintNormal("4", &id), 0) << "the transaction is closed";
    EXPECT_EQ(printer.Printed().back(), "4");
}

TEST_F(PrintSpoolerTest, TextQueuedAfterATransactionWasTakenIsNotLostInIt)
{
    spooler.BeginTransaction();
    spooler.PrintNormal("in", &id);
    printer.Hold();
    spooler.PrintTransaction();
    printer.WaitUntilHeld();
    spooler.PrintNormal("after", &id);
    spooler.BeginTransaction();
    spooler.PrintNormal("next", &id);
    spooler.PrintTransaction();
    printer.Resume();
    ASSERT_TRUE(AwaitReport(CB_JOBCOMPLETE, 3));
    EXPECT_EQ(printer.Printed(), (std::vector<std::string>{"in", "after", "next"}));
}

TEST_F(PrintSpoolerTest, ASecondCallerIsToldBusyAtOnce)
{
    spooler.SetSyncMode();
    printer.Hold();
    auto first = std::async(std::launch::async, [this] { return spooler.PrintNormal("first", &id); });
    printer.WaitUntilHeld();
    std::atomic<int32_t> other{77};
    EXPECT_EQ(spooler.PrintNormal("second", &other), kBusy);
    EXPECT_EQ(spooler.PrintImmediate("third"), kBusy);
    EXPECT_EQ(other.load(), 77);
    printer.Resume();
    EXPECT_EQ(first.get(), 0);
}

TEST_F(PrintSpoolerTest, WantOfMemoryFailsOneJobAndNoMore)
{
    spooler.SetSyncMode();
    printer.RunOutOfMemory();
    EXPECT_EQ(spooler.PrintNormal("too large", &id), opos::OPOS_E_FAILURE);
    EXPECT_EQ(Count(CB_PRINTERROR), 0U);
    spooler.SetAsyncMode();
    printer.RunOutOfMemory();
    OnError([] { return OPOS_ER_RETRY; });
    spooler.PrintNormal("too large", &id);
    spooler.PrintNormal("next", &id);
    ASSERT_TRUE(AwaitReport(CB_JOBCOMPLETE));
    EXPECT_EQ(Count(CB_PRINTERROR), 1U) << "repeating cannot help, but the application is told";
    EXPECT_EQ(printer.Printed(), std::vector<std::string>{"next"});
}

// The write fails and the printer, asked why, is back already: no flag of its status says that anything was lost.
TEST_F(PrintSpoolerTest, QueuedOutputThatTheLinkDidNotTakeIsReportedThoughThePrinterIsWell)
{
    OnError([] { return OPOS_ER_RETRY; });
    printer.BreakLinkOnce();
    spooler.PrintNormal("1", &id);
    spooler.BeginTransaction();
    spooler.PrintNormal("2", &id);
    spooler.CutPaper(100, &id);
    spooler.PrintTransaction();
    ASSERT_TRUE(AwaitReport(CB_JOBCOMPLETE, 2));
    EXPECT_EQ(Count(CB_PRINTERROR), 1U);
    printer.BreakLinkOnce();
    spooler.BeginTransaction();
    spooler.PrintNormal("3", &id);
    spooler.CutPaper(100, &id);
    spooler.PrintTransaction();
    ASSERT_TRUE(AwaitReport(CB_JOBCOMPLETE, 3));
    EXPECT_EQ(Count(CB_PRINTERROR), 2U);
    EXPECT_EQ(printer.Printed(), (std::vector<std::string>{"1", "2", "cut 100", "3", "cut 100"}));

    spooler.SetSyncMode();
    printer.BreakLinkOnce();
    EXPECT_EQ(spooler.PrintNormal("lost", &id), printer::kEncoderTextNotSent) << "the result tells";
    EXPECT_EQ(Count(CB_PRINTERROR), 2U);
}

TEST_F(PrintSpoolerTest, ATransactionEndsAtOnceWhenRepeatingCannotHelp)
{
    OnError([] { return OPOS_ER_RETRY; });
    printer.RunOutOfMemory();
    spooler.BeginTransaction();
    spooler.PrintNormal("too large", &id);
    spooler.CutPaper(100, &id);
    spooler.PrintTransaction();
    spooler.PrintNormal("next", &id);
    ASSERT_TRUE(AwaitReport(CB_JOBCOMPLETE));
    EXPECT_EQ(printer.Printed(), std::vector<std::string>{"next"});
}

// A till cuts after its transaction: the cut must not join what is being printed already, and complete by itself.
TEST_F(PrintSpoolerTest, WhatFollowsAQueuedTransactionCompletesOnItsOwn)
{
    printer.Hold();
    spooler.PrintNormal("before", &id);
    printer.WaitUntilHeld();
    spooler.BeginTransaction();
    spooler.PrintNormal("in", &id);
    spooler.PrintTransaction();
    spooler.CutPaper(100, &id);
    printer.Resume();
    ASSERT_TRUE(AwaitReport(CB_JOBCOMPLETE, 3));
    EXPECT_EQ(printer.Printed(), (std::vector<std::string>{"before", "in", "cut 100"}));
}

TEST_F(PrintSpoolerTest, AnImmediatePrintThatSentNothingDoesNotReportSuccess)
{
    printer.SetCondition(Condition::kSilent);
    ASSERT_EQ(spooler.PrintImmediate("not sent"), opos::OPOS_E_NOHARDWARE);
    printer.BecomeWellAfterQueries(1);  // between the two questions
    EXPECT_EQ(spooler.PrintImmediate("not sent"), opos::OPOS_E_FAILURE);
    EXPECT_TRUE(printer.Printed().empty());
}

TEST_F(PrintSpoolerTest, ClosePrintsWhatWasQueuedAndRefusesTheRest)
{
    printer.Hold();
    for (int i = 0; i < 10; ++i)
        spooler.PrintNormal(std::to_string(i), &id);
    printer.WaitUntilHeld();
    auto closed = std::async(std::launch::async, [this] { return spooler.Close(); });
    test::WaitUntil([this] { return spooler.PrintNormal("late", nullptr) == kBusy; });
    printer.Resume();
    EXPECT_EQ(closed.wait_for(kSoon), std::future_status::ready);
    const auto printed = printer.Printed();
    EXPECT_GE(printed.size(), 10U);
    EXPECT_EQ(printed[9], "9");
    EXPECT_EQ(spooler.PrintNormal("closed", nullptr), kBusy);
    EXPECT_EQ(spooler.Close(), 0);
    ASSERT_EQ(spooler.Open(0), 0);
}

TEST_F(PrintSpoolerTest, APauseBetweenAttemptsEndsWithCloseAndClear)
{
    printer.SetCondition(Condition::kCoverOpen);
    std::promise<void> asked;
    std::atomic<int> times{0};
    OnError([&] {
        if (times++ == 0) asked.set_value();
        return times > 1 ? OPOS_ER_CLEAR : OPOS_ER_RETRY;
    });
    spooler.PrintNormal("x", &id);
    asked.get_future().wait();
    auto closed = std::async(std::launch::async, [this] { return spooler.Close(); });
    EXPECT_EQ(closed.wait_for(kSoon), std::future_status::ready);
    EXPECT_TRUE(printer.Printed().empty());
}

TEST_F(PrintSpoolerTest, AnIdlePrinterIsPolledAndOnlyChangesAreReported)
{
    const std::size_t atStart = Count(CB_STATUSCHANGE);
    printer.SetCondition(Condition::kCoverOpen);
    clock.Jump(10000);
    ASSERT_TRUE(AwaitReport(CB_STATUSCHANGE, atStart + 1));
    const int queries = printer.Queries();
    test::WaitUntil([&] { return printer.Queries() != queries; });
    EXPECT_EQ(Count(CB_STATUSCHANGE), atStart + 1);
    EXPECT_EQ(Count(CB_PRINTERROR), 0U);
}

TEST_F(PrintSpoolerTest, WithTheOptionAFailedQueryIsAPrinterError)
{
    CPrintSpooler signalling(reference, clock, plain);
    OpenWith(signalling, kOptionSignalFailedQuery);
    printer.SetCondition(Condition::kSilent);
    clock.Jump(10000);
    EXPECT_TRUE(AwaitReport(CB_PRINTERROR));
    signalling.Close();
}

TEST_F(PrintSpoolerTest, TheSecondFamilyNumbersJobsItsOwnWayAndPutsAModeBeforeEveryText)
{
    CPrintSpooler orven(second, clock, plain);
    OpenWith(orven);
    orven.SetSyncMode();
    const test::ServiceLogCapture log;
    EXPECT_EQ(orven.PrintNormal("text", &id), 0);
    EXPECT_EQ(orven.SetBold(true), 0);
    EXPECT_EQ(orven.SetUnderlined(true), 0);
    EXPECT_EQ(orven.PrintImmediate("now"), 0);
    EXPECT_EQ(orven.CutPaper(50, &id), 0);
    auto direct = std::make_unique<printer::DirectIODataStruct>();
    direct->count = 3;
    EXPECT_EQ(orven.DirectIO(std::move(direct), &id), 0);
    EXPECT_EQ(printer.Printed(), (std::vector<std::string>{"\x1B!\x02text", "\x1B!\x88now", "cut 50", "direct 3"}));
    EXPECT_TRUE(log.Has("[CPrintSpoolerOrven] --- AddJob Begin (3, 50)"));
    EXPECT_TRUE(log.Has("[CPrintSpoolerOrven] --- AddJob Begin (7, Data Buffer)"));
    EXPECT_TRUE(log.Has("PRINTIMMEDIATE"));
    for (const int32_t type : {2, 4, 8})
        EXPECT_EQ(orven.AddJob(type, "", nullptr), 0);
    EXPECT_EQ(log.Count("[CPrintSpoolerOrven] --- DoJob JOB_??? **NOT HANDLED**"), 2U);
}

TEST_F(PrintSpoolerTest, AQueuedJobLeavesThisTraceInTheLog)
{
    spooler.Close();
    const test::ServiceLogCapture log;
    OpenWith(spooler);
    spooler.SetSyncMode();
    test::WaitUntil([&] { return log.Has("[CPrintSpoolerTalis] --- ThreadSpool Suspended"); });
    log.Forget();
    EXPECT_EQ(spooler.PrintNormal("Hi", &id), 0);
    const std::vector<std::string> expected = {
        "[CPrintSpoolerTalis] --- PrintNormal Begin",
        "[CPrintSpoolerTalis] --- AddJob Begin (1, Hi)",
        "[CPrintSpoolerTalis] --- AddJob SYNC PrintNormal Execute",
        "[CPrintSpoolerTalis] --- InvokeCallback Begin (2)",
        "[CPrintSpoolerTalis] --- InvokeCallback CALLBACKTIME = 0",
        "[CPrintSpoolerTalis] --- InvokeCallback End",
        "[CPrintSpoolerTalis] --- DoJob Begin (1)",
        "[CPrintSpoolerTalis] --- DoJob JOB_PRINT_NORMAL Hi",
        "[CPrintSpoolerTalis] --- DoJob End (0)",
        "[CPrintSpoolerTalis] --- InvokeCallback Begin (3)",
        "[CPrintSpoolerTalis] --- InvokeCallback CALLBACKTIME = 0",
        "[CPrintSpoolerTalis] --- InvokeCallback End",
        "[CPrintSpoolerTalis] --- AddJob End",
        "[CPrintSpoolerTalis] --- PrintNormal End",
    };
    std::vector<std::string> lines;
    for (const std::string& line : log.Taken()) {
        // The spool thread may wake in between, and a call may take a millisecond.
        if (line.find("ThreadSpool") != std::string::npos || line.find("GetInactivityTime") != std::string::npos)
            continue;
        const std::size_t time = line.find("CALLBACKTIME = ");
        lines.push_back(time == std::string::npos ? line : line.substr(0, time) + "CALLBACKTIME = 0");
    }
    EXPECT_EQ(lines, expected);
}

}  // namespace
}  // namespace marbex::spooler
