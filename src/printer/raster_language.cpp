#include "printer/raster_language.h"

#include <algorithm>
#include <charconv>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "opos/printer.h"
#include "printer/bit_rows.h"

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

// Row by row into a buffer that is reused.
class RowCompressor {
public:
    explicit RowCompressor(std::size_t rowBytes) : compressed_(rowBytes + rowBytes / 2 + 2) {}

    // The row without its trailing white, compressed: a byte that differs from its neighbours stands for itself; two to
    // 255 equal ones are the byte twice and their number.
    std::string_view Compress(std::span<const uint8_t> row)
    {
        while (!row.empty() && row.back() == 0)
            row = row.first(row.size() - 1);
        char* out = compressed_.data();
        for (std::size_t i = 0; i < row.size();) {
            const uint8_t byte = row[i];
            std::size_t run = 1;
            while (run < 255 && i + run < row.size() && row[i + run] == byte)
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
    std::vector<char> compressed_;
};

}  // namespace

int32_t PrintRaster(const BitmapDataStruct& bitmap, uint32_t rasterWidth, const PrinterLink& link)
{
    BitRows rows(bitmap);
    if (const int32_t result = link.Write(NumberCommand("\x1B&l", rows.Count(), 'P'))) return result;
    const int64_t leftEdge = LeftEdge(bitmap.alignment, rows.DotsPerRow(), rasterWidth);
    if (const int32_t result = link.Write(NumberCommand("\x1B*p", leftEdge, 'X'))) return result;

    RowCompressor compressor(rows.RowBytes());
    std::string buffer = "\x1B*b2M";
    for (uint32_t row = 0; row < rows.Count(); ++row) {
        const std::string_view compressed = compressor.Compress(rows.Row(row));
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
