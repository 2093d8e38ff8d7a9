#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/kernel.h"
#include "platform/lock.h"

namespace marbex::device {

// The calls that use a device's spooler, by thread: closing must not take the spooler away under one of them, and a
// close that cannot wait for them is left to the last. Any thread.
class CallsUnderWay {
public:
    CallsUnderWay();
    CallsUnderWay(const CallsUnderWay&) = delete;
    CallsUnderWay& operator=(const CallsUnderWay&) = delete;

    void Enter();
    // True when this was the last call and a close has been left to it: the caller finishes that close.
    [[nodiscard]] bool Leave();

    // How many calls are on the calling thread's stack.
    int32_t Depth() const;

    // Whether there is no call under way. Else the close is left to the last one to end.
    [[nodiscard]] bool MayCloseNow();

    // Signalled while there is no call.
    platform::WaitObject& AllEnded() const { return *allEnded_; }

private:
    struct Stack {
        platform::ThreadId thread = 0;
        int32_t depth;
    };

    mutable platform::Lock lock_;
    std::vector<Stack> stacks_ MARBEX_GUARDED_BY(lock_);  // of the threads that are inside
    bool closeIsLeft_ MARBEX_GUARDED_BY(lock_) = false;
    const std::unique_ptr<platform::Event> allEnded_;  // manual
};

}  // namespace marbex::device
