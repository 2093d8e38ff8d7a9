// The error of a dot goes to its neighbours in sixteenths, each share truncated toward zero: 7 to the right, 5 below,
// 3 below left, 1 below right. A row waits dot by dot for the share of the dot before it, so the way from one value to
// the next is kept short: one addition and one look into a table.

#include "printer/floyd_steinberg.h"

#include <array>

namespace marbex::printer {

namespace {

// Gray plus the error that reached a dot. An error is at least -126 (white from 129) and at most 128 (black at 128);
// the shares of all neighbours together are never more than the largest of their errors.
constexpr int kLowestValue = -128;
constexpr int kHighestValue = 255 + 128;
constexpr int kThreshold = 128;

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

inline uint32_t Gray(uint32_t color)
{
    const uint32_t red = color >> 16 & 0xFF;
    const uint32_t green = color >> 8 & 0xFF;
    const uint32_t blue = color & 0xFF;
    const uint32_t hundredths = 30 * red + 59 * green + 11 * blue;
    const uint32_t gray = hundredths / 100;
    // Where the exact sum is whole, the sum in double may fall just short of it. Everywhere else both are the same.
    if (gray * 100 != hundredths || (red == green && green == blue)) return gray;
    return static_cast<uint32_t>(kRedProducts[red] + kGreenProducts[green] + kBlueProducts[blue]);
}

}  // namespace

uint8_t GrayOf(uint32_t color)
{
    return static_cast<uint8_t>(Gray(color));
}

Ditherer::Ditherer(uint32_t width) : width_(width), values_(width), errors_(width) {}

void Ditherer::DitherRow(const uint32_t* pixels, uint8_t* dots)
{
    int16_t* const values = values_.data();
    int16_t* const errors = errors_.data();
    for (uint32_t x = 0; x < width_; ++x)
        values[x] = static_cast<int16_t>(static_cast<int>(Gray(pixels[x])) + errors[x]);

    const Shares* const shares = kShares.data() - kLowestValue;
    int fromLeft = 0;
    int below = 0;  // what the dots so far give to the place below the one before this
    int belowNext = 0;
    for (uint32_t x = 0; x < width_; ++x) {
        const int value = values[x] + fromLeft;
        const Shares& share = shares[value];
        fromLeft = share.right;
        dots[x] = value > kThreshold ? 0xFF : 0x00;
        if (x > 0) errors[x - 1] = static_cast<int16_t>(below + share.belowLeft);
        below = belowNext + share.below;
        belowNext = share.belowRight;
    }
    if (width_ > 0) errors[width_ - 1] = static_cast<int16_t>(below);
}

void DitherToRaster(std::span<const uint32_t> pixels, std::span<uint8_t> dots, uint32_t width, uint32_t height)
{
    Ditherer ditherer(width);
    for (std::size_t row = 0; row < height; ++row) {
        ditherer.DitherRow(pixels.data() + row * width, dots.data() + row * width);
    }
}

}  // namespace marbex::printer
