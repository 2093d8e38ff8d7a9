#include "virtual_printer/record/command_name.h"

#include <array>
#include <string_view>

namespace marbex::virtual_printer {
namespace {

using Span = std::span<const uint8_t>;

// Parameters begin after the code's own bytes.
struct Row {
    Op op;
    std::string_view code;
    std::size_t parametersAt;
    std::string_view meaning;
};

constexpr Row kRows[] = {
    {Op::kCharacter, "text", 0, "characters"},
    {Op::kLineFeed, "LF", 1, "print the line"},
    {Op::kCarriageReturn, "CR", 1, "carriage return, ignored"},
    {Op::kCancel, "CAN", 1, "throw the unfinished line away"},
    {Op::kInitialise, "ESC @", 2, "initialise"},
    {Op::kPrintMode, "ESC !", 2, "print mode"},
    {Op::kScale, "GS !", 2, "character size"},
    {Op::kTable, "ESC t", 2, "character table"},
    {Op::kDoubleByte, "FS %", 2, "double-byte characters"},
    {Op::kAlign, "ESC a", 2, "alignment"},
    {Op::kPosition, "ESC $", 2, "position"},
    {Op::kMargin, "GS L", 2, "left margin"},
    {Op::kMarkFeed, "GS F8", 2, "feed to the black mark"},
    {Op::kFullCut, "ESC i", 2, "full cut"},
    {Op::kPartialCut, "ESC m", 2, "partial cut"},
    {Op::kPresenter, "GS e", 2, "presenter"},
    {Op::kDrawer, "ESC p", 2, "drawer"},
    {Op::kIdentity, "GS I", 2, "asks who the printer is"},
    {Op::kMechanism, "FS DD", 2, "asks after the mechanism"},
    {Op::kStartUp, "FS <", 2, "start-up"},
    {Op::kBarcodeHeight, "GS h", 2, "bar code height"},
    {Op::kBarcodeModule, "GS w", 2, "bar code module"},
    {Op::kBarcodeText, "GS H", 2, "bar code text"},
    {Op::kBarcode, "GS k", 2, "bar code"},
    {Op::kRasterRows, "ESC & l P", 0, "picture"},
    {Op::kRasterX, "ESC * p X", 0, "picture position"},
    {Op::kRasterMode, "ESC * b M", 0, "picture coding"},
    {Op::kRasterRow, "ESC * b W", 0, "picture rows"},
    {Op::kRasterEnd, "ESC * r B", 0, "end of the picture"},
    {Op::kDisplaySelect, "ESC B2", 2, "what follows is for"},
    {Op::kDisplayClear, "ESC A0", 2, "clear the display"},
    {Op::kDisplayPosition, "US $", 2, "display position"},
    {Op::kUnknown, "?", 0, "not understood"},
};

const Row& RowOf(Op op)
{
    for (const Row& row : kRows) {
        if (row.op == op) {
            return row;
        }
    }
    return kRows[std::size(kRows) - 1];
}

std::string Dots(int dots)
{
    return std::to_string(dots) + (dots == 1 ? " dot" : " dots");
}

std::string Mode(uint8_t mode)
{
    struct Bit {
        unsigned bit;
        std::string_view name;
    };
    constexpr Bit kBits[] = {
        {0x08, "bold"}, {0x10, "double height"}, {0x20, "double width"}, {0x40, "italic"}, {0x80, "underline"},
    };
    std::string names;
    for (const Bit& bit : kBits) {
        if ((mode & bit.bit) != 0) {
            names.append(names.empty() ? "" : ", ").append(bit.name);
        }
    }
    return names.empty() ? "plain" : names;
}

// The n-th of a few words; the number itself when there are not so many.
template <std::size_t N>
std::string Word(const std::array<std::string_view, N>& words, unsigned n, unsigned first = 0)
{
    return n >= first && n - first < N ? std::string(words[n - first]) : std::to_string(n);
}

// The number of a raster command: all its digits.
int RasterNumber(Span b)
{
    int number = 0;
    for (std::size_t i = 3; i < b.size() && b[i] >= '0' && b[i] <= '9' && i < 12; ++i) {
        number = number * 10 + (b[i] - '0');
    }
    return number;
}

std::string Barcode(Span b)
{
    constexpr std::array<std::string_view, 9> kNames = {"UPC-A", "UPC-E",   "EAN-13",  "EAN-8",   "CODE 39",
                                                        "ITF",   "CODABAR", "CODE 93", "CODE 128"};
    std::string text = b.size() > 2 ? Word(kNames, b[2], 0x41) : "";
    text += " \"";
    for (const uint8_t byte : b.subspan(std::min<std::size_t>(4, b.size()))) {
        text.push_back(byte >= 0x20 && byte < 0x7F ? static_cast<char>(byte) : '.');
    }
    return text + "\"";
}

// What the parameters say; nothing when there is no more to tell.
std::string Parameters(Op op, Span b)
{
    const auto at = [b](std::size_t i) { return i < b.size() ? static_cast<int>(b[i]) : 0; };
    const int n = at(2);
    switch (op) {
        case Op::kPrintMode:
            return Mode(static_cast<uint8_t>(n));
        case Op::kScale:
            return std::to_string((n >> 4) + 1) + " wide, " + std::to_string((n & 0x0F) + 1) + " high";
        case Op::kTable:
            return std::to_string(n);
        case Op::kDoubleByte:
            return Word<3>({"off", "GB18030", "Korean 949"}, b[2]);
        case Op::kAlign:
            return Word<3>({"left", "centre", "right"}, b[2]);
        case Op::kPosition:
        case Op::kMargin:
            return Dots(n + 256 * at(3));
        case Op::kPresenter:
            return n == 3 ? std::to_string(at(3)) + " steps out" : n == 5 ? "eject" : std::to_string(n);
        case Op::kDrawer:
            return std::to_string(2 * at(3)) + " ms on, " + std::to_string(2 * at(4)) + " ms off";
        case Op::kStartUp:
            return {b.begin() + 2, b.end() - 1};
        case Op::kBarcodeHeight:
        case Op::kBarcodeModule:
            return Dots(n);
        case Op::kBarcodeText:
            return Word<4>({"none", "above", "below", "above and below"}, b[2]);
        case Op::kBarcode:
            return Barcode(b);
        case Op::kRasterRows:
            return std::to_string(RasterNumber(b)) + " rows";
        case Op::kRasterX:
            return Dots(RasterNumber(b));
        case Op::kRasterMode:
            return RasterNumber(b) == 2   ? "run-coded"
                   : RasterNumber(b) == 0 ? "plain"
                                          : std::to_string(RasterNumber(b));
        case Op::kDisplaySelect:
            return n == 'D' ? "the display" : n == 'P' ? "the printer" : std::to_string(n);
        case Op::kDisplayPosition:
            return b.size() > 3 ? "row " + std::to_string(n) + ", column " + std::to_string(at(3))
                                : "column " + std::to_string(n);
        default:
            return {};
    }
}

}  // namespace

CommandName NameOf(Op op, Span bytes)
{
    const Row& row = RowOf(op);
    CommandName name{std::string(row.code), std::string(row.meaning)};
    // The data of bar codes is no list of numbers, and the digits of raster commands are in what they mean.
    const std::size_t end = op == Op::kBarcode || op == Op::kStartUp ? row.parametersAt + 1 : bytes.size();
    for (std::size_t i = row.parametersAt; row.parametersAt > 0 && i < std::min(end, bytes.size()); ++i) {
        if (op != Op::kStartUp) {
            name.code += " " + std::to_string(bytes[i]);
        }
    }
    const std::string parameters = bytes.size() > 2 ? Parameters(op, bytes) : "";
    if (!parameters.empty()) {
        name.meaning += ": " + parameters;
    }
    return name;
}

}  // namespace marbex::virtual_printer
