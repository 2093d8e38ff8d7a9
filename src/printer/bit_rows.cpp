#include "printer/bit_rows.h"

#include <algorithm>
#include <array>

#include "opos/printer.h"

namespace marbex::printer {

namespace {

constexpr uint32_t kStripRows = 8;
constexpr std::array<uint8_t, 8> kEightWhite{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};

// Bit 0 of byte i, the first gray the lowest byte, tells whether gray i is black.
uint64_t BlackBits(const uint8_t* eightGrays)
{
    constexpr uint64_t kTopBits = 0x8080808080808080u;
    uint64_t word = 0;
    for (int i = 0; i < 8; ++i)
        word |= uint64_t{eightGrays[i]} << (8 * i);
    // The top bit of a byte tells 128 and more; adding 1 to its other bits tells 127.
    const uint64_t white = (((word & ~kTopBits) + 0x0101010101010101u) | word) & kTopBits;
    return (white ^ kTopBits) >> 7;
}

// The eight bits side by side: the product brings bit 8i to bit 63 - i, and nothing else into the top byte.
uint8_t PackForward(const uint8_t* eightGrays)
{
    return static_cast<uint8_t>(BlackBits(eightGrays) * 0x8040201008040201u >> 56);
}

// The last gray first: bit 8i goes to bit 56 + i.
uint8_t PackBackward(const uint8_t* eightGrays)
{
    return static_cast<uint8_t>(BlackBits(eightGrays) * 0x0102040810204080u >> 56);
}

// A square of eight by eight bits, a row a byte, the first row on top, the first column in the top bit: rows and
// columns exchanged, by exchanging single bits, then squares of two, then of four.
uint64_t Transpose(uint64_t square)
{
    uint64_t swap = (square ^ (square >> 7)) & 0x00AA00AA00AA00AAu;
    square ^= swap ^ (swap << 7);
    swap = (square ^ (square >> 14)) & 0x0000CCCC0000CCCCu;
    square ^= swap ^ (swap << 14);
    swap = (square ^ (square >> 28)) & 0x00000000F0F0F0F0u;
    return square ^ swap ^ (swap << 28);
}

}  // namespace

BitRows::BitRows(const BitmapDataStruct& bitmap) : bitmap_(bitmap)
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
            return;
    }
    turned_ = bitmap.rotation == opos::PTR_RP_RIGHT90 || bitmap.rotation == opos::PTR_RP_LEFT90;
    rowBytes_ = (std::size_t{dotsPerRow_} + 7) / 8;
    rows_.resize(rowBytes_ * (turned_ ? kStripRows : 1));
}

std::span<const uint8_t> BitRows::Row(uint32_t row)
{
    if (!turned_) {
        PackRow(row);
        return rows_;
    }
    const uint32_t first = row - row % kStripRows;
    if (!filled_ || first != stripStart_) PackTurnedStrip(first);
    return std::span(rows_).subspan((row - first) * rowBytes_, rowBytes_);
}

void BitRows::PackRow(uint32_t row)
{
    const std::size_t width = dotsPerRow_;
    const bool forward = bitmap_.rotation == opos::PTR_RP_NORMAL;
    const uint8_t* line = bitmap_.pixels.get() + (forward ? row : count_ - 1 - row) * width;
    uint8_t* out = rows_.data();
    std::size_t dot = 0;
    for (; dot + 8 <= width; dot += 8) {
        *out++ = forward ? PackForward(line + dot) : PackBackward(line + (width - 8 - dot));
    }
    if (dot == width) return;
    auto last = kEightWhite;
    if (forward) {
        std::copy(line + dot, line + width, last.begin());
    } else {
        std::reverse_copy(line, line + (width - dot), last.begin());
    }
    *out = PackForward(last.data());
}

// Eight columns of the picture become eight rows: taken eight lines at a time, as squares of bits.
void BitRows::PackTurnedStrip(uint32_t firstRow)
{
    stripStart_ = firstRow;
    filled_ = true;
    const std::size_t width = bitmap_.width;
    const bool right = bitmap_.rotation == opos::PTR_RP_RIGHT90;
    const std::size_t columns = std::min<std::size_t>(kStripRows, width - firstRow);

    // One line's part of the strip, the first row's dot in the top bit. Turned right, rows go through the columns from
    // the left, and dots through the lines from the bottom; turned left, the other way round.
    const auto packPart = [&](std::size_t dot) -> uint64_t {
        const uint8_t* line = bitmap_.pixels.get() + (right ? dotsPerRow_ - 1 - dot : dot) * width;
        const uint8_t* part = right ? line + firstRow : line + (width - firstRow - columns);
        if (columns == kStripRows) return right ? PackForward(part) : PackBackward(part);
        auto padded = kEightWhite;
        if (right) {
            std::copy(part, part + columns, padded.begin());
        } else {
            std::reverse_copy(part, part + columns, padded.begin());
        }
        return PackForward(padded.data());
    };

    for (std::size_t byte = 0; byte < rowBytes_; ++byte) {
        const std::size_t dots = std::min<std::size_t>(8, dotsPerRow_ - byte * 8);
        uint64_t square = 0;
        for (std::size_t i = 0; i < dots; ++i)
            square |= packPart(byte * 8 + i) << (56 - 8 * i);
        square = Transpose(square);
        for (std::size_t row = 0; row < kStripRows; ++row) {
            rows_[row * rowBytes_ + byte] = static_cast<uint8_t>(square >> (56 - 8 * row));
        }
    }
}

}  // namespace marbex::printer
