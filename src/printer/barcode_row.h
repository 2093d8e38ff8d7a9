#pragma once

#include <algorithm>
#include <array>
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

    // Draws the lowest `modules` bits of pattern, the highest of them first, each as one module.
    void Append(uint32_t pattern, int modules)
    {
        for (int module = modules - 1; module >= 0; --module) {
            const bool black = ((pattern >> module) & 1U) != 0;
            AppendElement(black, 1);
        }
    }

    // Draws one bar or space of the given number of modules.
    void AppendElement(bool black, uint32_t modules)
    {
        const uint32_t end = static_cast<uint32_t>(std::min<uint64_t>(dots_ + uint64_t{modules} * moduleWidth_, kDots));
        if (black) {
            for (uint32_t dot = dots_; dot < end; ++dot) {
                bytes_[dot / 8] = static_cast<uint8_t>(bytes_[dot / 8] | (0x80U >> (dot % 8)));
            }
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
