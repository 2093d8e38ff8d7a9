#include "platform/posix/condition.h"

#include <gtest/gtest.h>

#include <chrono>

#include "platform/kernel.h"

namespace marbex::platform {
namespace {

TEST(Condition, WakesAndKeepsItsTime)
{
    Lock lock;
    Condition condition;
    bool ready = false;
    const auto setter = Thread::Start([&] {
        const LockHold hold(lock);
        ready = true;
        condition.NotifyOne();
    });
    const LockHold hold(lock);
    while (!ready)
        condition.Wait(lock);
    const auto moment = std::chrono::steady_clock::now() + std::chrono::milliseconds(10);
    while (condition.WaitUntil(lock, moment)) {
    }
    EXPECT_GE(std::chrono::steady_clock::now(), moment);
}

}  // namespace
}  // namespace marbex::platform
