#pragma once

// Tells everything that waits for a link that the link's user is closing and will not be patient any more. Any thread;
// nobody is ever held up by it.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <optional>

#include "platform/clock.h"

namespace marbex::platform {

class StopSignal {
public:
    using Clock = std::chrono::steady_clock;

    // The moment of the first of several settings counts.
    void Set(bool on)
    {
        if (!on) {
            since_ = kNotSet;
            return;
        }
        int64_t expected = kNotSet;
        since_.compare_exchange_strong(expected, std::max<int64_t>(MonotonicNow().time_since_epoch().count(), 1));
    }

    bool IsSet() const { return since_.load() != kNotSet; }

    std::optional<Clock::time_point> Since() const
    {
        const int64_t since = since_.load();
        if (since == kNotSet) return std::nullopt;
        return Clock::time_point(Clock::duration(since));
    }

private:
    static constexpr int64_t kNotSet = 0;

    std::atomic<int64_t> since_{kNotSet};  // ticks of the monotonic clock
};

// For a link that nobody stops.
inline const StopSignal kNeverStopped;

}  // namespace marbex::platform
