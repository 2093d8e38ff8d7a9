// PNG, JPEG and GIF in all their forms, as the libraries of the formats write them.

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "platform/picture.h"
#include "platform/picture_checks.h"
#include "platform/posix/picture_format_files.h"

namespace marbex::platform {

using test::JpegKind;

const PictureSamples& Samples()
{
    static const PictureSamples samples = [] {
        const Pixels pixels = ColorfulPixels(24, 16);
        Pixels opaque = pixels;
        for (uint32_t& value : opaque.values)
            value |= 0xFF000000;
        const Pixels indices = test::MakePixels(24, 16, [](uint32_t x, uint32_t y) { return (x + y) % 16; });
        return PictureSamples{test::MakePng(opaque),
                              test::MakePng(opaque, true),
                              test::MakeJpeg(CornerPixels(), JpegKind::kColor, false),
                              test::MakeJpeg(CornerPixels(), JpegKind::kInks, true),
                              test::MakeGif(indices, {.palette = MakePalette(16), .transparent = 3}),
                              test::MakePng({2, 1, {0x80FF0000, 0x000000FF}})};
    }();
    return samples;
}

namespace {

TEST(PicturePng, TransparencyLetsWhiteThrough)
{
    for (const bool interlaced : {false, true}) {
        Pixels pixels = ColorfulPixels(21, 17);
        Pixels expected = pixels;
        for (uint32_t i = 0; i < pixels.values.size(); ++i) {
            const uint32_t alpha = i % 3 == 0 ? 0 : i % 3 == 1 ? 128 : 255;
            pixels.values[i] |= alpha << 24;
            uint32_t mixed = 0;
            for (const uint32_t shift : {0U, 8U, 16U}) {
                const double value = expected.values[i] >> shift & 0xFF;
                mixed |= static_cast<uint32_t>(std::lround((value * alpha + 255.0 * (255 - alpha)) / 255)) << shift;
            }
            expected.values[i] = mixed;
        }
        ExpectPixels(test::MakePng(pixels, interlaced), expected);
    }
}

TEST(PictureJpeg, EveryKindBaselineAndProgressive)
{
    const Pixels pixels = CornerPixels();
    for (const JpegKind kind : {JpegKind::kGray, JpegKind::kColor, JpegKind::kInks}) {
        for (const bool progressive : {false, true}) {
            const Pixels decoded = Decode(test::MakeJpeg(pixels, kind, progressive));
            ASSERT_EQ(decoded.values.size(), pixels.values.size());
            for (const auto& [x, y] : kInnerPoints) {
                const uint32_t blue = pixels.At(x, y) & 0xFF;
                const uint32_t expected = kind == JpegKind::kGray ? blue * 0x010101 : pixels.At(x, y);
                for (const uint32_t shift : {0U, 8U, 16U}) {
                    EXPECT_NEAR(static_cast<int>(decoded.At(x, y) >> shift & 0xFF),
                                static_cast<int>(expected >> shift & 0xFF), 4)
                        << "kind " << static_cast<int>(kind) << " progressive " << progressive;
                }
            }
        }
    }
}

TEST(PictureJpeg, OnlyTheEndMarkMayBeMissing)
{
    const std::string file = test::MakeJpeg(ColorfulPixels(64, 64), JpegKind::kColor, false);
    EXPECT_FALSE(IsRefused(file.substr(0, file.size() - 2)));
    EXPECT_TRUE(IsRefused(file.substr(0, file.size() - 10)));
    EXPECT_TRUE(IsRefused(file.substr(0, file.size() / 2)));
}

TEST(PictureGif, FirstFrameOnItsScreen)
{
    const auto palette = MakePalette(256);
    const Pixels indices = test::MakePixels(19, 23, [](uint32_t x, uint32_t y) { return (x * 11 + y * 5) % 256; });
    ExpectPixels(test::MakeGif(indices, {.palette = palette}), WithPalette(indices, palette));
    ExpectPixels(test::MakeGif(indices, {.palette = palette, .interlaced = true, .frames = 2}),
                 WithPalette(indices, palette));

    Pixels placed = test::MakePixels(30, 30, [&](uint32_t x, uint32_t y) {
        if (x < 4 || y < 2 || x >= 23 || y >= 25) return 0xFFFFFFU;
        const uint32_t index = indices.At(x - 4, y - 2);
        return index == 55 ? 0xFFFFFFU : palette[index];
    });
    ExpectPixels(
        test::MakeGif(
            indices,
            {.palette = palette, .transparent = 55, .left = 4, .top = 2, .screenWidth = 30, .screenHeight = 30}),
        placed);
    // A frame larger than the screen is cut.
    Pixels cut = test::MakePixels(5, 5, [&](uint32_t x, uint32_t y) { return palette[indices.At(x, y)]; });
    ExpectPixels(test::MakeGif(indices, {.palette = palette, .screenWidth = 5, .screenHeight = 5}), cut);
}

// A progressive file whose scans say in a few bytes that nothing changes in sixteen million pixels, over and over.
TEST(PictureHostile, EndlessScansAreRefused)
{
    Pixels gray{4095, 4095, {}};
    gray.values.assign(std::size_t{gray.width} * gray.height, 0x808080);
    std::string jpeg = test::MakeJpeg(gray, JpegKind::kGray, true);
    ASSERT_FALSE(IsRefused(jpeg));
    const std::size_t lastScan = jpeg.rfind("\xFF\xDA");
    const std::string scan = jpeg.substr(lastScan, jpeg.size() - 2 - lastScan);
    jpeg.resize(jpeg.size() - 2);
    for (int i = 0; i < 200; ++i)
        jpeg += scan;
    EXPECT_TRUE(IsRefused(jpeg));
}

}  // namespace
}  // namespace marbex::platform
