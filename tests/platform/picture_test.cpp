#include "platform/picture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "platform/picture_checks.h"
#include "platform/picture_files.h"

namespace marbex::platform {
namespace {

using test::BmpOptions;

TEST(PictureBmp, PalettesOfEveryDepthBothWaysUp)
{
    for (const uint32_t bits : {1U, 4U, 8U}) {
        for (const uint32_t headerSize : {12U, 40U, 124U}) {
            for (const bool topDown : {false, true}) {
                if (headerSize == 12 && topDown) continue;
                const auto palette = MakePalette(std::size_t{1} << bits);
                const Pixels indices = test::MakePixels(11, 5, [&](uint32_t x, uint32_t y) {
                    return (x * 7 + y * 3) % static_cast<uint32_t>(palette.size());
                });
                const BmpOptions options{.headerSize = headerSize,
                                         .bits = bits,
                                         .topDown = topDown,
                                         .palette = palette,
                                         .masks = {},
                                         .pixelData = test::PackBmpRows(indices, bits, topDown)};
                ExpectPixels(test::MakeBmp(11, 5, options), WithPalette(indices, palette));
            }
        }
    }
}

TEST(PictureBmp, TrueColorsAndBitFields)
{
    const Pixels pixels = ColorfulPixels();
    for (const uint32_t bits : {24U, 32U}) {
        ExpectPixels(
            test::MakeBmp(13, 7,
                          {.bits = bits, .palette = {}, .masks = {}, .pixelData = test::PackBmpRows(pixels, bits)}),
            pixels);
    }
    // Red and blue exchanged by the masks.
    Pixels swapped = pixels;
    for (uint32_t& value : swapped.values)
        value = (value & 0xFF00) | value << 16 | value >> 16;
    ExpectPixels(test::MakeBmp(13, 7,
                               {.bits = 32,
                                .compression = 3,
                                .palette = {},
                                .masks = {0xFF, 0xFF00, 0xFF0000},
                                .pixelData = test::PackBmpRows(swapped, 32)}),
                 pixels);
    // Five and six bits are spread over the whole range.
    const Pixels packed{3, 1, {0xF800, 0x07E0, 0x8410}};
    const Pixels unpacked{3, 1, {0xFF0000, 0x00FF00, 0x848284}};
    ExpectPixels(test::MakeBmp(3, 1,
                               {.bits = 16,
                                .compression = 3,
                                .palette = {},
                                .masks = {0xF800, 0x07E0, 0x001F},
                                .pixelData = test::PackBmpRows(packed, 16)}),
                 unpacked);
    const Pixels fives{2, 1, {0x7FFF, 0x001F}};
    ExpectPixels(
        test::MakeBmp(2, 1, {.bits = 16, .palette = {}, .masks = {}, .pixelData = test::PackBmpRows(fives, 16)}),
        {2, 1, {0xFFFFFF, 0x0000FF}});
}

TEST(PictureBmp, AlphaCountsOnlyWhenItIsUsed)
{
    const std::vector<uint32_t> masks{0xFF0000, 0xFF00, 0xFF, 0xFF000000};
    const auto file = [&](const Pixels& pixels) {
        return test::MakeBmp(2, 1,
                             {.headerSize = 124,
                              .bits = 32,
                              .compression = 3,
                              .palette = {},
                              .masks = masks,
                              .pixelData = test::PackBmpRows(pixels, 32)});
    };
    ExpectPixels(file({2, 1, {0x00102030, 0x80000000}}), {2, 1, {0xFFFFFF, 0x7F7F7F}});
    ExpectPixels(file({2, 1, {0x00102030, 0x00000000}}), {2, 1, {0x102030, 0x000000}});
}

TEST(PictureBmp, RunLengths)
{
    const std::vector<uint32_t> palette = MakePalette(16);
    const auto colors = [&](std::vector<int> indices, uint32_t width, uint32_t height) {
        Pixels pixels{width, height, {}};
        for (const int index : indices) {
            pixels.values.push_back(index < 0 ? 0xFFFFFF : palette[static_cast<std::size_t>(index)]);
        }
        return pixels;
    };
    // Bottom row: three of 5, then 1 2 3 as they are (padded); end of line; a move of 2 right and 1 up; one of 7; end.
    const std::string rle8("\3\5\0\3\1\2\3\0\0\0\0\2\2\1\1\7\0\1", 18);
    ExpectPixels(test::MakeBmp(6, 3, {.bits = 8, .compression = 1, .palette = palette, .masks = {}, .pixelData = rle8}),
                 colors({-1, -1, 7, -1, -1, -1, -1, -1, -1, -1, -1, -1, 5, 5, 5, 1, 2, 3}, 6, 3));
    // Five of 5 and 6 in turn; then 1 2 3 as they are.
    const std::string rle4("\5\x56\0\3\x12\x30\0\1", 8);
    ExpectPixels(test::MakeBmp(8, 1, {.bits = 4, .compression = 2, .palette = palette, .masks = {}, .pixelData = rle4}),
                 colors({5, 6, 5, 6, 5, 1, 2, 3}, 8, 1));
    // A run past the row's end is cut; without the end mark a complete picture passes, an incomplete one does not.
    const BmpOptions cut{.bits = 8, .compression = 1, .palette = palette, .masks = {}, .pixelData = "\x09\x05"};
    ExpectPixels(test::MakeBmp(4, 1, cut), colors({5, 5, 5, 5}, 4, 1));
    EXPECT_TRUE(IsRefused(test::MakeBmp(4, 2, cut)));
}

TEST(PictureBmp, RefusesWhatIsNoPicture)
{
    const Pixels pixels = ColorfulPixels(4, 4);
    const BmpOptions good{.bits = 24, .palette = {}, .masks = {}, .pixelData = test::PackBmpRows(pixels, 24)};
    const std::string file = test::MakeBmp(4, 4, good);
    ASSERT_FALSE(IsRefused(file));
    const auto changed = [&file](std::size_t at, const std::string& bytes) {
        std::string other = file;
        other.replace(at, bytes.size(), bytes);
        return other;
    };
    const std::string zero(4, '\0');
    EXPECT_TRUE(IsRefused(changed(18, zero))) << "width 0";
    EXPECT_TRUE(IsRefused(changed(22, zero))) << "height 0";
    EXPECT_TRUE(IsRefused(changed(18, "\xFF\xFF\xFF\xFF"))) << "negative width";
    EXPECT_TRUE(IsRefused(changed(22, std::string("\0\0\0\x80", 4)))) << "lowest height";
    EXPECT_TRUE(IsRefused(changed(22, "\xFF\xFF\xFF\x7F"))) << "giant height";
    EXPECT_TRUE(IsRefused(changed(10, "\xFF\xFF\xFF\xFF"))) << "pixels far outside";
    EXPECT_TRUE(IsRefused(changed(10, zero))) << "pixels inside the header";
    EXPECT_TRUE(IsRefused(changed(14, "\xFF\xFF\xFF\xFF"))) << "giant header";
    EXPECT_TRUE(IsRefused(changed(28, std::string("\7\0", 2)))) << "seven bits";
    EXPECT_TRUE(IsRefused(changed(30, "\x04"))) << "unknown compression";
    BmpOptions gaps = good;
    gaps.bits = 32;
    gaps.compression = 3;
    gaps.masks = {0xF0F0, 0xFF, 0};
    gaps.pixelData.append(64, '\0');
    EXPECT_TRUE(IsRefused(test::MakeBmp(4, 4, gaps))) << "mask with a gap";
}

std::vector<std::string> OneFileOfEachKind()
{
    std::string runs;
    for (int row = 0; row < 16; ++row)
        runs += std::string("\x18\x05\0\0", 4);
    runs += std::string("\0\1", 2);
    const PictureSamples& samples = Samples();
    return {
        test::MakeBmp(24, 16, {.palette = {}, .masks = {}, .pixelData = test::PackBmpRows(ColorfulPixels(24, 16), 24)}),
        test::MakeBmp(24, 16,
                      {.bits = 8, .compression = 1, .palette = MakePalette(16), .masks = {}, .pixelData = runs}),
        samples.png,
        samples.interlacedPng,
        samples.jpeg,
        samples.progressiveJpeg,
        samples.gif};
}

TEST(PictureHostile, FilesThatAreCutOff)
{
    for (const std::string& file : OneFileOfEachKind()) {
        ASSERT_FALSE(IsRefused(file));
        EXPECT_TRUE(IsRefused(file.substr(0, file.size() / 2)));
        EXPECT_TRUE(IsRefused(file.substr(0, file.size() * 9 / 10 - 16)));
        // Wherever the cut is, nothing bad happens.
        for (std::size_t length = 0; length < file.size(); ++length)
            Decode(file.substr(0, length));
    }
}

// Small files that promise giant pictures.
TEST(PictureHostile, GiantSizesAreRefusedAtOnce)
{
    const auto began = std::chrono::steady_clock::now();
    EXPECT_TRUE(IsRefused(test::MakeBmp(
        8193, 8193,
        {.bits = 8, .compression = 1, .palette = MakePalette(2), .masks = {}, .pixelData = std::string("\0\1", 2)})));
    EXPECT_TRUE(IsRefused(test::MakeBmp(0x7FFFFFFF, 1, {.palette = {}, .masks = {}, .pixelData = "123"})));

    std::string png = Samples().png;
    png.replace(16, 8, std::string("\0\0\x40\0\0\0\x40\0", 8));  // 16384 x 16384; the checksum is wrong as well
    EXPECT_TRUE(IsRefused(png));

    std::string jpeg = Samples().progressiveJpeg;
    const std::size_t frame = jpeg.find("\xFF\xC2");
    ASSERT_NE(frame, std::string::npos);
    jpeg.replace(frame + 5, 4, "\xFF\xFF\xFF\xFF");
    EXPECT_TRUE(IsRefused(jpeg));

    std::string gif = Samples().gif;
    gif.replace(6, 4, "\xFF\xFF\xFF\xFF");
    EXPECT_TRUE(IsRefused(gif));
    EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds(2));
}

TEST(PictureKinds, TransparencyOfAPngLetsWhiteThrough)
{
    ExpectPixels(Samples().transparentPng, {2, 1, {0xFF7F7F, 0xFFFFFF}});
}

TEST(PictureKinds, WhatIsNoPictureIsRefused)
{
    for (const std::string& file : {std::string(), std::string("BM"), std::string("BMW drives past the shop"),
                                    std::string("GIF89a"), std::string("\xFF\xD8\xFF"), std::string(5000, 'x')}) {
        EXPECT_TRUE(IsRefused(file)) << file;
    }
}

// Averages as the rule tells them, in double.
Pixels Stretched(const Pixels& source, uint32_t width, uint32_t height)
{
    const auto weights = [](uint32_t target, uint32_t from, uint32_t to) {
        std::vector<double> weights(from, 0.0);
        if (to >= from) {
            weights[static_cast<std::size_t>(uint64_t{target} * from / to)] = 1;
            return weights;
        }
        const double begin = double(target) * from / to;
        const double end = double(target + 1) * from / to;
        for (uint32_t i = 0; i < from; ++i) {
            weights[i] = std::max(0.0, std::min(end, i + 1.0) - std::max(begin, double(i))) / (end - begin);
        }
        return weights;
    };
    return test::MakePixels(width, height, [&](uint32_t x, uint32_t y) {
        const auto across = weights(x, source.width, width);
        const auto down = weights(y, source.height, height);
        double sums[3]{};
        for (uint32_t row = 0; row < source.height; ++row) {
            for (uint32_t column = 0; column < source.width; ++column) {
                for (uint32_t c = 0; c < 3; ++c) {
                    sums[c] += across[column] * down[row] * (source.At(column, row) >> (8 * c) & 0xFF);
                }
            }
        }
        uint32_t pixel = 0;
        for (uint32_t c = 0; c < 3; ++c)
            pixel |= static_cast<uint32_t>(std::lround(sums[c])) << (8 * c);
        return pixel;
    });
}

TEST(PictureDraw, EachAxisByItsOwnRule)
{
    std::mt19937 random(3);
    const Pixels source = test::MakePixels(23, 19, [&](uint32_t, uint32_t) { return random() & 0xFFFFFF; });
    PictureError error = PictureError::kNone;
    const auto picture = DecodePicture(
        test::MakeBmp(23, 19, {.palette = {}, .masks = {}, .pixelData = test::PackBmpRows(source, 24)}), error);
    ASSERT_NE(picture, nullptr);
    for (const uint32_t width : {1U, 2U, 7U, 22U, 23U, 24U, 50U}) {
        for (const uint32_t height : {1U, 3U, 18U, 19U, 20U, 61U}) {
            const Pixels drawn = Draw(*picture, width, height);
            const Pixels expected = Stretched(source, width, height);
            for (std::size_t i = 0; i < drawn.values.size(); ++i) {
                for (const uint32_t shift : {0U, 8U, 16U}) {
                    // A sum that lies half-way may fall to either side in double.
                    ASSERT_NEAR(static_cast<int>(drawn.values[i] >> shift & 0xFF),
                                static_cast<int>(expected.values[i] >> shift & 0xFF), 1)
                        << width << " x " << height;
                }
            }
            if (width >= 23 && height >= 19) {
                EXPECT_EQ(drawn.values, expected.values);
            }
            // Drawn in bands it is the same.
            Pixels bands = drawn;
            for (uint32_t row = 0; row < height; row += 5) {
                const uint32_t rows = std::min(5U, height - row);
                EXPECT_TRUE(picture->Draw(
                    width, height, row, rows,
                    std::span(bands.values).subspan(std::size_t{row} * width, std::size_t{rows} * width)));
            }
            EXPECT_EQ(bands.values, drawn.values);
        }
    }
}

TEST(PictureDraw, ThinLinesSurviveShrinking)
{
    const Pixels lines = test::MakePixels(8, 2, [](uint32_t x, uint32_t) { return x % 4 == 1 ? 0U : 0xFFFFFFU; });
    PictureError error = PictureError::kNone;
    const auto picture = DecodePicture(
        test::MakeBmp(8, 2, {.palette = {}, .masks = {}, .pixelData = test::PackBmpRows(lines, 24)}), error);
    EXPECT_EQ(Draw(*picture, 2, 1).values, (std::vector<uint32_t>{0xBFBFBF, 0xBFBFBF}));
}

TEST(PictureDraw, ExtremeShapes)
{
    for (const auto& [width, height] : {std::pair{1U, 40000U}, std::pair{40000U, 1U}}) {
        const Pixels source =
            test::MakePixels(width, height, [](uint32_t x, uint32_t y) { return (x + y) % 2 * 0xFFFFFF; });
        PictureError error = PictureError::kNone;
        const auto picture = DecodePicture(
            test::MakeBmp(width, height, {.palette = {}, .masks = {}, .pixelData = test::PackBmpRows(source, 24)}),
            error);
        ASSERT_NE(picture, nullptr);
        EXPECT_EQ(Draw(*picture, width, height).values, source.values);
        EXPECT_EQ(Draw(*picture, 1, 1).values, std::vector<uint32_t>{0x808080});
        EXPECT_EQ(Draw(*picture, 608, 2).At(300, 1) & 0xFF,
                  width == 1 ? 0x80U : Draw(*picture, 608, 1).At(300, 0) & 0xFF);
    }
}

}  // namespace
}  // namespace marbex::platform
