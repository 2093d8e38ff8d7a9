#pragma once

#include <malloc.h>

#include <cstddef>
#include <filesystem>
#include <iterator>

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
    vitals.threads = entries("/proc/self/task");
    return vitals;
}

}  // namespace marbex::soak
