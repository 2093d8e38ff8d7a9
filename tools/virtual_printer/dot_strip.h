#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "virtual_printer/paper.h"

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
    void Set(int x, int y)
    {
        if (x >= 0 && x < width_ && y >= 0 && y < height_) {
            uint8_t& byte = bits_[static_cast<std::size_t>(y) * stride_ + static_cast<std::size_t>(x) / 8];
            byte = static_cast<uint8_t>(byte | (0x80U >> (x % 8)));
        }
    }
    void Fill(int x, int y, int width, int height)
    {
        for (int row = y; row < y + height; ++row) {
            for (int column = x; column < x + width; ++column) {
                Set(column, row);
            }
        }
    }
    void PutOn(Paper& paper) const
    {
        for (std::size_t row = 0; row < static_cast<std::size_t>(height_); ++row) {
            paper.Append(std::span(bits_).subspan(row * stride_, stride_));
        }
    }

private:
    int width_;
    int height_;
    std::size_t stride_;
    std::vector<uint8_t> bits_;
};

}  // namespace marbex::virtual_printer
