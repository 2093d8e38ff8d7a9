#pragma once

// A plain lock for short critical sections inside one component, with clang's thread-safety annotations, and the
// condition that goes with it. Neither is a kernel object: no names, no ownership by a thread, not recursive.

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "platform/thread_annotations.h"

namespace marbex::platform {

class MARBEX_CAPABILITY("lock") Lock {
public:
    constexpr Lock() = default;
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    void Acquire() MARBEX_ACQUIRE() { mutex_.lock(); }
    void Release() MARBEX_RELEASE() { mutex_.unlock(); }

private:
    friend class Condition;
    std::mutex mutex_;
};

class MARBEX_SCOPED_CAPABILITY LockHold {
public:
    explicit LockHold(Lock& lock) MARBEX_ACQUIRE(lock) : lock_(lock) { lock_.Acquire(); }
    ~LockHold() MARBEX_RELEASE() { lock_.Release(); }
    LockHold(const LockHold&) = delete;
    LockHold& operator=(const LockHold&) = delete;

private:
    Lock& lock_;
};

// Wakes threads that gave up a lock to wait. A wait may end without a notification: test what was waited for, in a
// loop.
class Condition {
public:
    void NotifyOne() { condition_.notify_one(); }
    void NotifyAll() { condition_.notify_all(); }

    void Wait(Lock& lock) MARBEX_REQUIRES(lock)
    {
        std::unique_lock<std::mutex> held(lock.mutex_, std::adopt_lock);
        condition_.wait(held);
        held.release();
    }

    // False when the moment has come.
    bool WaitUntil(Lock& lock, std::chrono::steady_clock::time_point moment) MARBEX_REQUIRES(lock)
    {
        std::unique_lock<std::mutex> held(lock.mutex_, std::adopt_lock);
        const std::cv_status status = condition_.wait_until(held, moment);
        held.release();
        return status == std::cv_status::no_timeout;
    }

private:
    std::condition_variable condition_;
};

}  // namespace marbex::platform
