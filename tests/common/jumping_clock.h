#pragma once

#include <atomic>

#include "platform/clock.h"

namespace marbex::test {

// The system's clock, plus whatever a test has jumped ahead. Sleeping jumps too, so that nothing takes long.
class JumpingClock final : public platform::Clock {
public:
    uint64_t Milliseconds() const override { return platform::SystemClock().Milliseconds() + ahead_.load(); }
    void Sleep(uint32_t milliseconds) override { ahead_ += milliseconds; }
    void Jump(uint64_t milliseconds) { ahead_ += milliseconds; }

private:
    std::atomic<uint64_t> ahead_{0};
};

}  // namespace marbex::test
