#pragma once

// A time limit that is set once and asked again by every wait of a longer task, so that wake-ups in between do not
// stretch it. The monotonic clock of the system.

#include <chrono>
#include <cstdint>

#include "platform/clock.h"
#include "platform/kernel.h"

namespace marbex::platform {

class Deadline {
public:
    using Moment = std::chrono::steady_clock::time_point;

    // In timeout milliseconds; kForever never comes.
    explicit Deadline(uint32_t timeout)
        : never_(timeout == kForever), moment_(never_ ? Moment() : MonotonicNow() + std::chrono::milliseconds(timeout))
    {
    }

    bool Never() const { return never_; }
    Moment When() const { return moment_; }  // only when it comes at all

    // Milliseconds, rounded up; 0 once it has come; kForever when it never does.
    uint32_t Remaining() const
    {
        if (never_) return kForever;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(moment_ - MonotonicNow()).count();
        return left > 0 ? static_cast<uint32_t>(left) : 0;
    }

private:
    bool never_;
    Moment moment_;
};

}  // namespace marbex::platform
