#pragma once

// Black and white from colour, by the error diffusion of Floyd and Steinberg with a fixed threshold.

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace marbex::printer {

// The gray of a colour 0x00RRGGBB, 0 to 255: 0.3 red + 0.59 green + 0.11 blue in double precision, truncated; the
// component itself when all three are the same.
uint8_t GrayOf(uint32_t color);

// Turns rows into dots, from the top, carrying the error from row to row.
class Ditherer {
public:
    explicit Ditherer(uint32_t width);

    // The next rows of width pixels each (0x00RRGGBB) into as many dots, 0x00 black and 0xFF white.
    void DitherRows(const uint32_t* pixels, uint32_t rows, uint8_t* dots);

private:
    template <std::size_t kRows>
    void Diffuse(uint8_t* dots);

    const std::size_t width_;
    std::vector<int16_t> grays_;   // of the rows that are diffused together
    std::vector<int16_t> errors_;  // for the next row, by column
};

// The whole of a picture of width x height pixels.
void DitherToRaster(std::span<const uint32_t> pixels, std::span<uint8_t> dots, uint32_t width, uint32_t height);

}  // namespace marbex::printer
