#include "printer/upright_rows.h"

#include <algorithm>

#include "opos/printer.h"

namespace marbex::printer {

namespace {

// Turning a picture on its side walks through it column by column. Taking this many columns at once uses each line of
// the processor's cache while it is there.
constexpr uint32_t kStripRows = 16;

}  // namespace

UprightRows::UprightRows(const BitmapDataStruct& bitmap) : bitmap_(bitmap)
{
    if (bitmap.pixels == nullptr) return;
    switch (bitmap.rotation) {
        case opos::PTR_RP_NORMAL:
        case opos::PTR_RP_ROTATE180:
            count_ = bitmap.height;
            dotsPerRow_ = bitmap.width;
            break;
        case opos::PTR_RP_RIGHT90:
        case opos::PTR_RP_LEFT90:
            count_ = bitmap.width;
            dotsPerRow_ = bitmap.height;
            break;
        default:
            break;
    }
}

const uint8_t* UprightRows::Row(uint32_t row)
{
    if (bitmap_.rotation == opos::PTR_RP_NORMAL) return bitmap_.pixels.get() + std::size_t{row} * dotsPerRow_;
    if (row < stripStart_ || row - stripStart_ >= stripRows_) FillStrip(row);
    return strip_.data() + std::size_t{row - stripStart_} * dotsPerRow_;
}

void UprightRows::FillStrip(uint32_t firstRow)
{
    stripStart_ = firstRow;
    stripRows_ = std::min(kStripRows, count_ - firstRow);
    strip_.resize(std::size_t{stripRows_} * dotsPerRow_);

    const std::size_t width = bitmap_.width;
    const uint8_t* pixels = bitmap_.pixels.get();
    if (bitmap_.rotation == opos::PTR_RP_ROTATE180) {
        for (uint32_t i = 0; i < stripRows_; ++i) {
            const uint8_t* source = pixels + (count_ - 1 - (firstRow + i)) * width;
            std::reverse_copy(source, source + width, strip_.data() + i * width);
        }
        return;
    }
    // Right: the bottom of a column comes first. Left: its top, and the last column is the first row.
    const bool right = bitmap_.rotation == opos::PTR_RP_RIGHT90;
    for (std::size_t dot = 0; dot < dotsPerRow_; ++dot) {
        const uint8_t* line = pixels + (right ? dotsPerRow_ - 1 - dot : dot) * width;
        const uint8_t* source = line + (right ? firstRow : width - 1 - firstRow);
        for (std::size_t i = 0; i < stripRows_; ++i) {
            strip_[i * dotsPerRow_ + dot] = right ? source[i] : *(source - i);
        }
    }
}

}  // namespace marbex::printer
