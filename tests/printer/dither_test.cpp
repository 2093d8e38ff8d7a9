#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "printer/floyd_steinberg.h"

namespace marbex::printer {
namespace {

TEST(Gray, EveryColorAsInDouble)
{
    for (uint32_t red = 0; red < 256; ++red) {
        for (uint32_t green = 0; green < 256; ++green) {
            for (uint32_t blue = 0; blue < 256; ++blue) {
                // volatile: each product is rounded to double, whatever the compiler would rather do
                const volatile double redPart = 0.3 * red;
                const volatile double greenPart = 0.59 * green;
                const volatile double bluePart = 0.11 * blue;
                const int gray = red == green && green == blue ? static_cast<int>(red)
                                                               : static_cast<int>(redPart + greenPart + bluePart);
                ASSERT_EQ(GrayOf(red << 16 | green << 8 | blue), gray) << red << " " << green << " " << blue;
            }
        }
    }
}

// The rule word by word.
std::vector<uint8_t> DitheredPlainly(const std::vector<uint32_t>& pixels, int width, int height)
{
    std::vector<uint8_t> dots(pixels.size());
    std::vector<int16_t> current(static_cast<std::size_t>(width));
    std::vector<int16_t> next(static_cast<std::size_t>(width));
    for (int y = 0; y < height; ++y) {
        current = next;
        next.assign(next.size(), 0);
        for (int x = 0; x < width; ++x) {
            const std::size_t at = static_cast<std::size_t>(y * width + x);
            const auto column = static_cast<std::size_t>(x);
            const int v = GrayOf(pixels[at]) + current[column];
            int error = v;
            if (v > 128) error = v >= 255 ? 0 : v - 255;
            dots[at] = v > 128 ? 0xFF : 0x00;
            const auto give = [&](std::vector<int16_t>& row, std::size_t to, int share) {
                row[to] = static_cast<int16_t>(row[to] + error * share / 16);
            };
            if (x != width - 1) give(current, column + 1, 7);
            if (y != height - 1) give(next, column, 5);
            if (x != width - 1 && y != height - 1) give(next, column + 1, 1);
            if (x != 0) give(next, column - 1, 3);
        }
    }
    return dots;
}

void ExpectDithered(const std::vector<uint32_t>& pixels, int width, int height)
{
    std::vector<uint8_t> dots(pixels.size());
    DitherToRaster(pixels, dots, static_cast<uint32_t>(width), static_cast<uint32_t>(height));
    ASSERT_EQ(dots, DitheredPlainly(pixels, width, height)) << width << " x " << height;
}

TEST(Dither, AsTheRuleTells)
{
    std::minstd_rand engine(11);
    const auto random = [&engine] { return std::uniform_int_distribution<uint32_t>()(engine); };
    for (const auto& [width, height] :
         {std::pair{1, 1}, {1, 9}, {2, 7}, {3, 3}, {9, 1}, {37, 23}, {608, 50}, {64, 400}}) {
        std::vector<uint32_t> noise(static_cast<std::size_t>(width * height));
        for (uint32_t& pixel : noise)
            pixel = random() & 0xFFFFFF;
        ExpectDithered(noise, width, height);
        // Smooth areas let the error grow to its limits.
        for (uint32_t& pixel : noise)
            pixel = (random() % 4 == 0 ? 0x808080 : 0x7F7F7F) + random() % 3 * 0x010101;
        ExpectDithered(noise, width, height);
        for (uint32_t& pixel : noise)
            pixel = random() % 2 * 0xFFFFFF;
        ExpectDithered(noise, width, height);
    }
    for (uint32_t gray = 0; gray < 256; ++gray) {
        ExpectDithered(std::vector<uint32_t>(33 * 21, gray * 0x010101), 33, 21);
    }
}

TEST(Dither, TheThresholdIsAbove128)
{
    const auto firstDots = [](uint32_t color) {
        std::vector<uint8_t> dots(2);
        DitherToRaster(std::vector<uint32_t>(2, color), dots, 2, 1);
        return dots;
    };
    EXPECT_EQ(firstDots(0x818181), (std::vector<uint8_t>{0xFF, 0x00}));
    EXPECT_EQ(firstDots(0x808080), (std::vector<uint8_t>{0x00, 0xFF}));
    EXPECT_EQ(firstDots(0xFF0000)[0], 0x00);
    EXPECT_EQ(GrayOf(0xFF0000), 76);
    EXPECT_EQ(GrayOf(0x0000FF), 28);
}

}  // namespace
}  // namespace marbex::printer
