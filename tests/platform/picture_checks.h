#pragma once

// What tests of picture files have in common.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/picture.h"
#include "platform/picture_files.h"

namespace marbex::platform {

using test::Pixels;

inline Pixels Draw(const Picture& picture, uint32_t width, uint32_t height)
{
    Pixels drawn{width, height, std::vector<uint32_t>(std::size_t{width} * height, 0xDEADBEEF)};
    EXPECT_TRUE(picture.Draw(width, height, 0, height, drawn.values));
    return drawn;
}

// The picture of a file at its own size; no pixels when it is refused.
inline Pixels Decode(const std::string& file)
{
    PictureError error = PictureError::kNone;
    const std::unique_ptr<Picture> picture = DecodePicture(file, error);
    EXPECT_EQ(picture == nullptr, error != PictureError::kNone);
    if (!picture) return {};
    return Draw(*picture, picture->Width(), picture->Height());
}

inline bool IsRefused(const std::string& file)
{
    return Decode(file).values.empty();
}

inline void ExpectPixels(const std::string& file, const Pixels& expected)
{
    const Pixels pixels = Decode(file);
    ASSERT_EQ(pixels.width, expected.width);
    ASSERT_EQ(pixels.height, expected.height);
    EXPECT_EQ(pixels.values, expected.values);
}

inline Pixels ColorfulPixels(uint32_t width = 13, uint32_t height = 7)
{
    return test::MakePixels(width, height, [](uint32_t x, uint32_t y) {
        return (x * 19 % 256 << 16) | (y * 31 % 256 << 8) | (x * y % 256);
    });
}

inline Pixels WithPalette(const Pixels& indices, const std::vector<uint32_t>& palette)
{
    Pixels colors = indices;
    for (uint32_t& value : colors.values)
        value = palette[value];
    return colors;
}

inline std::vector<uint32_t> MakePalette(std::size_t count)
{
    std::vector<uint32_t> palette;
    for (uint32_t i = 0; i < count; ++i)
        palette.push_back((i * 37 % 256) << 16 | (i * 101 % 256) << 8 | (255 - i));
    return palette;
}

// Four corners of one colour each, as a format that blurs edges can keep them.
inline Pixels CornerPixels()
{
    return test::MakePixels(
        40, 24, [](uint32_t x, uint32_t y) { return (x < 20 ? 0xC80000U : 0x0000C8U) + (y < 12 ? 0x003C00U : 0U); });
}

inline constexpr std::pair<uint32_t, uint32_t> kInnerPoints[] = {{4, 4}, {36, 4}, {4, 20}, {36, 20}};

// One file of each kind.
struct PictureSamples {
    std::string png, interlacedPng;     // ColorfulPixels(24, 16)
    std::string jpeg, progressiveJpeg;  // CornerPixels(); the second in the four inks of print
    std::string gif;                    // 24 x 16 of a palette of 16, index (x + y) % 16, of which 3 is transparent
    std::string transparentPng;         // 2 x 1: red at alpha 0x80, blue at alpha 0
};
const PictureSamples& Samples();

}  // namespace marbex::platform
