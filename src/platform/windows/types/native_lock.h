#pragma once

namespace marbex::platform {

// A slim reader/writer lock, taken for writing only: a pointer that starts as null and is never torn down, so that a
// lock outlives whatever order a process ends in.
class NativeLock {
public:
    constexpr NativeLock() = default;
    NativeLock(const NativeLock&) = delete;
    NativeLock& operator=(const NativeLock&) = delete;

    void lock();
    void unlock();

private:
    void* state_ = nullptr;
};

}  // namespace marbex::platform
