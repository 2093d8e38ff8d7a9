// A printer that fails in the middle, an application that answers, and everything that may wait meanwhile.

#include <stdexcept>
#include <thread>

#include "common/service_log_capture.h"
#include "common/wait_until.h"
#include "device/posix/device_bench.h"

namespace marbex::test {
namespace {

using namespace opos;
using virtual_printer::PaperState;

class ErrorRecoveryTest : public DeviceBench {
protected:
    // Until the spool thread has taken the job up again after that many error events. From the end of the handler
    // until then the device counts as idle.
    bool UntilHeldUpAfter(std::size_t errors)
    {
        return RunUntil(
            [=, this] { return control.Named("SOError").size() >= errors && Number(PIDX_State) != OPOS_S_IDLE; });
    }
};

TEST_F(ErrorRecoveryTest, CoverAndPaperReachTheApplicationAsStatusUpdates)
{
    Ready();
    server.SetCover(true);
    ASSERT_TRUE(RunUntil([this] { return control.events.size() == 1; }));
    EXPECT_EQ(Number(PIDXPtr_CoverOpen), 1);
    server.SetCover(false);
    ASSERT_TRUE(RunUntil([this] { return control.events.size() == 2; }));
    server.SetPaper(PaperState::kLow);
    ASSERT_TRUE(RunUntil([this] { return control.events.size() == 3; }));
    server.SetPaper(PaperState::kOut);
    ASSERT_TRUE(RunUntil([this] { return control.events.size() == 4; }));
    EXPECT_EQ(Number(PIDXPtr_RecEmpty), 1);
    server.SetPaper(PaperState::kOk);
    ASSERT_TRUE(RunUntil([this] { return control.events.size() == 5; }));
    EXPECT_EQ(control.events, (std::vector<ControlEvent>{Status(PTR_SUE_COVER_OPEN), Status(PTR_SUE_COVER_OK),
                                                         Status(PTR_SUE_REC_NEAREMPTY), Status(PTR_SUE_REC_EMPTY),
                                                         Status(PTR_SUE_REC_PAPEROK)}));
}

TEST_F(ErrorRecoveryTest, ASynchronousErrorIsAnsweredInTheCallThatCausedIt)
{
    Ready();
    TakeThePrinterAway();
    control.onEvent = [this](const ControlEvent& event, int32_t* response) {
        if (event.name != "SOError") return;
        EXPECT_EQ(*response, OPOS_ER_CLEAR) << "what stands when nobody answers";
        EXPECT_EQ(Number(PIDX_State), OPOS_S_ERROR);
        EXPECT_EQ(device->GetPropertyString(PIDXPtr_ErrorString), "Printer disconnected");
        EXPECT_EQ(Number(PIDXPtr_ErrorLevel), PTR_EL_RECOVERABLE);
    };
    EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, "lost"), OPOS_E_NOHARDWARE);
    EXPECT_EQ(control.Named("SOError"), std::vector<ControlEvent>{Error(107, 0)});
    EXPECT_EQ(Number(PIDX_State), OPOS_S_IDLE);
    EXPECT_EQ(Number(PIDXPtr_ErrorLevel), PTR_EL_NONE);
    EXPECT_EQ(device->CheckHealth(OPOS_CH_INTERNAL), OPOS_E_NOHARDWARE);
    EXPECT_EQ(device->GetPropertyString(PIDX_CheckHealthText), "Unable to communicate, hardware may be disconnected");

    control.onEvent = [this](const ControlEvent& event, int32_t* response) {
        if (event.name != "SOError") return;
        BringThePrinterBack();
        *response = OPOS_ER_RETRY;
    };
    EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, "found"), 0);
    EXPECT_TRUE(
        server.WaitFor([](const auto& printer) { return printer.Lines() == std::vector<std::string>{"found"}; }));
}

TEST_F(ErrorRecoveryTest, AnEventHandlerThatThrowsIsOneThatCannotBeAsked)
{
    Ready("\"LogEnabled\"=dword:1\n\"LogPath\"=\"C:\\\\\"\n");
    TakeThePrinterAway();
    control.onEvent = [](const ControlEvent&, int32_t*) { throw std::runtime_error("the application's own mistake"); };
    EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, "lost"), OPOS_E_NOHARDWARE);
    EXPECT_EQ(control.Named("SOError").size(), 1U);
    EXPECT_EQ(Number(PIDX_State), OPOS_S_IDLE);
    EXPECT_NE(registry.ContentsBelow("drive_c/SOLogFile1.txt").find("[ControlObject] SOError FAILED"),
              std::string::npos);
    BringThePrinterBack();
    ASSERT_TRUE(RunUntil([this] { return device->PrintNormal(PTR_S_RECEIPT, "found") == 0; }));
    Async(true);
    EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, "first"), 0);
    EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, "second"), 0);
    EXPECT_TRUE(Completed(2));
}

TEST_F(ErrorRecoveryTest, APrintFromTheErrorHandlerDoesNotTakeTheFailedJobsPlace)
{
    Ready();
    TakeThePrinterAway();
    control.onEvent = [this](const ControlEvent& event, int32_t* response) {
        if (event.name != "SOError") return;
        EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, "nested"), OPOS_E_BUSY);
        *response = OPOS_ER_CONTINUEINPUT;  // neither RETRY nor CLEAR: the job ends, the queue stays
    };
    EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, "lost"), OPOS_E_NOHARDWARE);
    EXPECT_EQ(Number(PIDX_State), OPOS_S_IDLE);
    EXPECT_EQ(device->ReleaseDevice(), 0);
}

TEST_F(ErrorRecoveryTest, ASilentPrinterStaysUnhealthyWhileItIsAsked)
{
    Ready();
    server.SetMute(true);
    ASSERT_TRUE(RunUntil([this] { return device->CheckHealth(OPOS_CH_INTERNAL) == OPOS_E_NOHARDWARE; }));
    // Long enough for the next question to be asked and to stay without an answer.
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(3500);
    EXPECT_TRUE(RunUntil([&] {
        EXPECT_EQ(device->CheckHealth(OPOS_CH_INTERNAL), OPOS_E_NOHARDWARE);
        return HasFailure() || std::chrono::steady_clock::now() > end;
    }));
    server.SetMute(false);
    EXPECT_TRUE(RunUntil([this] { return device->CheckHealth(OPOS_CH_INTERNAL) == 0; }));
}

TEST_F(ErrorRecoveryTest, EveryErrorIsDescribedWhileItIsDelivered)
{
    const ServiceLogCapture log;
    // A failed status query is an error, too.
    Ready("\"Settings\"=dword:00000002\n\"LogEnabled\"=dword:1\n\"LogLevel\"=dword:2\n");
    device->COFreezeEvents(true);
    server.SetMute(true);
    ASSERT_TRUE(RunUntil([this] { return Number(PIDX_State) == OPOS_S_ERROR; }));
    control.onEvent = [this](const ControlEvent& event, int32_t*) {
        if (event.name != "SOError") return;
        EXPECT_EQ(device->GetPropertyString(PIDXPtr_ErrorString), "Printer disconnected");
        EXPECT_EQ(Number(PIDXPtr_ErrorLevel), PTR_EL_RECOVERABLE);
    };
    std::thread unfreezes([&] {
        WaitUntil([&] { return log.Has("[CPrintSpoolerTalis] --- AddJob SYNC PrintNormal Execute"); });
        device->COFreezeEvents(false);
    });
    EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, "lost"), OPOS_E_NOHARDWARE);
    unfreezes.join();
    EXPECT_GE(control.Named("SOError").size(), 2U);
}

TEST_F(ErrorRecoveryTest, QueuedOutputIsRetriedByDefaultAndNothingIsLost)
{
    Ready();
    Async(true);
    TakeThePrinterAway();
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, "line " + std::to_string(i)), 0);
    ASSERT_TRUE(UntilHeldUpAfter(2));
    EXPECT_EQ(device->ReleaseDevice(), OPOS_E_TIMEOUT) << "not while output is held up";
    BringThePrinterBack();
    ASSERT_TRUE(Completed(20));
    std::vector<std::string> expected;
    for (int i = 0; i < 20; ++i)
        expected.push_back("line " + std::to_string(i));
    EXPECT_TRUE(server.WaitFor([&](const auto& printer) { return printer.Lines() == expected; }));
}

TEST_F(ErrorRecoveryTest, ClearDropsTheQueueAndLeavesTheDeviceIdle)
{
    Ready();
    Async(true);
    TakeThePrinterAway();
    control.answer = OPOS_ER_CLEAR;
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, "gone"), 0);
    ASSERT_TRUE(RunUntil([this] { return !control.Named("SOError").empty() && Number(PIDX_State) == OPOS_S_IDLE; }));
    BringThePrinterBack();
    control.events.clear();
    control.answer = OPOS_ER_RETRY;  // a lost link is tried again every two seconds only
    EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, "next"), 0);
    ASSERT_TRUE(Completed(1));
    EXPECT_EQ(control.Named("SOOutputComplete"), std::vector<ControlEvent>{Complete(6)});
    EXPECT_TRUE(
        server.WaitFor([](const auto& printer) { return printer.Lines() == std::vector<std::string>{"next"}; }));
}

TEST_F(ErrorRecoveryTest, AnOpenCoverStopsALongTextAndItIsPrintedWholeAfterwards)
{
    Ready();
    Async(true);
    server.SetCover(true);
    std::string large;
    for (int i = 0; i < 20000; ++i)
        large += "line " + std::to_string(i) + '\n';
    control.onEvent = [this](const ControlEvent& event, int32_t* response) {
        if (event.name != "SOError") return;
        server.SetCover(false);
        *response = OPOS_ER_RETRY;
    };
    EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, large), 0);
    ASSERT_TRUE(Completed(1));
    EXPECT_FALSE(control.Named("SOError").empty());
    // The attempt that the cover stopped has left the beginning of the text on the paper; the repeated one is whole.
    ASSERT_TRUE(server.WaitFor([](const auto& printer) { return printer.Lines().back() == "line 19999"; }));
    const std::vector<std::string> lines = server.Lines();
    ASSERT_GE(lines.size(), 20000U);
    for (std::size_t i = 0; i < 20000; ++i) {
        ASSERT_EQ(lines[lines.size() - 20000 + i], "line " + std::to_string(i));
    }
}

TEST_F(ErrorRecoveryTest, AnImmediatePrintInsideTheErrorHandlerIsToldBusy)
{
    Ready();
    Async(true);
    TakeThePrinterAway();
    int32_t nested = 0;
    control.onEvent = [&](const ControlEvent& event, int32_t* response) {
        if (event.name != "SOError") return;
        if (nested == 0) nested = device->PrintImmediate(PTR_S_RECEIPT, "from the handler");
        BringThePrinterBack();
        *response = OPOS_ER_RETRY;
    };
    EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, "queued"), 0);
    ASSERT_TRUE(Completed(1));
    EXPECT_EQ(nested, OPOS_E_BUSY) << "the printer is held until this very handler returns";
    EXPECT_TRUE(
        server.WaitFor([](const auto& printer) { return printer.Lines() == std::vector<std::string>{"queued"}; }));
}

TEST_F(ErrorRecoveryTest, AnImmediatePrintThatWaitsForThePrinterDeliversTheErrorEventItself)
{
    Ready();
    Async(true);
    device->SetPropertyNumber(PIDX_FreezeEvents, 1);
    TakeThePrinterAway();
    control.onEvent = [&](const ControlEvent& event, int32_t* response) {
        if (event.name != "SOError") return;
        BringThePrinterBack();
        *response = OPOS_ER_RETRY;
    };
    EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, "queued"), 0);
    WaitUntil([this] { return device->State.load() == OPOS_S_ERROR; });
    device->SetPropertyNumber(PIDX_FreezeEvents, 0);
    EXPECT_EQ(device->PrintImmediate(PTR_S_RECEIPT, "now"), 0);
    ASSERT_TRUE(Completed(1));
    EXPECT_TRUE(server.WaitFor([](const auto& printer) {
        return printer.Lines() == std::vector<std::string>{"queued", "now"};
    }));
}

TEST_F(ErrorRecoveryTest, ClosingDuringAnErrorReturnsAtOnce)
{
    Ready();
    Async(true);
    TakeThePrinterAway();
    for (int i = 0; i < 50; ++i)
        device->PrintNormal(PTR_S_RECEIPT, "x");
    ASSERT_TRUE(UntilHeldUpAfter(1));
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(device->CloseService(), OPOS_E_TIMEOUT) << "busy: the release is refused, the close is not";
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
    EXPECT_EQ(device->State.load(), OPOS_S_CLOSED);
    EXPECT_EQ(device->Claimed.load(), 0);
}

TEST_F(ErrorRecoveryTest, ClosingWhileTheErrorIsFrozenReturnsToo)
{
    Ready();
    Async(true);
    device->SetPropertyNumber(PIDX_FreezeEvents, 1);
    TakeThePrinterAway();
    device->PrintNormal(PTR_S_RECEIPT, "x");
    ASSERT_TRUE(RunUntil([this] { return Number(PIDX_State) == OPOS_S_ERROR; }));
    device->CloseService();
    EXPECT_EQ(device->State.load(), OPOS_S_CLOSED);
    EXPECT_TRUE(control.Named("SOError").empty());
}

TEST_F(ErrorRecoveryTest, ClosingInsideTheErrorHandlerOfASynchronousPrintEndsThatPrint)
{
    Ready();
    TakeThePrinterAway();
    control.onEvent = [this](const ControlEvent& event, int32_t* response) {
        if (event.name != "SOError") return;
        device->CloseService();
        EXPECT_EQ(Number(PIDX_State), OPOS_S_CLOSED) << "it answers as closed already";
        *response = OPOS_ER_RETRY;
    };
    EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, "x"), OPOS_E_NOHARDWARE);
    EXPECT_EQ(device->State.load(), OPOS_S_CLOSED);
    control.onEvent = nullptr;
    BringThePrinterBack();
    EXPECT_EQ(device->OpenService("POSPrinter", "Till", &control), 0);
}

TEST_F(ErrorRecoveryTest, AnotherThreadMayCloseWhileASynchronousPrintWaits)
{
    Ready();
    TakeThePrinterAway();
    std::thread closer;
    control.onEvent = [&](const ControlEvent& event, int32_t*) {
        if (event.name != "SOError") return;
        closer = std::thread([this] { device->CloseService(); });
        WaitUntil([this] { return device->GetPropertyNumber(PIDX_State) == OPOS_S_CLOSED; });
    };
    EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, "x"), OPOS_E_NOHARDWARE);
    closer.join();
    EXPECT_EQ(device->State.load(), OPOS_S_CLOSED);
}

TEST_F(ErrorRecoveryTest, ADroppedConnectionIsReplacedWithoutTheApplicationNoticing)
{
    Ready();
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, "line " + std::to_string(i)), 0);
        EXPECT_TRUE(server.WaitFor(
            [i](const auto& printer) { return printer.Lines().size() == static_cast<std::size_t>(i) + 1; }));
        server.Drop();
    }
    EXPECT_TRUE(control.Named("SOError").empty());
}

TEST_F(ErrorRecoveryTest, WithTheSettingStatusPollingReportsASilentPrinter)
{
    Ready("\"Settings\"=dword:00000002\n");
    server.SetMute(true);
    ASSERT_TRUE(RunUntil([this] { return !control.Named("SOError").empty(); }));
    EXPECT_EQ(control.Named("SOError").front(), Error(107, 0));
    ASSERT_TRUE(RunUntil([this] { return Number(PIDX_State) == OPOS_S_IDLE; }));
}

}  // namespace
}  // namespace marbex::test
