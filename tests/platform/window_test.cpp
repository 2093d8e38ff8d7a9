#include "platform/window.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "common/wait_until.h"
#include "platform/kernel.h"
#include "platform/window_recorder.h"

namespace marbex::platform {
namespace {

constexpr uint32_t kLimit = 30000;
constexpr uint32_t kMessage = kFirstApplicationMessage + 1;

using Words = std::vector<uintptr_t>;

TEST(WindowMessages, RunInOrderAndOnlyWhenTheThreadRunsThem)
{
    Recorder recorder;
    const auto window = recorder.Create();
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(window->BelongsToCallingThread());
    EXPECT_FALSE(RunOneMessage());
    EXPECT_TRUE(window->Post(kMessage, 1, -5));
    EXPECT_TRUE(window->Post(kMessage + 1, 2, 6));
    EXPECT_TRUE(recorder.words.empty());

    EXPECT_EQ(RunWaitingMessages(), 2U);
    EXPECT_EQ(recorder.messages, (std::vector<uint32_t>{kMessage, kMessage + 1}));
    EXPECT_EQ(recorder.words, (Words{1, 2}));
    EXPECT_EQ(recorder.longs, (std::vector<intptr_t>{-5, 6}));
    EXPECT_EQ(RunWaitingMessages(), 0U);
}

TEST(WindowMessages, PostedWhileRunningWaitForTheNextTime)
{
    Recorder recorder;
    const auto window = recorder.Create();
    recorder.onMessage = [&](uintptr_t word) { EXPECT_TRUE(window->Post(kMessage, word + 1, 0)); };
    EXPECT_TRUE(window->Post(kMessage, 1, 0));
    EXPECT_EQ(RunWaitingMessages(), 1U);
    EXPECT_EQ(RunWaitingMessages(), 1U);
    EXPECT_EQ(recorder.words, (Words{1, 2}));
}

TEST(WindowMessages, AreRefusedByAFullQueue)
{
    Recorder recorder;
    auto window = recorder.Create();
    uint32_t accepted = 0;
    while (accepted < 20000 && window->Post(kMessage, accepted, 0))
        ++accepted;
    EXPECT_EQ(accepted, 10000U);
    EXPECT_TRUE(RunOneMessage());
    EXPECT_TRUE(window->Post(kMessage, 0, 0));
}

TEST(WindowMessages, FromManyThreadsComeOnceAndInEachThreadsOrder)
{
    constexpr uintptr_t kPosters = 4;
    constexpr uintptr_t kEach = 2000;
    Recorder recorder;
    const auto window = recorder.Create();
    const auto all = Event::Create("", ResetMode::kManual, false);
    std::vector<uintptr_t> next(kPosters, 0);
    recorder.onMessage = [&](uintptr_t word) {
        EXPECT_EQ(word % kEach, next[word / kEach]++);
        if (recorder.words.size() == kPosters * kEach) all->Set();
    };
    std::vector<std::unique_ptr<Thread>> posters;
    for (uintptr_t poster = 0; poster < kPosters; ++poster) {
        posters.push_back(Thread::Start([&, poster] {
            for (uintptr_t i = 0; i < kEach; ++i) {
                test::WaitUntil([&] { return window->Post(kMessage, poster * kEach + i, 0); });
            }
        }));
    }
    EXPECT_TRUE(WaitForOneRunningMessages(*all, kLimit).Obtained());
    EXPECT_EQ(recorder.words.size(), kPosters * kEach);
}

TEST(WindowWait, ASignalledObjectGoesBeforeAWaitingMessage)
{
    Recorder recorder;
    const auto window = recorder.Create();
    const auto event = Event::Create("", ResetMode::kAuto, true);
    EXPECT_TRUE(window->Post(kMessage, 1, 0));
    EXPECT_EQ(WaitForOneRunningMessages(*event, kLimit).status, WaitStatus::kSignalled);
    EXPECT_TRUE(recorder.words.empty());

    WaitObject* const objects[] = {event.get()};
    EXPECT_EQ(WaitForAnyOrMessages(objects, kLimit).status, WaitStatus::kMessages);
    EXPECT_TRUE(recorder.words.empty()) << "told of, not run";
    EXPECT_EQ(WaitForOne(*event, 0).status, WaitStatus::kTimedOut) << "a plain wait runs nothing";
    EXPECT_TRUE(recorder.words.empty());
}

TEST(WindowWait, EndsAsSoonAsAMessageSignalsTheObject)
{
    Recorder recorder;
    const auto window = recorder.Create();
    const auto never = Event::Create("", ResetMode::kAuto, false);
    const auto event = Event::Create("", ResetMode::kAuto, false);
    recorder.onMessage = [&](uintptr_t word) {
        if (word == 2) event->Set();
    };
    for (uintptr_t word = 1; word <= 3; ++word)
        EXPECT_TRUE(window->Post(kMessage, word, 0));
    WaitObject* const objects[] = {never.get(), event.get()};
    const WaitResult result = WaitForAnyRunningMessages(objects, kLimit);
    EXPECT_EQ(result.status, WaitStatus::kSignalled);
    EXPECT_EQ(result.index, 1U);
    EXPECT_EQ(recorder.words, (Words{1, 2}));
}

TEST(WindowWait, MayBeNestedInsideAMessage)
{
    Recorder recorder;
    const auto window = recorder.Create();
    const auto inner = Event::Create("", ResetMode::kAuto, false);
    const auto outer = Event::Create("", ResetMode::kAuto, false);
    recorder.onMessage = [&](uintptr_t word) {
        if (word == 1) {
            EXPECT_TRUE(WaitForOneRunningMessages(*inner, kLimit).Obtained());
            outer->Set();
        } else {
            inner->Set();
        }
    };
    const auto poster = Thread::Start([&] {
        EXPECT_TRUE(window->Post(kMessage, 1, 0));
        EXPECT_TRUE(window->Post(kMessage, 2, 0));
    });
    EXPECT_TRUE(WaitForOneRunningMessages(*outer, kLimit).Obtained());
    EXPECT_EQ(recorder.words, (Words{1, 2}));
}

TEST(WindowWait, TimesOutAlthoughMessagesNeverCease)
{
    Recorder recorder;
    const auto window = recorder.Create();
    const auto never = Event::Create("", ResetMode::kAuto, false);
    recorder.onMessage = [&](uintptr_t) { EXPECT_TRUE(window->Post(kMessage, 0, 0)); };
    EXPECT_TRUE(window->Post(kMessage, 0, 0));
    EXPECT_EQ(WaitForOneRunningMessages(*never, 20).status, WaitStatus::kTimedOut);
    EXPECT_GT(recorder.words.size(), 1U);

    recorder.words.clear();
    EXPECT_EQ(WaitForOneRunningMessages(*never, 0).status, WaitStatus::kTimedOut);
    EXPECT_EQ(recorder.words.size(), 1U);
}

TEST(WindowWait, AMutexIsObtainedWhileMessagesRun)
{
    Recorder recorder;
    const auto window = recorder.Create();
    const auto mutex = Mutex::Create("");
    const auto taken = Event::Create("", ResetMode::kManual, false);
    const auto answered = Event::Create("", ResetMode::kManual, false);
    recorder.onMessage = [&](uintptr_t) { answered->Set(); };
    // Holds the mutex until its message has been run by the thread that waits for the mutex.
    const auto holder = Thread::Start([&] {
        const MutexHold hold(*mutex);
        taken->Set();
        EXPECT_TRUE(window->Post(kMessage, 1, 0));
        EXPECT_TRUE(WaitForOne(*answered, kLimit).Obtained());
    });
    ASSERT_TRUE(WaitForOne(*taken, kLimit).Obtained());
    mutex->AcquireRunningMessages();
    EXPECT_EQ(recorder.words, Words{1});
    EXPECT_TRUE(mutex->Release());
}

TEST(WindowLife, ARefusedOneIsNone)
{
    Recorder recorder;
    recorder.refuses = true;
    EXPECT_EQ(recorder.Create(), nullptr);
    EXPECT_FALSE(recorder.destroyed);
}

TEST(WindowLife, DestroyedOnItsThreadAtOnceWithItsMessages)
{
    Recorder recorder;
    Recorder neighbour;
    auto window = recorder.Create();
    const auto other = neighbour.Create();
    EXPECT_TRUE(window->Post(kMessage, 1, 0));
    EXPECT_TRUE(other->Post(kMessage, 2, 0));
    EXPECT_TRUE(window->Post(kMessage, 3, 0));
    window.reset();
    EXPECT_TRUE(recorder.destroyed);
    EXPECT_EQ(RunWaitingMessages(), 1U);
    EXPECT_TRUE(recorder.words.empty());
    EXPECT_EQ(neighbour.words, Words{2});
}

TEST(WindowLife, MayEndInsideItsOwnMessage)
{
    Recorder recorder;
    auto window = recorder.Create();
    recorder.onMessage = [&](uintptr_t) { window.reset(); };
    EXPECT_TRUE(window->Post(kMessage, 1, 0));
    EXPECT_TRUE(window->Post(kMessage, 2, 0));
    EXPECT_EQ(RunWaitingMessages(), 1U);
    EXPECT_TRUE(recorder.destroyed);
    EXPECT_EQ(recorder.words, Words{1});
}

TEST(WindowLife, DestroyedByAnotherThreadItEndsOnItsOwn)
{
    Recorder recorder;
    auto window = recorder.Create();
    std::thread([&] {
        EXPECT_FALSE(window->BelongsToCallingThread());
        EXPECT_TRUE(window->Post(kMessage, 1, 0));
        window.reset();
    }).join();
    EXPECT_FALSE(recorder.destroyed) << "on the wrong thread";
    EXPECT_EQ(RunWaitingMessages(), 2U);
    EXPECT_TRUE(recorder.destroyed);
    EXPECT_EQ(recorder.destroyedOn, recorder.owner);
    EXPECT_EQ(recorder.words, Words{1});
}

// A thread that makes a window, leaves two messages behind and ends as it is told to.
struct OwnerThread {
    explicit OwnerThread(Recorder& recorder)
        : thread(Thread::Start([this, &recorder] {
              window = recorder.Create();
              EXPECT_TRUE(window->Post(kMessage, 1, 0));
              EXPECT_TRUE(window->Post(kMessage + 1, 2, 0));
              ready->Set();
              EXPECT_TRUE(WaitForOne(*mayEnd, kLimit).Obtained());
          }))
    {
        EXPECT_TRUE(WaitForOne(*ready, kLimit).Obtained());
    }
    void End()
    {
        mayEnd->Set();
        EXPECT_TRUE(WaitForOne(*thread, kLimit).Obtained());
    }

    std::unique_ptr<Window> window;
    std::unique_ptr<Event> ready = Event::Create("", ResetMode::kManual, false);
    std::unique_ptr<Event> mayEnd = Event::Create("", ResetMode::kManual, false);
    std::unique_ptr<Thread> thread;
};

TEST(WindowLife, OutlivesItsThreadWithMessagesThatCanBeWithdrawn)
{
    Recorder recorder;
    OwnerThread owner(recorder);
    Words words;
    const auto take = [&](uintptr_t word) { words.push_back(word); };
    owner.window->Withdraw(0, 0xFFFFFFFF, take);
    EXPECT_TRUE(words.empty()) << "taken from a thread that lives";

    owner.End();
    EXPECT_FALSE(owner.window->Post(kMessage, 3, 0));
    owner.window->Withdraw(0, 0xFFFFFFFF, take);
    EXPECT_EQ(words, (Words{1, 2}));
    EXPECT_FALSE(recorder.destroyed);
    owner.window.reset();
    EXPECT_TRUE(recorder.destroyed) << "nobody else is left to do it";
    EXPECT_TRUE(recorder.words.empty());
}

TEST(WindowLife, DestructionThatWasPostedHappensAtTheLatestWithTheThread)
{
    Recorder recorder;
    OwnerThread owner(recorder);
    owner.window.reset();
    owner.End();
    EXPECT_TRUE(recorder.destroyed);
    EXPECT_EQ(recorder.destroyedOn, recorder.owner);
}

// So it does on a thread that was not started here.
TEST(WindowLife, EndsWithAThreadOfTheApplications)
{
    Recorder given;
    Recorder kept;
    const auto ready = Event::Create("", ResetMode::kManual, false);
    const auto mayEnd = Event::Create("", ResetMode::kManual, false);
    std::unique_ptr<Window> givenUp;
    std::unique_ptr<Window> survivor;
    std::thread owner([&] {
        givenUp = given.Create();
        survivor = kept.Create();
        EXPECT_TRUE(survivor->Post(kMessage, 1, 0));
        ready->Set();
        EXPECT_TRUE(WaitForOne(*mayEnd, kLimit).Obtained());
    });
    ASSERT_TRUE(WaitForOne(*ready, kLimit).Obtained());
    givenUp.reset();
    EXPECT_FALSE(given.destroyed);
    mayEnd->Set();
    owner.join();
    EXPECT_TRUE(given.destroyed);
    EXPECT_EQ(given.destroyedOn, given.owner);

    EXPECT_FALSE(kept.destroyed);
    EXPECT_FALSE(survivor->Post(kMessage, 2, 0));
    Words words;
    survivor->Withdraw(0, 0xFFFFFFFF, [&](uintptr_t word) { words.push_back(word); });
    EXPECT_EQ(words, Words{1});
    survivor.reset();
    EXPECT_TRUE(kept.destroyed);
}

// Destruction and the end of the thread race; OnDestroy must come exactly once.
TEST(WindowLife, DestructionRacesWithTheEndOfTheThread)
{
    for (int i = 0; i < 300; ++i) {
        Recorder recorder;
        OwnerThread owner(recorder);
        owner.mayEnd->Set();
        owner.window.reset();
        ASSERT_TRUE(WaitForOne(*owner.thread, kLimit).Obtained());
        ASSERT_TRUE(recorder.destroyed);
    }
}

TEST(WindowWithdraw, TakesARangeInOrderButNotWhatIsBeingRun)
{
    Recorder recorder;
    Recorder neighbour;
    const auto window = recorder.Create();
    const auto other = neighbour.Create();
    Words words;
    recorder.onMessage = [&](uintptr_t word) {
        if (word == 1) window->Withdraw(kMessage, kMessage + 1, [&](uintptr_t taken) { words.push_back(taken); });
    };
    EXPECT_TRUE(window->Post(kMessage, 1, 0));
    EXPECT_TRUE(window->Post(kMessage + 2, 2, 0));
    EXPECT_TRUE(window->Post(kMessage + 1, 3, 0));
    EXPECT_TRUE(other->Post(kMessage, 4, 0));
    EXPECT_TRUE(window->Post(kMessage, 5, 0));
    RunWaitingMessages();
    EXPECT_EQ(words, (Words{3, 5}));
    EXPECT_EQ(recorder.words, (Words{1, 2}));
    EXPECT_EQ(neighbour.words, Words{4});
}

}  // namespace
}  // namespace marbex::platform
