#pragma once

#include <atomic>

#include "platform/clock.h"

namespace marbex::tests {

// Time that passes when the test says so.
class TestClock final : public platform::Clock {
public:
    uint64_t Milliseconds() const override { return now_; }
    void Sleep(uint32_t milliseconds) override { now_ += milliseconds; }

private:
    std::atomic<uint64_t> now_ = 1;
};

}  // namespace marbex::tests
