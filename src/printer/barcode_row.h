#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <span>

namespace marbex::printer {

// One row of bars: 4000 dots, eight a byte, the leftmost in the most significant bit, 1 black. Filled from the left;
// what does not fit is left out, the rest stays white.
class BarRow {
public:
    static constexpr uint32_t kDots = 4000;
    static constexpr uint32_t kBytes = kDots / 8;

    // Empties the row; moduleWidth is the width of a module in dots from now on.
    void Reset(uint32_t moduleWidth)
    {
        bytes_.fill(0);
        dots_ = 0;
        moduleWidth_ = moduleWidth;
    }

    // Draws the lowest `modules` bits of pattern, (1 to 31), the highest of them first, each as one module.
    void Append(uint32_t pattern, int modules)
    {
        uint32_t rest = pattern << (32 - modules);
        while (modules > 0) {
            const bool black = (rest >> 31) != 0;
            const int element = std::min(black ? std::countl_one(rest) : std::countl_zero(rest), modules);
            AppendElement(black, static_cast<uint32_t>(element));
            rest <<= element;
            modules -= element;
        }
    }

    // Draws one bar or space of the given number of modules.
    void AppendElement(bool black, uint32_t modules)
    {
        const uint64_t wanted = uint64_t{modules} * moduleWidth_;
        const uint32_t end = dots_ + static_cast<uint32_t>(std::min<uint64_t>(wanted, kDots - dots_));
        for (uint32_t dot = dots_; black && dot < end;) {
            const uint32_t count = std::min(8 - dot % 8, end - dot);
            const uint32_t mask = (0xFF00U >> count & 0xFFU) >> dot % 8;
            bytes_[dot / 8] = static_cast<uint8_t>(bytes_[dot / 8] | mask);
            dot += count;
        }
        dots_ = end;
    }

    uint32_t Dots() const { return dots_; }  // drawn so far
    std::span<const uint8_t, kBytes> Bytes() const { return bytes_; }

private:
    std::array<uint8_t, kBytes> bytes_{};
    uint32_t dots_ = 0;
    uint32_t moduleWidth_ = 1;
};

}  // namespace marbex::printer
