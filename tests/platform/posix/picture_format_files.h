#pragma once

// Picture files for tests, written by the libraries of the formats.

#include <cstdint>
#include <string>
#include <vector>

#include "platform/picture_files.h"

namespace marbex::test {

std::string MakePng(const Pixels& pixels, bool interlaced = false);
enum class JpegKind { kGray, kColor, kInks };
std::string MakeJpeg(const Pixels& pixels, JpegKind kind, bool progressive);
// The values are indices into palette; transparent below 0 for none. The frame stands at left, top of a screen.
struct GifOptions {
    std::vector<uint32_t> palette;
    int transparent = -1;
    bool interlaced = false;
    uint32_t left = 0;
    uint32_t top = 0;
    uint32_t screenWidth = 0;  // 0: the size of the frame
    uint32_t screenHeight = 0;
    int frames = 1;
};
std::string MakeGif(const Pixels& indices, const GifOptions& options);

}  // namespace marbex::test
