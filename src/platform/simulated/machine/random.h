#pragma once

// The dice of a run. The same seed throws the same numbers on every machine and with every library (SplitMix64,
// Steele, Lea and Flood 2014).

#include <cstddef>
#include <cstdint>

namespace marbex::simulated {

class Random {
public:
    explicit Random(uint64_t seed) : state_(seed) {}

    uint64_t Next()
    {
        state_ += 0x9E3779B97F4A7C15;
        uint64_t mixed = state_;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EB;
        return mixed ^ (mixed >> 31);
    }

    // 0 to count - 1; count is at least 1.
    std::size_t Below(std::size_t count) { return static_cast<std::size_t>(Next() % count); }
    // from to to, both included.
    int Between(int from, int to) { return from + static_cast<int>(Below(static_cast<std::size_t>(to - from) + 1)); }
    // Once in so many times; never for 0.
    bool OneIn(uint32_t count) { return count != 0 && Below(count) == 0; }

    template <typename Item, std::size_t kCount>
    const Item& OneOf(const Item (&items)[kCount])
    {
        return items[Below(kCount)];
    }

private:
    uint64_t state_;
};

}  // namespace marbex::simulated
