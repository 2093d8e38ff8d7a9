#pragma once

// Waits for a link that go on for a minute, unless a signal stops them.

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/stop_signal.h"

namespace marbex::tests {

inline constexpr uint32_t kOneMinute = 60000;

using NamedWait = std::pair<std::string, std::function<void()>>;

// Every wait goes on for about two seconds after the signal, those that begin later too.
inline void ExpectToEndTwoSecondsAfter(platform::StopSignal& stop, const std::vector<NamedWait>& waits)
{
    using Clock = std::chrono::steady_clock;
    std::vector<Clock::time_point> ends(waits.size());
    const auto start = Clock::now();
    {
        std::vector<std::jthread> threads;
        for (std::size_t i = 0; i < waits.size(); ++i) {
            threads.emplace_back([&, i] {
                waits[i].second();
                ends[i] = Clock::now();
            });
        }
        stop.Set(true);
    }
    for (std::size_t i = 0; i < waits.size(); ++i) {
        EXPECT_GE(ends[i] - start, std::chrono::milliseconds(1900)) << waits[i].first;
        EXPECT_LT(ends[i] - start, std::chrono::milliseconds(6000)) << waits[i].first;
    }
}

}  // namespace marbex::tests
