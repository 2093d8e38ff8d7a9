#include "platform/clock.h"

#include <time.h>

#include <cerrno>

namespace marbex::platform {

namespace {

class PosixClock : public Clock {
public:
    uint64_t Milliseconds() const override
    {
        timespec now{};
        clock_gettime(CLOCK_MONOTONIC, &now);
        return static_cast<uint64_t>(now.tv_sec) * 1000 + static_cast<uint64_t>(now.tv_nsec) / 1000000;
    }

    void Sleep(uint32_t milliseconds) override
    {
        timespec until{};
        clock_gettime(CLOCK_MONOTONIC, &until);
        until.tv_sec += milliseconds / 1000;
        until.tv_nsec += static_cast<long>(milliseconds % 1000) * 1000000;
        if (until.tv_nsec >= 1000000000) {
            until.tv_nsec -= 1000000000;
            ++until.tv_sec;
        }
        while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr) == EINTR) {
        }
    }
};

}  // namespace

Clock& SystemClock()
{
    static PosixClock clock;
    return clock;
}

std::chrono::steady_clock::time_point MonotonicNow()
{
    return std::chrono::steady_clock::now();
}

LocalTime Now()
{
    // Breaking a time down into local time costs more than the rest of a log line; lines come many to the second.
    thread_local time_t brokenDown = -1;
    thread_local LocalTime cached;

    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    if (now.tv_sec != brokenDown) {
        tm local{};
        localtime_r(&now.tv_sec, &local);
        cached = {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec, 0};
        brokenDown = now.tv_sec;
    }
    LocalTime result = cached;
    result.millisecond = static_cast<int>(now.tv_nsec / 1000000);
    return result;
}

}  // namespace marbex::platform
