// What is only to be seen when it is known that a thread sleeps.

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "common/wait_until.h"
#include "platform/posix/kernel_state.h"

namespace marbex::platform {
namespace {

constexpr uint32_t kLimit = 30000;

void UntilWaitedForBy(std::size_t count, const WaitObject& object)
{
    test::WaitUntil([&] {
        const LockHold hold(waitLock);
        return object.Native()->waiters.size() == count;
    });
}

// The analysis does not see a mutex that a wait function has obtained.
bool Release(Mutex& mutex) MARBEX_NO_THREAD_SAFETY_ANALYSIS
{
    return mutex.Release();
}

TEST(KernelSleepers, SetReleasesThemAllEvenIfResetFollowsAtOnce)
{
    const auto event = Event::Create("", ResetMode::kManual, false);
    std::atomic<int> released{0};
    std::vector<std::unique_ptr<Thread>> threads;
    for (int i = 0; i < 3; ++i) {
        threads.push_back(Thread::Start([&] {
            if (WaitForOne(*event, kLimit).Obtained()) ++released;
        }));
    }
    UntilWaitedForBy(3, *event);
    event->Set();
    event->Reset();
    threads.clear();
    EXPECT_EQ(released, 3);
    EXPECT_FALSE(WaitForOne(*event, 0).Obtained());
}

TEST(KernelSleepers, AreServedInTheOrderTheyCame)
{
    const auto mutex = Mutex::Create("");
    ASSERT_TRUE(WaitForOne(*mutex, 0).Obtained());
    std::vector<int> order;  // guarded by mutex
    std::vector<std::unique_ptr<Thread>> threads;
    for (int i = 0; i < 4; ++i) {
        threads.push_back(Thread::Start([&, i] {
            if (!WaitForOne(*mutex, kLimit).Obtained()) return;
            order.push_back(i);
            EXPECT_TRUE(Release(*mutex));
        }));
        UntilWaitedForBy(static_cast<std::size_t>(i) + 1, *mutex);
    }
    ASSERT_TRUE(Release(*mutex));
    // Back in the queue behind them all, although this thread was running when it let go.
    ASSERT_TRUE(WaitForOne(*mutex, kLimit).Obtained());
    EXPECT_EQ(order, (std::vector<int>{0, 1, 2, 3}));
    EXPECT_TRUE(Release(*mutex));
}

TEST(KernelSleepers, LeaveNothingBehindWhenTheirTimeRunsOut)
{
    const auto first = Event::Create("", ResetMode::kAuto, false);
    const auto second = Event::Create("", ResetMode::kAuto, false);
    WaitObject* const objects[] = {first.get(), second.get()};
    EXPECT_EQ(WaitForAny(objects, 1).status, WaitStatus::kTimedOut);
    EXPECT_EQ(WaitForAll(objects, 1).status, WaitStatus::kTimedOut);
    UntilWaitedForBy(0, *first);
    UntilWaitedForBy(0, *second);
}

TEST(KernelSleepers, SeeAMessageThatIsPostedWhileTheySleep)
{
    struct Counter : WindowProcedure {
        int OnCreate() override { return 0; }
        void OnDestroy() override {}
        intptr_t WindowProc(uint32_t, uintptr_t, intptr_t, const std::function<intptr_t()>&) override
        {
            ++run;
            done->Set();
            return 0;
        }
        int run = 0;
        std::unique_ptr<Event> done = Event::Create("", ResetMode::kAuto, false);
    } counter;
    const auto window = Window::Create("Test", "Test", counter);
    const auto poster = Thread::Start([&] {
        UntilWaitedForBy(1, *counter.done);
        EXPECT_TRUE(window->Post(kFirstApplicationMessage, 0, 0));
    });
    EXPECT_EQ(WaitForOneRunningMessages(*counter.done, kLimit).status, WaitStatus::kSignalled);
    EXPECT_EQ(counter.run, 1);
}

}  // namespace
}  // namespace marbex::platform
