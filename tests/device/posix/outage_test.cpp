// Links that break and come back under output, and output that the printer confirms.

#include <chrono>
#include <thread>

#include "device/posix/device_bench.h"

namespace marbex::test {
namespace {

using namespace opos;
using virtual_printer::PaperState;
using Lines = std::vector<std::string>;

class OutageTest : public DeviceBench {
protected:
    // The connection is reset and the printer not to be reached for so long.
    void BreakLinkFor(std::chrono::milliseconds time)
    {
        server.Refuse(true);
        server.Drop();
        back_ = std::thread([this, time] {
            std::this_thread::sleep_for(time);
            server.Refuse(false);
        });
    }
    void AwaitLink() { back_.join(); }

private:
    std::thread back_;
};

TEST_F(OutageTest, QueuedOutputSurvivesAShortOutageOrItsErrorIsReported)
{
    Ready();
    Async(true);
    control.answer = OPOS_ER_RETRY;
    Lines expected;
    for (int round = 0; round < 4; ++round) {
        BreakLinkFor(std::chrono::milliseconds(100 + 100 * round));
        for (const char* part : {" one", " two", " three"}) {
            expected.push_back("round " + std::to_string(round) + part);
            EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, expected.back() + '\n'), 0);
        }
        device->TransactionPrint(PTR_S_RECEIPT, PTR_TP_TRANSACTION);
        expected.push_back("transaction " + std::to_string(round));
        EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, expected.back() + '\n'), 0);
        device->TransactionPrint(PTR_S_RECEIPT, PTR_TP_NORMAL);
        ASSERT_TRUE(Completed(static_cast<std::size_t>(round + 1) * 4));
        AwaitLink();
        EXPECT_TRUE(server.WaitFor([&](const auto& printer) { return printer.Lines() == expected; }))
            << "in round " << round;
    }
    EXPECT_FALSE(control.Named("SOError").empty());
}

TEST_F(OutageTest, ASynchronousCallThatReturnsZeroIsOnPaperOnceItIsConfirmed)
{
    Ready("\"ConfirmOutput\"=dword:00000001\n");
    EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, "confirmed\n"), 0);
    EXPECT_EQ(server.Lines(), Lines{"confirmed"}) << "and not only on its way";
    server.SetMute(true);
    EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, "not answered\n"), OPOS_E_NOHARDWARE);
    server.SetMute(false);
    server.SetPaper(PaperState::kOut);
    EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, "held back\n"), OPOS_E_EXTENDED);
    EXPECT_EQ(Number(PIDX_ResultCodeExtended), OPOS_EPTR_REC_EMPTY);
    server.SetPaper(PaperState::kOk);

    int32_t value = 0;
    std::u16string none;
    EXPECT_EQ(device->DirectIO(100, &value, &none), 0);
    server.SetMute(true);
    EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, "nobody asks\n"), 0);
    server.SetMute(false);
    for (const int32_t illegal : {2, -1}) {
        value = illegal;
        EXPECT_EQ(device->DirectIO(100, &value, &none), OPOS_E_ILLEGAL);
    }
    EXPECT_EQ(device->DirectIO(100, nullptr, &none), OPOS_E_ILLEGAL);
    ASSERT_TRUE(RunUntil([this] { return !control.Named("SODirectIO").empty(); }));
    EXPECT_EQ(control.Named("SODirectIO"), (std::vector<ControlEvent>{{"SODirectIO", {100, 0}, u""}}));
}

TEST_F(OutageTest, WhatAnOpenCoverHoldsBackCompletesWhenItIsPrintedAndIsNotSentTwice)
{
    Ready("\"ConfirmOutput\"=dword:00000001\n");
    Async(true);
    server.SetCover(true);
    control.onEvent = [this](const ControlEvent& event, int32_t* response) {
        if (event.name != "SOError") return;
        EXPECT_EQ(event, Error(OPOS_E_EXTENDED, OPOS_EPTR_COVER_OPEN));
        EXPECT_TRUE(control.Named("SOOutputComplete").empty());
        server.SetCover(false);
        *response = OPOS_ER_RETRY;
    };
    EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, "once\n"), 0);
    ASSERT_TRUE(Completed(1));
    EXPECT_EQ(control.Named("SOError").size(), 1U);
    EXPECT_EQ(server.Lines(), Lines{"once"});
}

}  // namespace
}  // namespace marbex::test
