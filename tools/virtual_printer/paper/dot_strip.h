#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "virtual_printer/paper/paper.h"

namespace marbex::virtual_printer {

// A strip of dots as wide as the paper, drawn upon before it goes out. What lies outside is not drawn.
class DotStrip {
public:
    DotStrip(int width, int height)
        : width_(width),
          height_(height),
          stride_(static_cast<std::size_t>(width + 7) / 8),
          bits_(stride_ * static_cast<std::size_t>(height))
    {
    }
    int Height() const { return height_; }
    void Fill(int x, int y, int width, int height)
    {
        const int left = std::max(x, 0);
        const int right = std::min(x + width, width_);
        for (int row = std::max(y, 0); left < right && row < std::min(y + height, height_); ++row) {
            FillRow(bits_.data() + static_cast<std::size_t>(row) * stride_, left, right);
        }
    }
    void PutOn(Paper& paper) const
    {
        for (std::size_t row = 0; row < static_cast<std::size_t>(height_); ++row) {
            paper.Append(std::span(bits_).subspan(row * stride_, stride_));
        }
    }

private:
    static void FillRow(uint8_t* row, int left, int right)
    {
        const int first = left / 8;
        const int last = (right - 1) / 8;
        const unsigned fromLeft = 0xFFU >> (left % 8);
        const unsigned upToRight = 0xFF00U >> ((right - 1) % 8 + 1);
        if (first == last) {
            row[first] = static_cast<uint8_t>(row[first] | (fromLeft & upToRight));
            return;
        }
        row[first] = static_cast<uint8_t>(row[first] | fromLeft);
        std::fill(row + first + 1, row + last, uint8_t{0xFF});
        row[last] = static_cast<uint8_t>(row[last] | upToRight);
    }

    int width_;
    int height_;
    std::size_t stride_;
    std::vector<uint8_t> bits_;
};

}  // namespace marbex::virtual_printer
