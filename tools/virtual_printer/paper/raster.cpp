#include "virtual_printer/paper/raster.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace marbex::virtual_printer {
namespace {

constexpr std::size_t kLongestRow = 8192;  // bytes unpacked, far beyond the widest printer

}  // namespace

void Raster::SetRows(int rows)
{
    open_ = true;
    image_.declaredRows = rows;
}

void Raster::SetX(int x)
{
    open_ = true;
    image_.x = x;
}

bool Raster::SetMode(int mode)
{
    if (mode != 0 && mode != 2) {
        return false;
    }
    open_ = true;
    mode_ = mode;
    return true;
}

bool Raster::Row(std::span<const uint8_t> data)
{
    open_ = true;
    Bytes row;
    const bool good = Unpack(data, row);
    while (!row.empty() && row.back() == 0) {
        row.pop_back();
    }
    Print(row);
    ++image_.height;
    if (!row.empty()) {
        const int black = static_cast<int>(row.size()) * 8 - std::countr_zero(row.back());
        image_.width = std::max(image_.width, black);
        image_.clipped = image_.clipped || image_.x + black > paper_.Width();
    }
    if (image_.rows.size() < kMostRowsKept && bytesKept_ + row.size() <= kMostBytesKept) {
        bytesKept_ += row.size();
        image_.rows.push_back(std::move(row));
    }
    return good;
}

// Run coding: a byte that comes twice is followed by how often it stands there in all.
bool Raster::Unpack(std::span<const uint8_t> data, Bytes& row) const
{
    if (mode_ == 0) {
        row.assign(data.begin(), data.end());
        return true;
    }
    for (std::size_t i = 0; i < data.size();) {
        const uint8_t byte = data[i];
        if (i + 1 == data.size() || data[i + 1] != byte) {
            row.push_back(byte);
            ++i;
            continue;
        }
        if (i + 2 == data.size() || data[i + 2] < 2 || row.size() + data[i + 2] > kLongestRow) {
            return false;
        }
        row.insert(row.end(), data[i + 2], byte);
        i += 3;
    }
    return true;
}

void Raster::Print(const Bytes& row)
{
    const auto skipped = static_cast<std::size_t>(std::min(image_.x, paper_.Width()) / 8);
    const int shift = image_.x % 8;
    Bytes line(skipped);
    unsigned carried = 0;
    for (const uint8_t byte : row) {
        const unsigned wide = static_cast<unsigned>(byte) << (8 - shift);
        line.push_back(static_cast<uint8_t>(carried | (wide >> 8)));
        carried = wide & 0xFF;
    }
    line.push_back(static_cast<uint8_t>(carried));
    paper_.Append(line);
}

RasterImage Raster::Finish(bool properly)
{
    open_ = false;
    mode_ = 0;
    bytesKept_ = 0;
    RasterImage image = std::exchange(image_, {});
    image.complete = properly && image.height == image.declaredRows;
    return image;
}

}  // namespace marbex::virtual_printer
