#include "printer/raster_language.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <string_view>
#include <vector>

#include "opos/printer.h"
#include "printer/upright_rows.h"

namespace marbex::printer {

namespace {

constexpr std::size_t kPieceBytes = 900;

void AppendNumber(std::string& out, int64_t number)
{
    char digits[24];
    const auto end = std::to_chars(std::begin(digits), std::end(digits), number).ptr;
    out.append(digits, end);
}

std::string NumberCommand(std::string_view before, int64_t number, char after)
{
    std::string command(before);
    AppendNumber(command, number);
    command.push_back(after);
    return command;
}

int64_t LeftEdge(int32_t alignment, uint32_t dotsPerRow, uint32_t rasterWidth)
{
    const int64_t space = std::max<int64_t>(int64_t{rasterWidth} - dotsPerRow, 0);
    switch (alignment) {
        case opos::PTR_BM_LEFT:
            return 0;
        case opos::PTR_BM_CENTER:
            return space / 2;
        case opos::PTR_BM_RIGHT:
            return space;
        default:
            return alignment;
    }
}

// Eight gray bytes, the first of them leftmost, into eight dots, the first in the top bit. Below 127 is black.
uint8_t PackEight(const uint8_t* gray)
{
    constexpr uint64_t kTopBits = 0x8080808080808080u;
    uint64_t word = 0;
    for (int i = 0; i < 8; ++i)
        word |= uint64_t{gray[i]} << (8 * i);
    // The top bit of a byte tells 128 and more; adding 1 to its other bits tells 127.
    const uint64_t white = (((word & ~kTopBits) + 0x0101010101010101u) | word) & kTopBits;
    const uint64_t black = (white ^ kTopBits) >> 7;
    // Byte i holds its dot in bit 8i. The product brings that to bit 63 - i, and nothing else into the top byte.
    return static_cast<uint8_t>(black * 0x8040201008040201u >> 56);
}

void PackRow(const uint8_t* gray, std::size_t dots, uint8_t* packed)
{
    std::size_t dot = 0;
    for (; dot + 8 <= dots; dot += 8)
        *packed++ = PackEight(gray + dot);
    if (dot == dots) return;
    uint8_t last[8];
    std::fill(std::begin(last), std::end(last), uint8_t{0xFF});
    std::copy(gray + dot, gray + dots, last);
    *packed = PackEight(last);
}

// Row by row into a buffer that is reused.
class RowCompressor {
public:
    explicit RowCompressor(std::size_t rowBytes) : packed_(rowBytes), compressed_(rowBytes + rowBytes / 2 + 2) {}

    // The row without its trailing white, compressed: a byte that differs from its neighbours stands for itself; two to
    // 255 equal ones are the byte twice and their number.
    std::string_view Compress(const uint8_t* gray, std::size_t dots)
    {
        PackRow(gray, dots, packed_.data());
        std::size_t length = packed_.size();
        while (length != 0 && packed_[length - 1] == 0)
            --length;

        char* out = compressed_.data();
        for (std::size_t i = 0; i < length;) {
            const uint8_t byte = packed_[i];
            std::size_t run = 1;
            while (run < 255 && i + run < length && packed_[i + run] == byte)
                ++run;
            *out++ = static_cast<char>(byte);
            if (run > 1) {
                *out++ = static_cast<char>(byte);
                *out++ = static_cast<char>(run);
            }
            i += run;
        }
        return {compressed_.data(), static_cast<std::size_t>(out - compressed_.data())};
    }

private:
    std::vector<uint8_t> packed_;
    std::vector<char> compressed_;
};

}  // namespace

int32_t PrintRaster(const BitmapDataStruct& bitmap, uint32_t rasterWidth, const PrinterLink& link)
{
    UprightRows rows(bitmap);
    const uint32_t dots = rows.DotsPerRow();
    if (const int32_t result = link.Write(NumberCommand("\x1B&l", rows.Count(), 'P'))) return result;
    const int64_t leftEdge = LeftEdge(bitmap.alignment, dots, rasterWidth);
    if (const int32_t result = link.Write(NumberCommand("\x1B*p", leftEdge, 'X'))) return result;

    RowCompressor compressor((std::size_t{dots} + 7) / 8);
    std::string buffer = "\x1B*b2M";
    for (uint32_t row = 0; row < rows.Count(); ++row) {
        const std::string_view compressed = compressor.Compress(rows.Row(row), dots);
        buffer += "\x1B*b";
        AppendNumber(buffer, static_cast<int64_t>(compressed.size()));
        buffer += 'W';
        buffer += compressed;
        if (buffer.size() >= kPieceBytes) {
            if (const int32_t result = link.Write(buffer)) return result;
            buffer.clear();
        }
    }
    buffer += "\x1B*b0M\x1B*rB";
    return link.Write(buffer);
}

}  // namespace marbex::printer
