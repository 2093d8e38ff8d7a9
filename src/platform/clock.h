#pragma once

// Time. Ticks and seconds come from a monotonic clock; only log stamps use local time.

#include <chrono>
#include <cstdint>

namespace marbex::platform {

struct LocalTime {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0, millisecond = 0;
};

class Clock {
public:
    virtual ~Clock() = default;
    virtual uint64_t Milliseconds() const = 0;  // since some fixed moment; never set back
    virtual void Sleep(uint32_t milliseconds) = 0;

    // The same clock in whole seconds.
    int64_t Seconds() const { return static_cast<int64_t>(Milliseconds() / 1000); }
};

Clock& SystemClock();

// The same moment, as finely as the system counts it: for time limits.
std::chrono::steady_clock::time_point MonotonicNow();

// Local time of day, cheap enough for every log line.
LocalTime Now();

}  // namespace marbex::platform
