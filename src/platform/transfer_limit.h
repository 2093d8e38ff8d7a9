#pragma once

// How long one transfer, or one attempt to connect, is waited for: as long as its time-out says, and once its user is
// closing (StopSignal) only while it makes progress.

#include <algorithm>
#include <chrono>
#include <cstdint>

#include "platform/deadline.h"
#include "platform/stop_signal.h"

namespace marbex::platform {

class TransferLimit {
public:
    enum class AtStop {
        kPatient,  // two seconds without progress, counted from the signal at the earliest
        kEnd,      // nothing is waited for any more
    };

    TransferLimit(uint32_t timeoutMilliseconds, const StopSignal& stop, AtStop atStop = AtStop::kPatient)
        : timeout_(timeoutMilliseconds), stop_(stop), patience_(atStop == AtStop::kPatient ? kPatience : 0)
    {
    }

    // Bytes have moved.
    void Progress() { progress_ = MonotonicNow(); }

    // Milliseconds, rounded up; 0 once it is over.
    uint32_t Remaining() const
    {
        const uint32_t own = timeout_.Remaining();
        const auto since = stop_.Since();
        if (!since) return own;
        const auto end = std::max(*since, progress_) + std::chrono::milliseconds(patience_);
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - MonotonicNow()).count();
        return left > 0 ? std::min(own, static_cast<uint32_t>(left)) : 0;
    }

    bool IsOver() const { return Remaining() == 0; }

    // How long to wait before Remaining is asked again, for the signal may come at any time.
    uint32_t Slice() const { return std::min(Remaining(), kSlice); }

private:
    static constexpr uint32_t kPatience = 2000;  // ms
    static constexpr uint32_t kSlice = 50;       // ms

    Deadline timeout_;
    const StopSignal& stop_;
    uint32_t patience_;
    StopSignal::Clock::time_point progress_ = MonotonicNow();
};

}  // namespace marbex::platform
