#pragma once

namespace marbex::simulated {
struct Task;
}

namespace marbex::platform {

struct LockWaiter;

// A lock of the simulated computer: whoever finds it taken waits until the scheduler has let its holder go on.
class NativeLock {
public:
    constexpr NativeLock() = default;
    NativeLock(const NativeLock&) = delete;
    NativeLock& operator=(const NativeLock&) = delete;

    void lock();
    void unlock();

    const simulated::Task* Holder() const { return holder_; }

private:
    simulated::Task* holder_ = nullptr;
    LockWaiter* waiters_ = nullptr;
};

}  // namespace marbex::platform
