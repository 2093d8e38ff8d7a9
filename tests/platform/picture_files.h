#pragma once

// Picture files for tests, written by hand.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace marbex::test {

struct Pixels {
    uint32_t width = 0;
    uint32_t height = 0;
    std::vector<uint32_t> values;  // 0xAARRGGBB, row by row from the top

    uint32_t At(uint32_t x, uint32_t y) const { return values[std::size_t{y} * width + x]; }
};

Pixels MakePixels(uint32_t width, uint32_t height, const std::function<uint32_t(uint32_t, uint32_t)>& at);

// A BMP from its parts. The palette holds 0xRRGGBB, the masks stand behind a 40-byte header or in a larger one.
struct BmpOptions {
    uint32_t headerSize = 40;
    uint32_t bits = 24;
    uint32_t compression = 0;
    bool topDown = false;
    std::vector<uint32_t> palette;
    std::vector<uint32_t> masks;
    std::string pixelData;  // as stored
};
std::string MakeBmp(uint32_t width, uint32_t height, const BmpOptions& options);

// Stored rows of values of so many bits each, padded to four bytes, bottom-up unless told otherwise.
std::string PackBmpRows(const Pixels& values, uint32_t bits, bool topDown = false);

}  // namespace marbex::test
