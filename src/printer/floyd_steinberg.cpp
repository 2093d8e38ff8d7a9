// The error of a dot goes to its neighbours in sixteenths, each share truncated toward zero: 7 to the right, 5 below,
// 3 below left, 1 below right.
//
// A row waits dot by dot for the share of the dot before it. So the way from one value to the next is kept short, an
// addition and a look into a table, and two rows are worked on at a time, the lower one dot behind: by then everything
// that reaches it from above is known, and neither waits for the other.

#include "printer/floyd_steinberg.h"

#include <algorithm>
#include <array>

namespace marbex::printer {

namespace {

// Gray plus the error that reached a dot. An error is at least -126 (white from 129) and at most 128 (black at 128);
// the shares of all neighbours together are never more than the largest of their errors.
constexpr int kLowestValue = -128;
constexpr int kHighestValue = 255 + 128;
constexpr int kThreshold = 128;

constexpr std::size_t kRowsTogether = 2;

struct Shares {
    int16_t right;
    int16_t below;
    int16_t belowLeft;
    int16_t belowRight;
};

constexpr Shares SharesOf(int value)
{
    int error = value;
    if (value > kThreshold) error = value < 255 ? value - 255 : 0;
    const auto sixteenths = [error](int count) { return static_cast<int16_t>(error * count / 16); };
    return {sixteenths(7), sixteenths(5), sixteenths(3), sixteenths(1)};
}

constexpr auto MakeShares()
{
    std::array<Shares, kHighestValue - kLowestValue + 1> shares{};
    for (std::size_t i = 0; i < shares.size(); ++i)
        shares[i] = SharesOf(static_cast<int>(i) + kLowestValue);
    return shares;
}
constexpr auto kShares = MakeShares();

// The products, rounded to double each; tables, so that no compiler fuses them with the additions.
constexpr auto MakeProducts(double factor)
{
    std::array<double, 256> products{};
    for (std::size_t i = 0; i < products.size(); ++i)
        products[i] = factor * static_cast<double>(i);
    return products;
}
constexpr auto kRedProducts = MakeProducts(0.3);
constexpr auto kGreenProducts = MakeProducts(0.59);
constexpr auto kBlueProducts = MakeProducts(0.11);

// The parts of a colour, and its gray in whole numbers. Where the exact sum is whole (and the colour not gray itself)
// the sum in double may fall just short of it; everywhere else both truncate to the same.
struct IntegerGray {
    uint16_t gray;
    bool isSure;
};

inline IntegerGray GrayInIntegers(uint32_t color)
{
    const auto red = static_cast<uint16_t>(color >> 16 & 0xFF);
    const auto green = static_cast<uint16_t>(color >> 8 & 0xFF);
    const auto blue = static_cast<uint16_t>(color & 0xFF);
    const auto hundredths = static_cast<uint16_t>(30 * red + 59 * green + 11 * blue);
    // hundredths / 100, for all that occur (up to 25500), in a form for 16-bit lanes.
    const auto gray = static_cast<uint16_t>(static_cast<uint16_t>(uint32_t{hundredths} * 5243U >> 16) >> 3);
    const bool isWhole = static_cast<uint16_t>(gray * 100) == hundredths;
    const bool isGray = ((red ^ green) | (green ^ blue)) == 0;
    return {gray, !isWhole || isGray};
}

inline int16_t ExactGray(uint32_t color)
{
    const IntegerGray integer = GrayInIntegers(color);
    if (integer.isSure) return static_cast<int16_t>(integer.gray);
    return static_cast<int16_t>(kRedProducts[color >> 16 & 0xFF] + kGreenProducts[color >> 8 & 0xFF] +
                                kBlueProducts[color & 0xFF]);
}

// In blocks, in which the compiler handles several pixels at once; the few that have one in doubt are done again.
void GrayRow(const uint32_t* pixels, std::size_t width, int16_t* grays)
{
    constexpr std::size_t kBlock = 16;
    std::size_t x = 0;
    for (; x + kBlock <= width; x += kBlock) {
        uint16_t doubts = 0;
        for (std::size_t i = 0; i < kBlock; ++i) {
            const IntegerGray integer = GrayInIntegers(pixels[x + i]);
            grays[x + i] = static_cast<int16_t>(integer.gray);
            doubts = static_cast<uint16_t>(doubts | (integer.isSure ? 0 : 1));
        }
        if (doubts == 0) continue;
        for (std::size_t i = 0; i < kBlock; ++i)
            grays[x + i] = ExactGray(pixels[x + i]);
    }
    for (; x < width; ++x)
        grays[x] = ExactGray(pixels[x]);
}

}  // namespace

uint8_t GrayOf(uint32_t color)
{
    return static_cast<uint8_t>(ExactGray(color));
}

Ditherer::Ditherer(uint32_t width) : width_(width), grays_(kRowsTogether * width), errors_(width) {}

// One step works on column `step` of the first row, on the column before it in the second, and so on.
template <std::size_t kRows>
void Ditherer::Diffuse(uint8_t* dots)
{
    struct Row {
        int right = 0;      // share for the dot to the right
        int below = 0;      // shares so far for the place below the dot before
        int belowNext = 0;  // ... and below the dot itself
    };
    std::array<Row, kRows> rows;
    const Shares* const shares = kShares.data() - kLowestValue;
    const int16_t* const grays = grays_.data();
    int16_t* const errors = errors_.data();

    const auto step = [&](std::size_t first, auto atEdge) {
        int fromAbove = !atEdge || first < width_ ? errors[first] : 0;
        for (std::size_t i = 0; i < kRows; ++i) {
            const std::size_t x = first - i;  // far above width_ when the row has not begun
            Row& row = rows[i];
            if (atEdge && x >= width_) {
                // The dot behind the last gives nothing, but what the last has gathered is complete now.
                if (x == width_) fromAbove = row.below;
                if (x == width_ && i == kRows - 1) errors[x - 1] = static_cast<int16_t>(fromAbove);
                continue;
            }
            const int value = grays[i * width_ + x] + fromAbove + row.right;
            const Shares& share = shares[value];
            dots[i * width_ + x] = value > kThreshold ? 0xFF : 0x00;
            fromAbove = row.below + share.belowLeft;
            if (i == kRows - 1 && (!atEdge || x > 0)) errors[x - 1] = static_cast<int16_t>(fromAbove);
            row.right = share.right;
            row.below = row.belowNext + share.below;
            row.belowNext = share.belowRight;
        }
    };
    std::size_t first = 0;
    for (; first < std::min(kRows, width_); ++first)
        step(first, std::true_type());
    for (; first < width_; ++first)
        step(first, std::false_type());
    for (; first < width_ + kRows; ++first)
        step(first, std::true_type());
}

void Ditherer::DitherRows(const uint32_t* pixels, uint32_t rows, uint8_t* dots)
{
    for (uint32_t row = 0; row < rows;) {
        const bool together = rows - row >= kRowsTogether;
        const std::size_t count = together ? kRowsTogether : 1;
        for (std::size_t i = 0; i < count; ++i)
            GrayRow(pixels + (row + i) * width_, width_, grays_.data() + i * width_);
        uint8_t* const out = dots + row * width_;
        if (together) {
            Diffuse<kRowsTogether>(out);
        } else {
            Diffuse<1>(out);
        }
        row += static_cast<uint32_t>(count);
    }
}

void DitherToRaster(std::span<const uint32_t> pixels, std::span<uint8_t> dots, uint32_t width, uint32_t height)
{
    Ditherer(width).DitherRows(pixels.data(), height, dots.data());
}

}  // namespace marbex::printer
