// Averages are exact: with a source of w pixels on a target of n, everything is counted in units of 1/n of a source
// pixel, so that a target pixel covers w units and a source pixel n of them.

#include "platform/picture_scaling.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <vector>

namespace marbex::platform {

namespace {

// The bytes of a pixel in memory. The fourth colour is empty; it keeps the loops simple, which makes them fast.
constexpr std::size_t kChannels = 4;
static_assert(std::endian::native == std::endian::little, "a pixel's lowest byte, blue, comes first");

// What a target position covers of a shrinking axis.
struct Cover {
    uint32_t first;        // source position
    uint32_t last;         // source position, first included
    uint32_t firstWeight;  // units of first
    uint32_t lastWeight;   // units of last; 0 when it is the same as first
};

Cover CoverOf(uint32_t target, uint32_t sourceSize, uint32_t targetSize)
{
    const uint64_t begin = uint64_t{target} * sourceSize;
    const uint64_t end = begin + sourceSize;
    Cover cover{};
    cover.first = static_cast<uint32_t>(begin / targetSize);
    cover.last = static_cast<uint32_t>((end - 1) / targetSize);
    const uint64_t firstEnd = std::min<uint64_t>((uint64_t{cover.first} + 1) * targetSize, end);
    cover.firstWeight = static_cast<uint32_t>(firstEnd - begin);
    if (cover.last != cover.first) cover.lastWeight = static_cast<uint32_t>(end - uint64_t{cover.last} * targetSize);
    return cover;
}

uint32_t NearestOf(uint32_t target, uint32_t sourceSize, uint32_t targetSize)
{
    return static_cast<uint32_t>(uint64_t{target} * sourceSize / targetSize);
}

class Stretcher {
public:
    Stretcher(const PixelSource& source, uint32_t width, uint32_t height)
        : source_(source),
          width_(width),
          height_(height),
          shrinksAcross_(width < source.width),
          shrinksDown_(height < source.height)
    {
        if (shrinksAcross_) {
            covers_.reserve(width);
            for (uint32_t x = 0; x < width; ++x)
                covers_.push_back(CoverOf(x, source.width, width));
        } else if (width > source.width) {
            columns_.reserve(width);
            for (uint32_t x = 0; x < width; ++x)
                columns_.push_back(NearestOf(x, source.width, width));
        }
        if (shrinksAcross_ || shrinksDown_) sums_.resize(std::size_t{source.width} * kChannels);
    }

    void DrawRow(uint32_t y, uint32_t* target)
    {
        if (shrinksDown_) {
            SumRows(CoverOf(y, source_.height, height_));
            if (shrinksAcross_) {
                AverageAcross(source_.height, target);
            } else {
                DivideSums(target);
            }
            return;
        }
        const uint32_t* const row = RowOf(NearestOf(y, source_.height, height_));
        if (shrinksAcross_) {
            TakeRow(row);
            AverageAcross(1, target);
        } else {
            SpreadAcross(row, target);
        }
    }

    // Whether row y of the target is the same as the row before it.
    bool RepeatsRowBefore(uint32_t y) const
    {
        return !shrinksDown_ && NearestOf(y, source_.height, height_) == NearestOf(y - 1, source_.height, height_);
    }

private:
    const uint32_t* RowOf(uint32_t row) const { return source_.pixels + std::size_t{row} * source_.width; }

    void AddRow(uint32_t row, uint32_t weight)
    {
        const auto* const bytes = reinterpret_cast<const uint8_t*>(RowOf(row));
        uint32_t* const sums = sums_.data();
        const std::size_t count = std::size_t{source_.width} * kChannels;
        for (std::size_t i = 0; i < count; ++i)
            sums[i] += weight * bytes[i];
    }

    // A sum is at most 255 * source height and fits, as a side has at most 2^24 pixels.
    void SumRows(const Cover& cover)
    {
        std::ranges::fill(sums_, 0U);
        AddRow(cover.first, cover.firstWeight);
        for (uint32_t row = cover.first + 1; row < cover.last; ++row)
            AddRow(row, height_);
        if (cover.lastWeight != 0) AddRow(cover.last, cover.lastWeight);
    }

    void TakeRow(const uint32_t* row)
    {
        const auto* const bytes = reinterpret_cast<const uint8_t*>(row);
        std::copy_n(bytes, sums_.size(), sums_.data());
    }

    // The nearest whole number to sum / total. Both are below 2^53 and the quotient is small, so that the division in
    // double never rounds up to the next whole number.
    static uint32_t Nearest(uint64_t sum, uint64_t total)
    {
        const uint64_t half = total / 2;
        return static_cast<uint32_t>(static_cast<double>(sum + half) / static_cast<double>(total));
    }

    void AverageAcross(uint32_t units, uint32_t* target) const
    {
        const uint64_t total = uint64_t{units} * source_.width;
        for (uint32_t x = 0; x < width_; ++x) {
            const Cover& cover = covers_[x];
            std::array<uint64_t, 3> inner{};
            for (uint32_t column = cover.first + 1; column < cover.last; ++column) {
                for (std::size_t c = 0; c < inner.size(); ++c)
                    inner[c] += sums_[column * kChannels + c];
            }
            uint32_t pixel = 0;
            for (std::size_t c = 0; c < inner.size(); ++c) {
                const uint64_t sum = inner[c] * width_ +
                                     uint64_t{cover.firstWeight} * sums_[cover.first * kChannels + c] +
                                     uint64_t{cover.lastWeight} * sums_[cover.last * kChannels + c];
                pixel |= Nearest(sum, total) << (8 * c);
            }
            target[x] = pixel;
        }
    }

    // Averages of an axis down only, then spread across.
    void DivideSums(uint32_t* target)
    {
        row_.resize(source_.width);
        for (uint32_t x = 0; x < source_.width; ++x) {
            uint32_t pixel = 0;
            for (std::size_t c = 0; c < 3; ++c) {
                pixel |= Nearest(sums_[x * kChannels + c], source_.height) << (8 * c);
            }
            row_[x] = pixel;
        }
        SpreadAcross(row_.data(), target);
    }

    void SpreadAcross(const uint32_t* row, uint32_t* target) const
    {
        if (columns_.empty()) {
            std::copy_n(row, width_, target);
            return;
        }
        for (uint32_t x = 0; x < width_; ++x)
            target[x] = row[columns_[x]];
    }

    const PixelSource source_;
    const uint32_t width_;
    const uint32_t height_;
    const bool shrinksAcross_;
    const bool shrinksDown_;
    std::vector<Cover> covers_;      // by target column, of a width that shrinks
    std::vector<uint32_t> columns_;  // by target column, of a width that grows
    std::vector<uint32_t> sums_;     // four a source column
    std::vector<uint32_t> row_;
};

}  // namespace

void StretchRows(const PixelSource& source, uint32_t width, uint32_t height, uint32_t firstRow, uint32_t rows,
                 std::span<uint32_t> target)
{
    Stretcher stretcher(source, width, height);
    for (uint32_t row = 0; row < rows; ++row) {
        uint32_t* const out = target.data() + std::size_t{row} * width;
        if (row > 0 && stretcher.RepeatsRowBefore(firstRow + row)) {
            std::copy_n(out - width, width, out);
        } else {
            stretcher.DrawRow(firstRow + row, out);
        }
    }
}

}  // namespace marbex::platform
