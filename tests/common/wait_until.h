#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace marbex::test {

// Waits until a condition holds, looked at every millisecond. The test has failed when that takes unreasonably long.
template <typename Condition>
void WaitUntil(const Condition& holds, std::chrono::seconds patience = std::chrono::seconds(30))
{
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!holds()) {
        if (std::chrono::steady_clock::now() > end) {
            ADD_FAILURE() << "what is waited for does not come";
            return;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

}  // namespace marbex::test
