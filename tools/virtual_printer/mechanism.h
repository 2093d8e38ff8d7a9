#pragma once

#include <chrono>
#include <cstdint>

namespace marbex::virtual_printer {

// How long it takes to move the paper. What time it is its owner says.
class Mechanism {
public:
    using Clock = std::chrono::steady_clock;

    void SetSpeed(uint32_t millimetresPerSecond)  // 0: the paper moves in no time
    {
        speed_ = millimetresPerSecond;
        if (speed_ == 0) free_ = {};
    }
    uint32_t Speed() const { return speed_; }
    void Stop() { free_ = {}; }
    bool Busy(Clock::time_point now) const { return now < free_; }
    Clock::time_point Free() const { return free_; }  // when the movements so far are done
    // The next movement does not begin before now.
    void Wait(Clock::time_point now) { free_ = speed_ != 0 && free_ < now ? now : free_; }
    // Rows of dots, eight a millimetre.
    void Move(uint64_t rows)
    {
        if (speed_ != 0) free_ += std::chrono::microseconds(rows * 125'000 / speed_);
    }

private:
    uint32_t speed_ = 0;
    Clock::time_point free_{};
};

}  // namespace marbex::virtual_printer
