#pragma once

// What is behind DecodePicture. A decoder takes a whole file and gives its pixels, 0x00RRGGBB over white, or none for a
// file that it cannot read in full. Without memory it throws std::bad_alloc.

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "platform/picture.h"

namespace marbex::platform {

struct PixelBuffer {
    std::unique_ptr<uint32_t[]> pixels;
    uint32_t width = 0;
    uint32_t height = 0;
};

// Uninitialised pixels, so that a file that lies about its size costs address space only; none outside the limits of
// picture.h. Throws std::bad_alloc like new.
std::optional<PixelBuffer> AllocatePixels(uint64_t width, uint64_t height);

// BMP, which our own decoder reads on every system.
std::optional<PixelBuffer> DecodeBmp(std::string_view file);

// A picture of decoded pixels; null for none.
std::unique_ptr<Picture> MakePicture(std::optional<PixelBuffer> buffer);

// The other kinds, by what the operating system has; null for none of them.
std::unique_ptr<Picture> DecodeByTheSystem(std::string_view file);

inline constexpr uint32_t kWhitePixel = 0xFFFFFF;

constexpr uint32_t PixelOf(uint32_t red, uint32_t green, uint32_t blue)
{
    return red << 16 | green << 8 | blue;
}

// A colour of the given opacity (0 to 255) over white, rounded.
constexpr uint32_t OverWhite(uint32_t red, uint32_t green, uint32_t blue, uint32_t alpha)
{
    if (alpha == 255) return PixelOf(red, green, blue);
    const auto mix = [alpha](uint32_t value) { return (value * alpha + 255 * (255 - alpha) + 127) / 255; };
    return PixelOf(mix(red), mix(green), mix(blue));
}

}  // namespace marbex::platform
