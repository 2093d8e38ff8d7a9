#include "platform/kernel.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

namespace marbex::platform {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// Long enough that a test which hangs fails, never long enough that a slow machine does.
constexpr uint32_t kLimit = 30000;

bool Look(WaitObject& object)
{
    return WaitForOne(object, 0).Obtained();
}

std::unique_ptr<Event> AutoEvent(bool signalled = false)
{
    return Event::Create("", ResetMode::kAuto, signalled);
}
std::unique_ptr<Event> ManualEvent(bool signalled = false)
{
    return Event::Create("", ResetMode::kManual, signalled);
}

// The analysis does not see a mutex that a wait function has obtained.
bool Release(Mutex& mutex) MARBEX_NO_THREAD_SAFETY_ANALYSIS
{
    return mutex.Release();
}

TEST(KernelEvent, AutoResetIsConsumedByOneWaitAndManualResetByNone)
{
    const auto automatic = AutoEvent(true);
    EXPECT_TRUE(Look(*automatic));
    EXPECT_FALSE(Look(*automatic));
    automatic->Set();
    automatic->Set();
    EXPECT_TRUE(Look(*automatic));
    EXPECT_FALSE(Look(*automatic)) << "an event counted";

    const auto manual = ManualEvent();
    EXPECT_FALSE(Look(*manual));
    manual->Set();
    EXPECT_TRUE(Look(*manual));
    EXPECT_TRUE(Look(*manual));
    manual->Reset();
    EXPECT_FALSE(Look(*manual));
}

TEST(KernelWait, AnyConsumesTheLowestSignalledObjectOnly)
{
    const auto never = AutoEvent();
    const auto first = AutoEvent(true);
    const auto second = AutoEvent(true);
    WaitObject* const objects[] = {never.get(), first.get(), second.get()};

    const WaitResult result = WaitForAny(objects, kLimit);
    EXPECT_EQ(result.status, WaitStatus::kSignalled);
    EXPECT_EQ(result.index, 1U);
    EXPECT_FALSE(Look(*first));
    EXPECT_TRUE(Look(*second));
}

TEST(KernelWait, AllConsumesNothingUntilAllAreSignalled)
{
    const auto semaphore = Semaphore::Create("", 1, 1);
    const auto mutex = Mutex::Create("");
    const auto event = AutoEvent();
    WaitObject* const objects[] = {semaphore.get(), mutex.get(), event.get()};

    EXPECT_EQ(WaitForAll(objects, 20).status, WaitStatus::kTimedOut);
    EXPECT_TRUE(Look(*semaphore)) << "a wait for all that failed has kept a part";
    EXPECT_FALSE(Release(*mutex));
    ASSERT_TRUE(semaphore->Release());

    const auto setter = Thread::Start([&] { event->Set(); });
    EXPECT_EQ(WaitForAll(objects, kLimit).status, WaitStatus::kSignalled);
    EXPECT_FALSE(Look(*semaphore));
    EXPECT_FALSE(Look(*event));
    EXPECT_TRUE(Release(*mutex));
}

TEST(KernelWait, RefusesNoneTooManyAndTheSameTwice)
{
    const auto event = ManualEvent(true);
    WaitObject* const twice[] = {event.get(), event.get()};
    EXPECT_EQ(WaitForAny(twice, 0).status, WaitStatus::kFailed);
    EXPECT_EQ(WaitForAll(twice, 0).status, WaitStatus::kFailed);
    EXPECT_EQ(WaitForAny({}, 0).status, WaitStatus::kFailed);

    std::vector<std::unique_ptr<Event>> events;
    std::vector<WaitObject*> objects;
    for (std::size_t i = 0; i < kMaximumWaitObjects + 1; ++i) {
        events.push_back(ManualEvent(true));
        objects.push_back(events.back().get());
    }
    EXPECT_EQ(WaitForAll(objects, 0).status, WaitStatus::kFailed);
    objects.pop_back();
    EXPECT_EQ(WaitForAll(objects, 0).status, WaitStatus::kSignalled);
}

TEST(KernelWait, TimesOutAtItsMomentHoweverOftenItIsWoken)
{
    const auto pulsed = AutoEvent();
    const auto never = AutoEvent();
    std::atomic<bool> over{false};
    const auto pulser = Thread::Start([&] {
        while (!over)
            pulsed->Set();
    });
    WaitObject* const objects[] = {pulsed.get(), never.get()};

    const auto start = steady_clock::now();
    EXPECT_EQ(WaitForAll(objects, 60).status, WaitStatus::kTimedOut);
    const auto took = steady_clock::now() - start;
    over = true;
    EXPECT_GE(took, milliseconds(60));
    EXPECT_LT(took, milliseconds(5000));
}

TEST(KernelMutex, BelongsToAThreadThatMayTakeItAgain)
{
    const auto mutex = Mutex::Create("");
    EXPECT_FALSE(Release(*mutex)) << "nobody owns it";
    EXPECT_TRUE(Look(*mutex));
    EXPECT_TRUE(Look(*mutex));

    WaitResult elsewhere;
    bool released = true;
    const auto other = [&] {
        elsewhere = WaitForOne(*mutex, 0);
        released = Release(*mutex);
    };
    std::thread(other).join();
    EXPECT_EQ(elsewhere.status, WaitStatus::kTimedOut);
    EXPECT_FALSE(released);

    EXPECT_TRUE(Release(*mutex));
    std::thread(other).join();
    EXPECT_EQ(elsewhere.status, WaitStatus::kTimedOut) << "taken twice, released once";

    EXPECT_TRUE(Release(*mutex));
    std::thread(other).join();
    EXPECT_EQ(elsewhere.status, WaitStatus::kSignalled);
    EXPECT_TRUE(released);
}

TEST(KernelMutex, IsAbandonedByAThreadThatEnds)
{
    const auto event = AutoEvent();
    const auto mutex = Mutex::Create("");
    WaitObject* const objects[] = {event.get(), mutex.get()};

    // Both kinds of thread: ours, and one of the application's.
    const auto own = Thread::Start([&] {
        EXPECT_TRUE(Look(*mutex));
        EXPECT_TRUE(Look(*mutex));
    });
    ASSERT_TRUE(WaitForOne(*own, kLimit).Obtained());
    EXPECT_EQ(WaitForOne(*mutex, 0).status, WaitStatus::kAbandoned) << "abandoned before the thread is signalled";
    EXPECT_TRUE(Release(*mutex));
    EXPECT_EQ(WaitForOne(*mutex, 0).status, WaitStatus::kSignalled) << "told once";
    EXPECT_TRUE(Release(*mutex));

    std::thread([&] { EXPECT_TRUE(Look(*mutex)); }).join();
    const WaitResult any = WaitForAny(objects, kLimit);
    EXPECT_EQ(any.status, WaitStatus::kAbandoned);
    EXPECT_EQ(any.index, 1U);
    EXPECT_TRUE(any.Obtained());
    EXPECT_TRUE(Release(*mutex));

    std::thread([&] { EXPECT_TRUE(Look(*mutex)); }).join();
    event->Set();
    const WaitResult all = WaitForAll(objects, kLimit);
    EXPECT_EQ(all.status, WaitStatus::kAbandoned);
    EXPECT_TRUE(Release(*mutex));
}

TEST(KernelMutex, AbandonmentWakesWhoeverWaits)
{
    const auto mutex = Mutex::Create("");
    const auto taken = ManualEvent();
    const auto mayEnd = ManualEvent();
    const auto owner = Thread::Start([&] {
        EXPECT_TRUE(Look(*mutex));
        taken->Set();
        WaitForOne(*mayEnd, kLimit);
    });
    ASSERT_TRUE(WaitForOne(*taken, kLimit).Obtained());
    const auto ender = Thread::Start([&] { mayEnd->Set(); });
    EXPECT_EQ(WaitForOne(*mutex, kLimit).status, WaitStatus::kAbandoned);
    EXPECT_TRUE(Release(*mutex));
}

TEST(KernelMutex, MayBeClosedWhileItIsOwned)
{
    std::thread([] {
        auto mutex = Mutex::Create("");
        EXPECT_TRUE(Look(*mutex));
        mutex.reset();
    }).join();

    const auto taken = ManualEvent();
    const auto closed = ManualEvent();
    auto mutex = Mutex::Create("");
    const auto owner = Thread::Start([&] {
        EXPECT_TRUE(Look(*mutex));
        taken->Set();
        WaitForOne(*closed, kLimit);
    });
    ASSERT_TRUE(WaitForOne(*taken, kLimit).Obtained());
    mutex.reset();
    closed->Set();
    EXPECT_TRUE(WaitForOne(*owner, kLimit).Obtained());
}

TEST(KernelSemaphore, CountsBetweenZeroAndItsMaximum)
{
    EXPECT_EQ(Semaphore::Create("", 2, 1), nullptr);
    EXPECT_EQ(Semaphore::Create("", 0, 0), nullptr);

    const auto semaphore = Semaphore::Create("", 1, 3);
    EXPECT_FALSE(semaphore->Release(3));
    EXPECT_FALSE(semaphore->Release(0));
    EXPECT_FALSE(semaphore->Release(0xFFFFFFFF));
    EXPECT_TRUE(semaphore->Release(2));
    EXPECT_TRUE(Look(*semaphore));
    EXPECT_TRUE(Look(*semaphore));
    EXPECT_TRUE(Look(*semaphore));
    EXPECT_FALSE(Look(*semaphore));
}

TEST(KernelNames, OneNameIsOneObjectUntilTheLastIsClosed)
{
    bool existed = true;
    auto first = Event::Create("EName", ResetMode::kManual, false, &existed);
    ASSERT_NE(first, nullptr);
    EXPECT_FALSE(existed);

    auto second = Event::Create("EName", ResetMode::kAuto, true, &existed);
    ASSERT_NE(second, nullptr);
    EXPECT_TRUE(existed);
    EXPECT_FALSE(Look(*first)) << "an opened event keeps its state";
    second->Set();
    EXPECT_TRUE(Look(*first));
    EXPECT_TRUE(Look(*second)) << "and its kind of reset";

    EXPECT_EQ(Mutex::Create("EName", &existed), nullptr);
    EXPECT_FALSE(existed);
    EXPECT_EQ(Semaphore::Create("EName", 1, 1), nullptr);
    EXPECT_NE(Event::Create("ename", ResetMode::kAuto, false, &existed), nullptr);
    EXPECT_FALSE(existed) << "names differ by case";

    first.reset();
    EXPECT_TRUE(Look(*second)) << "the other opening lives on";
    EXPECT_EQ(Mutex::Create("EName"), nullptr);
    second.reset();
    EXPECT_NE(Mutex::Create("EName", &existed), nullptr);
    EXPECT_FALSE(existed);

    const auto unnamed = Event::Create("", ResetMode::kManual, true);
    const auto other = Event::Create("", ResetMode::kManual, false, &existed);
    EXPECT_FALSE(existed);
    EXPECT_FALSE(Look(*other));
}

TEST(KernelThread, IsSignalledAfterItsBodyAndJoinedByItsDestruction)
{
    const auto mayEnd = ManualEvent();
    std::atomic<bool> ended{false};
    auto thread = Thread::Start([&, keeps = std::make_shared<int>(1)] {
        WaitForOne(*mayEnd, kLimit);
        ended = true;
    });
    EXPECT_FALSE(Look(*thread));
    mayEnd->Set();
    EXPECT_TRUE(WaitForOne(*thread, kLimit).Obtained());
    EXPECT_TRUE(ended);
    EXPECT_TRUE(Look(*thread)) << "it stays signalled";

    ended = false;
    {
        const auto joined = Thread::Start([&] { ended = true; });
    }
    EXPECT_TRUE(ended);
}

TEST(KernelThread, MayDestroyItself)
{
    const auto started = ManualEvent();
    const auto gone = ManualEvent();
    std::unique_ptr<Thread> thread;
    thread = Thread::Start([&] {
        WaitForOne(*started, kLimit);
        thread.reset();
        gone->Set();
    });
    started->Set();
    EXPECT_TRUE(WaitForOne(*gone, kLimit).Obtained());
}

// A wake-up lost anywhere stops the game.
TEST(KernelStress, TwoThreadsPassABall)
{
    const auto ping = AutoEvent();
    const auto pong = AutoEvent();
    constexpr int kRounds = 20000;
    const auto other = Thread::Start([&] {
        for (int i = 0; i < kRounds; ++i) {
            if (!WaitForOne(*ping, kLimit).Obtained()) return;
            pong->Set();
        }
    });
    for (int i = 0; i < kRounds; ++i) {
        ping->Set();
        ASSERT_TRUE(WaitForOne(*pong, kLimit).Obtained()) << "round " << i;
    }
}

TEST(KernelStress, OneSetOfAnAutoResetEventReleasesOneOfSeveralThreads)
{
    const auto event = AutoEvent();
    const auto stop = ManualEvent();
    const auto taken = AutoEvent();
    std::atomic<int> total{0};
    std::vector<std::unique_ptr<Thread>> racers;
    for (int i = 0; i < 3; ++i) {
        racers.push_back(Thread::Start([&] {
            WaitObject* const objects[] = {event.get(), stop.get()};
            while (WaitForAny(objects, kForever).index == 0) {
                ++total;
                taken->Set();
            }
        }));
    }
    constexpr int kSets = 5000;
    for (int i = 1; i <= kSets; ++i) {
        event->Set();
        ASSERT_TRUE(WaitForOne(*taken, kLimit).Obtained());
        ASSERT_EQ(total, i);
    }
    stop->Set();
    racers.clear();
    EXPECT_EQ(total, kSets);
}

// Units that are handed to a waiter at the very moment its time runs out must not vanish.
TEST(KernelStress, NothingIsLostBetweenSignalsAndTimeOuts)
{
    constexpr int kUnits = 20000;
    const auto semaphore = Semaphore::Create("", 0, kUnits);
    const auto done = ManualEvent();
    std::atomic<int> obtained{0};
    std::vector<std::unique_ptr<Thread>> consumers;
    for (int i = 0; i < 3; ++i) {
        consumers.push_back(Thread::Start([&, limit = static_cast<uint32_t>(i % 2)] {
            while (!Look(*done)) {
                if (WaitForOne(*semaphore, limit).Obtained() && ++obtained == kUnits) done->Set();
            }
        }));
    }
    for (int i = 0; i < kUnits; ++i)
        ASSERT_TRUE(semaphore->Release());
    EXPECT_TRUE(WaitForOne(*done, kLimit).Obtained());
    consumers.clear();
    EXPECT_EQ(obtained, kUnits);
    EXPECT_FALSE(Look(*semaphore));
}

// Takers of pairs in both orders: no deadlock, and never two in a guarded place.
TEST(KernelStress, WaitingForAllTakesPairsOfMutexesInAnyOrder)
{
    constexpr std::size_t kSeats = 4;
    std::array<std::unique_ptr<Mutex>, kSeats> forks;
    for (auto& fork : forks)
        fork = Mutex::Create("");
    std::array<int, kSeats> uses{};  // guarded by the fork of the same index
    std::vector<std::unique_ptr<Thread>> thinkers;
    constexpr int kMeals = 1500;
    for (std::size_t seat = 0; seat < kSeats; ++seat) {
        thinkers.push_back(Thread::Start([&, seat] {
            const std::size_t left = seat;
            const std::size_t right = (seat + 1) % kSeats;
            WaitObject* const pair[] = {forks[left].get(), forks[right].get()};
            for (int meal = 0; meal < kMeals; ++meal) {
                if (!WaitForAll(pair, kLimit).Obtained()) return;
                ++uses[left];
                ++uses[right];
                EXPECT_TRUE(Release(*forks[left]));
                EXPECT_TRUE(Release(*forks[right]));
            }
        }));
    }
    thinkers.clear();
    for (const int used : uses)
        EXPECT_EQ(used, 2 * kMeals);
}

class Guarded {
public:
    Guarded() : mutex_(Mutex::Create("")) {}
    void Add()
    {
        const MutexHold hold(*mutex_);
        ++value_;
    }
    bool TryAdd()
    {
        if (!mutex_->AcquireWithin(1)) return false;
        ++value_;
        mutex_->Release();
        return true;
    }
    int Value()
    {
        const MutexHold hold(*mutex_);
        return value_;
    }

private:
    const std::unique_ptr<Mutex> mutex_;
    int value_ MARBEX_GUARDED_BY(*mutex_) = 0;
};

TEST(KernelStress, AMutexGuards)
{
    Guarded guarded;
    std::atomic<int> added{0};
    std::vector<std::unique_ptr<Thread>> threads;
    for (int i = 0; i < 4; ++i) {
        threads.push_back(Thread::Start([&] {
            for (int n = 0; n < 3000; ++n) {
                guarded.Add();
                ++added;
                if (guarded.TryAdd()) ++added;
            }
        }));
    }
    threads.clear();
    EXPECT_EQ(guarded.Value(), added);
}

}  // namespace
}  // namespace marbex::platform
