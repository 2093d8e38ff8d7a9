#pragma once

#include <malloc.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <thread>

namespace marbex::soak {

// What a process holds.
struct Vitals {
    std::size_t heap = 0;  // bytes in use
    std::size_t descriptors = 0;
    std::size_t threads = 0;
};

inline Vitals ReadVitals()
{
    const auto entries = [](const char* folder) {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator()));
    };
    Vitals vitals;
    vitals.heap = ::mallinfo2().uordblks;
    vitals.descriptors = entries("/proc/self/fd");
    // A thread stays in the list for a moment after it has been joined.
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    while ((vitals.threads = entries("/proc/self/task")) > 1 && std::chrono::steady_clock::now() < end)
        std::this_thread::yield();
    return vitals;
}

}  // namespace marbex::soak
