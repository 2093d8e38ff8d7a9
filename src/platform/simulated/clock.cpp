// Time of the machine. It was switched on at ten in the morning of a day in spring.

#include "platform/clock.h"

#include "platform/simulated/machine/scheduler.h"

namespace marbex::platform {
namespace {

using simulated::Processor;

constexpr uint64_t kTicksBefore = 100'000;  // ms that the clock showed when the machine was switched on

struct Sleeping final : simulated::Reason {
    void Tell(std::ostream& report) const override { report << "time to pass"; }
};

class SimulatedClock final : public Clock {
public:
    uint64_t Milliseconds() const override
    {
        Processor().Point();
        return kTicksBefore + Processor().Now() / 1000;
    }

    void Sleep(uint32_t milliseconds) override
    {
        Processor().Point();
        Processor().Sleep(Processor().Now() + simulated::Milliseconds(milliseconds), Sleeping());
    }
};

}  // namespace

Clock& SystemClock()
{
    static SimulatedClock clock;
    return clock;
}

std::chrono::steady_clock::time_point MonotonicNow()
{
    return std::chrono::steady_clock::time_point(std::chrono::microseconds(kTicksBefore * 1000 + Processor().Now()));
}

LocalTime Now()
{
    Processor().Point();
    const uint64_t milliseconds = Processor().Now() / 1000;
    const uint64_t seconds = milliseconds / 1000;
    return {.year = 2024,
            .month = 5,
            .day = 2 + static_cast<int>((seconds / 3600 + 10) / 24),
            .hour = static_cast<int>((seconds / 3600 + 10) % 24),
            .minute = static_cast<int>(seconds / 60 % 60),
            .second = static_cast<int>(seconds % 60),
            .millisecond = static_cast<int>(milliseconds % 1000)};
}

}  // namespace marbex::platform
