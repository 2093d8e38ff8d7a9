#include "platform/clock.h"

#include <windows.h>

#include <algorithm>

namespace marbex::platform {

namespace {

class WindowsClock : public Clock {
public:
    WindowsClock()
    {
        LARGE_INTEGER frequency;
        QueryPerformanceFrequency(&frequency);
        frequency_ = static_cast<uint64_t>(frequency.QuadPart);
    }

    uint64_t Milliseconds() const override
    {
        LARGE_INTEGER now;
        QueryPerformanceCounter(&now);
        const auto count = static_cast<uint64_t>(now.QuadPart);
        return count / frequency_ * 1000 + count % frequency_ * 1000 / frequency_;
    }

    void Sleep(uint32_t milliseconds) override
    {
        // The system counts in ticks of up to 16 ms and may wake too early. INFINITE is no number of milliseconds.
        const uint64_t until = Milliseconds() + milliseconds;
        for (uint64_t now = Milliseconds(); now < until; now = Milliseconds())
            ::Sleep(static_cast<DWORD>(std::min<uint64_t>(until - now, INFINITE - 1)));
    }

private:
    uint64_t frequency_ = 0;
};

}  // namespace

Clock& SystemClock()
{
    static WindowsClock clock;
    return clock;
}

std::chrono::steady_clock::time_point MonotonicNow()
{
    return std::chrono::steady_clock::now();
}

LocalTime Now()
{
    SYSTEMTIME now;
    GetLocalTime(&now);
    return {now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond, now.wMilliseconds};
}

}  // namespace marbex::platform
