#pragma once

// A plain lock for short critical sections inside one component, with clang's thread-safety annotations. No kernel
// object: no name, no ownership by a thread, not recursive.

#include "native_lock.h"  // of the operating system
#include "platform/thread_annotations.h"

namespace marbex::platform {

class MARBEX_CAPABILITY("lock") Lock {
public:
    constexpr Lock() = default;
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    void Acquire() MARBEX_ACQUIRE() { native_.lock(); }
    void Release() MARBEX_RELEASE() { native_.unlock(); }

    // For what waits with a lock in its own way. Held while it is used.
    NativeLock& Native() { return native_; }

private:
    NativeLock native_;
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
