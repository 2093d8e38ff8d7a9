// Calls that meet an open error, a close or each other, from inside event handlers and from other threads.

#include <atomic>
#include <chrono>
#include <future>
#include <thread>

#include "common/wait_until.h"
#include "device/posix/device_bench.h"

namespace marbex::test {
namespace {

using namespace opos;

class ConcurrentCallsTest : public DeviceBench {};

TEST_F(ConcurrentCallsTest, ACallThatIsToldBusyLeavesTheErrorOfQueuedOutputAlone)
{
    Ready();
    Async(true);
    TakeThePrinterAway();
    control.onEvent = [this](const ControlEvent& event, int32_t* response) {
        if (event.name != "SOError") return;
        control.onEvent = nullptr;
        Async(false);
        EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, "nested"), OPOS_E_BUSY);
        device->TransactionPrint(PTR_S_RECEIPT, PTR_TP_TRANSACTION);
        device->PrintNormal(PTR_S_RECEIPT, "collected");
        EXPECT_EQ(device->TransactionPrint(PTR_S_RECEIPT, PTR_TP_NORMAL), OPOS_E_BUSY);
        EXPECT_EQ(Number(PIDX_State), OPOS_S_ERROR);
        EXPECT_EQ(device->ReleaseDevice(), OPOS_E_TIMEOUT) << "the queue would be dropped without a word";
        BringThePrinterBack();
        *response = OPOS_ER_RETRY;
    };
    EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, "queued\n"), 0);
    ASSERT_TRUE(Completed(1));
    EXPECT_EQ(device->TransactionPrint(PTR_S_RECEIPT, PTR_TP_NORMAL), 0);
    EXPECT_TRUE(server.WaitFor([](const auto& printer) {
        return printer.Lines() == std::vector<std::string>{"queued", "collected"};
    }));
    EXPECT_EQ(Number(PIDX_State), OPOS_S_IDLE);
}

TEST_F(ConcurrentCallsTest, APrintThatMeetsAnErrorOfThePollingLeavesTheDeviceIdle)
{
    Ready("\"Settings\"=dword:00000002\n");
    server.SetMute(true);
    std::promise<void> polled;
    control.onEvent = [&](const ControlEvent& event, int32_t*) {
        if (event.name == "SOError" && control.Named("SOError").size() == 1) polled.set_value();
    };
    // Beside the poll: it waits for the printer while the question fails, and has an error of its own then.
    ASSERT_TRUE(RunUntil([this] { return device->CheckHealth(OPOS_CH_INTERNAL) == OPOS_E_NOHARDWARE; }));
    EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, "lost"), OPOS_E_NOHARDWARE);
    ASSERT_TRUE(RunUntil([&] { return control.Named("SOError").size() >= 2; }));
    server.SetMute(false);
    ASSERT_TRUE(RunUntil([this] { return Number(PIDX_State) == OPOS_S_IDLE; }));
    EXPECT_EQ(device->ReleaseDevice(), 0);
}

// The handler of a synchronous print's error waits for a worker, and the worker closes the service.
TEST_F(ConcurrentCallsTest, ACloseOnAWorkerReturnsThoughAHandlerWaitsForThatWorker)
{
    Ready();
    TakeThePrinterAway();
    int32_t openedMeanwhile = 0;
    control.onEvent = [&](const ControlEvent& event, int32_t*) {
        if (event.name != "SOError") return;
        auto worker = std::async(std::launch::async, [this] {
            const int32_t result = device->CloseService();
            return std::pair{result, device->ClaimDevice(0)};
        });
        if (worker.wait_for(std::chrono::seconds(20)) != std::future_status::ready) {
            ADD_FAILURE() << "the worker's close hangs";
            std::_Exit(1);
        }
        EXPECT_EQ(worker.get(), (std::pair{OPOS_E_TIMEOUT, OPOS_E_TIMEOUT}));
        openedMeanwhile = device->OpenService("POSPrinter", "Till", &control);
        EXPECT_EQ(device->ReleaseDevice(), OPOS_E_ILLEGAL);
        EXPECT_EQ(device->CheckHealth(OPOS_CH_INTERNAL), OPOS_E_NOTCLAIMED);
    };
    EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, "x"), OPOS_E_NOHARDWARE);
    EXPECT_EQ(openedMeanwhile, OPOS_E_BUSY) << "the close is not finished";
    EXPECT_EQ(device->State.load(), OPOS_S_CLOSED) << "the print has finished it";
    control.onEvent = nullptr;
    BringThePrinterBack();
    EXPECT_EQ(device->OpenService("POSPrinter", "Till", &control), 0);
}

TEST_F(ConcurrentCallsTest, ClosingSaysThatQueuedOutputWasDropped)
{
    Ready();
    ASSERT_EQ(device->ReleaseDevice(), 0);  // a claimed device that is busy cannot be released, which says it, too
    Async(true);
    const auto queue = [this] {
        int32_t count = 5;
        std::u16string bytes = u"text\n";
        EXPECT_EQ(device->DirectIO(0, &count, &bytes), 0);
    };
    queue();
    EXPECT_EQ(device->CloseService(), 0);
    EXPECT_TRUE(
        server.WaitFor([](const auto& printer) { return printer.Lines() == std::vector<std::string>{"text"}; }));

    ASSERT_EQ(device->OpenService("POSPrinter", "Till", &control), 0);
    Async(true);
    TakeThePrinterAway();
    queue();
    EXPECT_EQ(device->CloseService(), OPOS_E_TIMEOUT);
}

TEST_F(ConcurrentCallsTest, AClaimThatWaitsIsNotWipedByTheReleaseThatLetsItIn)
{
    Ready();
    for (int round = 0; round < 300; ++round) {
        std::atomic<bool> waits{false};
        auto second = std::async(std::launch::async, [&] {
            int32_t result = 0;
            do {  // told that it is claimed until the release has begun
                waits = true;
                result = device->ClaimDevice(5000);
            } while (result == OPOS_E_CLAIMED);
            return result;
        });
        WaitUntil([&] { return waits.load(); });
        ASSERT_EQ(device->ReleaseDevice(), 0);
        ASSERT_EQ(second.get(), 0);
        ASSERT_EQ(device->Claimed.load(), 1) << "in round " << round;
    }
}

}  // namespace
}  // namespace marbex::test
