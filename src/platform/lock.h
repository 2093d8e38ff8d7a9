#pragma once

// A plain lock for short critical sections inside one component, with clang's thread-safety annotations.
// It is not a kernel object: it has no name, no time limit and is not recursive.

#include <mutex>

#include "platform/thread_annotations.h"

namespace marbex::platform {

class MARBEX_CAPABILITY("lock") Lock {
public:
    void Acquire() MARBEX_ACQUIRE() { mutex_.lock(); }
    void Release() MARBEX_RELEASE() { mutex_.unlock(); }

private:
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

}  // namespace marbex::platform
