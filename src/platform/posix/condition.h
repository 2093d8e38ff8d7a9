#pragma once

// Wakes threads that gave up a lock to wait. A wait may end without a notification: test what was waited for, in a
// loop.

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "platform/lock.h"

namespace marbex::platform {

class Condition {
public:
    void NotifyOne() { condition_.notify_one(); }
    void NotifyAll() { condition_.notify_all(); }

    void Wait(Lock& lock) MARBEX_REQUIRES(lock)
    {
        std::unique_lock<std::mutex> held(lock.Native(), std::adopt_lock);
        condition_.wait(held);
        held.release();
    }

    // False when the moment has come.
    bool WaitUntil(Lock& lock, std::chrono::steady_clock::time_point moment) MARBEX_REQUIRES(lock)
    {
        std::unique_lock<std::mutex> held(lock.Native(), std::adopt_lock);
        const std::cv_status status = condition_.wait_until(held, moment);
        held.release();
        return status == std::cv_status::no_timeout;
    }

private:
    std::condition_variable condition_;
};

}  // namespace marbex::platform
