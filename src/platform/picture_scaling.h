#pragma once

// Stretching of 32-bit pixels, each axis by its own rule: an axis that shrinks takes the average of the source area per
// colour, rounded to the nearest; an axis that grows takes source position * source size / new size; an axis that keeps
// its size is copied.

#include <cstdint>
#include <span>

namespace marbex::platform {

// 0x00RRGGBB, row by row. A side has at most 2^24 pixels, the whole at most 2^26.
struct PixelSource {
    const uint32_t* pixels;
    uint32_t width;
    uint32_t height;
};

// Rows firstRow to firstRow + rows - 1 of the source stretched to width x height, into target (rows * width pixels).
void StretchRows(const PixelSource& source, uint32_t width, uint32_t height, uint32_t firstRow, uint32_t rows,
                 std::span<uint32_t> target);

}  // namespace marbex::platform
