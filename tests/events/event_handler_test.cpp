// Events from any thread to the application's, over the real kernel objects and windows.

#include "events/event_handler.h"

#include <gtest/gtest.h>

#include <functional>
#include <future>
#include <thread>
#include <vector>

#include "common/jumping_clock.h"
#include "common/service_log_capture.h"
#include "common/wait_until.h"
#include "opos/common.h"
#include "platform/window.h"

namespace marbex::events {
namespace {

using opos::OPOS_ER_CLEAR;
using opos::OPOS_ER_RETRY;

constexpr auto kPatience = std::chrono::seconds(20);
constexpr const char* kPosted = "[CEventHandler] --- EventThread WAIT for Interface to Complete Handling";

// Plays the device: records what is delivered and answers errors.
class EventHandlerTest : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(handler.Open(), 0);
        handler.SetCallback(&EventHandlerTest::OnEvent, this);
    }

    static int32_t OnEvent(void* context, int32_t code, EventRecord& record)
    {
        auto& self = *static_cast<EventHandlerTest*>(context);
        EXPECT_EQ(std::this_thread::get_id(), self.windowThread);
        if (code == CB_STATUSUPDATEEVENT) self.delivered.push_back(static_cast<StatusUpdateEventRecord&>(record).data);
        if (code == CB_OUTPUTCOMPLETEEVENT) {
            self.delivered.push_back(static_cast<OutputCompleteEventRecord&>(record).outputId);
        }
        if (code == CB_ERROREVENT) {
            auto& error = static_cast<ErrorEventRecord&>(record);
            self.delivered.push_back(-error.resultCode);
            self.presets.push_back(error.errorResponse.load());
            if (self.answer != 0) error.errorResponse = self.answer;
            error.Resolve(error.errorResponse.load());
        }
        if (self.inHandler) std::exchange(self.inHandler, nullptr)();
        return 0;
    }

    // Runs the messages of this thread until done says so.
    bool RunUntil(const std::function<bool()>& done)
    {
        const auto end = std::chrono::steady_clock::now() + kPatience;
        const auto never = platform::Event::Create("", platform::ResetMode::kManual, false);
        while (!done()) {
            if (std::chrono::steady_clock::now() > end) return false;
            platform::WaitForOneRunningMessages(*never, 5);
        }
        return true;
    }

    test::JumpingClock clock;
    CEventHandler handler{clock};
    const std::thread::id windowThread = std::this_thread::get_id();
    std::vector<int32_t> delivered;
    std::vector<int32_t> presets;
    int32_t answer = 0;
    std::function<void()> inHandler;
};

TEST_F(EventHandlerTest, EventsOfSeveralThreadsArriveWholeAndInTheOrderOfEach)
{
    constexpr int kEach = 200;
    std::vector<std::thread> threads;
    for (int t = 0; t < 3; ++t) {
        threads.emplace_back([this, t] {
            for (int i = 0; i < kEach; ++i)
                handler.FireStatusUpdateEvent(t * 1000 + i);
        });
    }
    EXPECT_TRUE(RunUntil([this] { return delivered.size() == 3 * kEach; }));
    for (std::thread& thread : threads)
        thread.join();
    for (int t = 0; t < 3; ++t) {
        std::vector<int32_t> ofThread;
        for (const int32_t data : delivered) {
            if (data / 1000 == t) ofThread.push_back(data % 1000);
        }
        EXPECT_TRUE(std::is_sorted(ofThread.begin(), ofThread.end()));
        EXPECT_EQ(ofThread.size(), static_cast<std::size_t>(kEach));
    }
}

TEST_F(EventHandlerTest, BothFreezesHoldEventsBackAndClearDropsThem)
{
    handler.FreezeEvents(true);
    handler.COFreezeEvents(true);
    for (const int32_t data : {11, 12, 24})
        handler.FireStatusUpdateEvent(data);
    handler.FreezeEvents(false);
    platform::RunWaitingMessages();
    EXPECT_TRUE(delivered.empty()) << "the control object still holds them";
    handler.COFreezeEvents(false);
    EXPECT_TRUE(RunUntil([this] { return delivered.size() == 3; }));
    EXPECT_EQ(delivered, (std::vector<int32_t>{11, 12, 24}));

    handler.FreezeEvents(true);
    handler.FireStatusUpdateEvent(25);
    handler.Clear();
    handler.FreezeEvents(false);
    handler.FireOutputCompleteEvent(7);
    EXPECT_TRUE(RunUntil([this] { return delivered.size() == 4; }));
    EXPECT_EQ(delivered.back(), 7);
}

TEST_F(EventHandlerTest, AnErrorEventBringsTheAnswerBackToTheThreadThatFiredIt)
{
    for (const auto& [given, preset, expected] :
         {std::array{OPOS_ER_RETRY, OPOS_ER_CLEAR, OPOS_ER_RETRY}, std::array{0, OPOS_ER_RETRY, OPOS_ER_RETRY},
          std::array{99, OPOS_ER_RETRY, 99}}) {
        answer = given;
        auto result = std::async(std::launch::async, [this, preset = preset] {
            return handler.FireErrorEvent(114, 201, preset, ErrorOrigin::kJob);
        });
        EXPECT_TRUE(RunUntil([&] { return result.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
        EXPECT_EQ(result.get(), expected);
        EXPECT_EQ(presets.back(), preset);
    }
}

TEST_F(EventHandlerTest, AnErrorFiredOnTheWindowThreadIsAnsweredWhileItWaits)
{
    answer = OPOS_ER_RETRY;
    handler.FireStatusUpdateEvent(11);
    EXPECT_EQ(handler.FireErrorEvent(114, 203, OPOS_ER_CLEAR, ErrorOrigin::kJob), OPOS_ER_RETRY);
    EXPECT_EQ(delivered, (std::vector<int32_t>{11, -114})) << "queued events keep their place";
}

TEST_F(EventHandlerTest, AnErrorFiredInsideAHandlerGoesToTheWindowProcedureDirectly)
{
    const test::ServiceLogCapture log;
    int32_t inner = 0;
    inHandler = [&] {
        handler.FireStatusUpdateEvent(12);
        answer = OPOS_ER_RETRY;
        inner = handler.FireErrorEvent(107, 0, OPOS_ER_CLEAR, ErrorOrigin::kJob);
    };
    handler.FireStatusUpdateEvent(11);
    EXPECT_TRUE(RunUntil([this] { return delivered.size() == 3; }));
    EXPECT_EQ(delivered, (std::vector<int32_t>{11, -107, 12}));
    EXPECT_EQ(inner, OPOS_ER_RETRY);
    // Cut where every line of the log is cut.
    EXPECT_TRUE(log.Has(std::string("[CEventInterface] ------ WindowProc Callback [WM_SO_ERROR_EVENT_MESSAGE]"
                                    "[ResultCode=107][ResultCodeExtended=0][ErrorLocus=1][ErrorResponse=12]")
                            .substr(0, 124 - std::string_view("[2026/11/22 12:00:00:0000]").size())));
}

TEST_F(EventHandlerTest, ClearAndClosingAnswerWhatIsStillAwaited)
{
    handler.FreezeEvents(true);
    auto queued = std::async(std::launch::async,
                             [this] { return handler.FireErrorEvent(114, 201, OPOS_ER_RETRY, ErrorOrigin::kJob); });
    EXPECT_TRUE(RunUntil([this] { return handler.ErrorAnswerAwaitedElsewhere(); }));
    // The record may not be in the queue yet when the wait is announced; clearing until it answers is what ClearOutput
    // does.
    EXPECT_TRUE(RunUntil([&] {
        handler.Clear();
        return queued.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    }));
    EXPECT_EQ(queued.get(), OPOS_ER_CLEAR);

    auto awaited = std::async(std::launch::async,
                              [this] { return handler.FireErrorEvent(114, 201, OPOS_ER_RETRY, ErrorOrigin::kJob); });
    EXPECT_TRUE(RunUntil([this] { return handler.ErrorAnswerAwaitedElsewhere(); }));
    handler.BeginClosing();
    EXPECT_EQ(awaited.get(), OPOS_ER_CLEAR);
    EXPECT_EQ(handler.FireErrorEvent(114, 201, OPOS_ER_RETRY, ErrorOrigin::kJob), OPOS_ER_CLEAR)
        << "and so is every later one";
    EXPECT_TRUE(delivered.empty());
}

TEST_F(EventHandlerTest, EventsThatTheWindowThreadItselfFrozeAreWithdrawnInTheEnd)
{
    handler.FreezeEvents(true);
    std::thread jumper([this] {
        test::WaitUntil([this] { return handler.ErrorAnswerAwaitedElsewhere(); });
        clock.Jump(31000);
    });
    EXPECT_EQ(handler.FireErrorEvent(114, 201, OPOS_ER_RETRY, ErrorOrigin::kJob), OPOS_ER_CLEAR);
    jumper.join();
    handler.FreezeEvents(false);
    handler.FireStatusUpdateEvent(11);
    EXPECT_TRUE(RunUntil([this] { return !delivered.empty(); }));
    EXPECT_EQ(delivered, std::vector<int32_t>{11}) << "the withdrawn error is not delivered later";
}

TEST_F(EventHandlerTest, WithoutAnApplicationThatAnswersNetModeGoesOnAfterASecond)
{
    handler.SetNetMode(true);
    auto result = std::async(std::launch::async,
                             [this] { return handler.FireErrorEvent(114, 201, OPOS_ER_RETRY, ErrorOrigin::kJob); });
    EXPECT_EQ(result.wait_for(kPatience), std::future_status::ready) << "this thread runs no messages meanwhile";
    EXPECT_EQ(result.get(), OPOS_ER_CLEAR);
}

TEST_F(EventHandlerTest, CloseDeliversNothingMore)
{
    handler.FreezeEvents(true);
    for (int i = 0; i < 5; ++i)
        handler.FireStatusUpdateEvent(i);
    handler.Close();
    platform::RunWaitingMessages();
    EXPECT_TRUE(delivered.empty());
}

TEST_F(EventHandlerTest, CloseTakesAPostedEventBackWithoutWaitingForIt)
{
    const test::ServiceLogCapture log;
    handler.FireStatusUpdateEvent(11);
    test::WaitUntil([&] { return log.Has(kPosted); });
    const auto begin = std::chrono::steady_clock::now();
    handler.Close();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(1500)) << "no slice is waited for";
    EXPECT_EQ(platform::RunWaitingMessages(), 0U);
    EXPECT_TRUE(delivered.empty());
}

TEST_F(EventHandlerTest, CloseOnAnotherThreadLeavesALateMessageThatIsOnlyAcknowledged)
{
    const test::ServiceLogCapture log;
    handler.FireStatusUpdateEvent(24);
    test::WaitUntil([&] { return log.Has(kPosted); });
    std::thread([this] { handler.Close(); }).join();
    EXPECT_TRUE(log.Has("[CEventHandler] --- EventThread FOUND Terminating Request"));
    EXPECT_EQ(platform::RunWaitingMessages(), 1U);
    EXPECT_TRUE(delivered.empty());
    EXPECT_TRUE(log.Has("[CEventInterface] ------ WindowProc Callback [WM_SO_STATUSUPDATE_EVENT_MESSAGE][Data=24]"));

    // A new opening delivers its own events and the late record completes none of them.
    ASSERT_EQ(handler.Open(), 0);
    handler.FireStatusUpdateEvent(26);
    EXPECT_TRUE(RunUntil([this] { return delivered == std::vector<int32_t>{26}; }));
}

TEST_F(EventHandlerTest, CloseInsideADeliveryReturns)
{
    inHandler = [this] { handler.Close(); };
    handler.FireStatusUpdateEvent(11);
    handler.FireStatusUpdateEvent(12);
    EXPECT_TRUE(RunUntil([this] { return !delivered.empty(); }));
    platform::RunWaitingMessages();
    EXPECT_EQ(delivered, std::vector<int32_t>{11});
}

TEST_F(EventHandlerTest, NothingIsDeliveredForAnOwnerThatIsGone)
{
    auto owner = std::make_shared<int>();
    handler.SetOwner(owner);
    handler.FireStatusUpdateEvent(11);
    EXPECT_TRUE(RunUntil([this] { return delivered.size() == 1; }));
    owner.reset();
    const test::ServiceLogCapture log;
    handler.FireStatusUpdateEvent(12);
    EXPECT_TRUE(RunUntil([&] { return log.Has("[CEventHandler] --- EventThread OK Interface has Finished"); }));
    EXPECT_EQ(delivered.size(), 1U);
}

TEST(EventHandlerLifeTest, AHandlerReopenedOnAnotherThreadDeliversThere)
{
    auto handler = std::make_unique<CEventHandler>(platform::SystemClock());
    ASSERT_EQ(handler->Open(), 0);
    handler->Close();
    const test::ServiceLogCapture log;
    std::promise<void> fired;
    std::promise<void> oldWindowGone;
    std::atomic<int> delivered{0};
    std::thread other([&] {
        handler->Open();
        handler->SetCallback(
            [](void* count, int32_t, EventRecord&) {
                ++*static_cast<std::atomic<int>*>(count);
                return 0;
            },
            &delivered);
        handler->FireStatusUpdateEvent(11);
        test::WaitUntil([&] { return log.Has(kPosted); });
        fired.set_value();
        oldWindowGone.get_future().wait();
        handler->FireStatusUpdateEvent(12);
        const auto never = platform::Event::Create("", platform::ResetMode::kManual, false);
        const auto end = std::chrono::steady_clock::now() + kPatience;
        while (delivered < 2 && std::chrono::steady_clock::now() < end)
            platform::WaitForOneRunningMessages(*never, 5);
        handler->Close();
        handler.reset();
    });
    fired.get_future().wait();
    platform::RunWaitingMessages();  // the window of the first opening is destroyed
    oldWindowGone.set_value();
    other.join();
    EXPECT_EQ(delivered.load(), 2);
}

TEST(EventHandlerLifeTest, AHandlerDestroyedElsewhereLeavesItsWindowToItsThread)
{
    const test::ServiceLogCapture log;
    test::JumpingClock clock;
    auto handler = std::make_unique<CEventHandler>(clock);
    ASSERT_EQ(handler->Open(), 0);
    std::thread([&] { handler.reset(); }).join();
    EXPECT_FALSE(log.Has("[CEventInterface] ------ OnDestroy Begin"));
    platform::RunWaitingMessages();
    EXPECT_TRUE(log.Has("[CEventInterface] ------ OnDestroy End"));
}

}  // namespace
}  // namespace marbex::events
