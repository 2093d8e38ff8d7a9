#include "virtual_printer/paper/barcode_printer.h"

#include <algorithm>
#include <numeric>

#include "virtual_printer/barcodes/barcode.h"

namespace marbex::virtual_printer {
namespace {

constexpr int kTextGap = 4;   // dots between bars and text
constexpr int kAfterGap = 8;  // dots below the whole

int LeftEdge(const BarcodePlace& place, int width, int paperWidth)
{
    if (place.x >= 0) {
        return place.margin + place.x;
    }
    const int room = std::max(0, paperWidth - place.margin - width);
    switch (place.alignment) {
        case Alignment::kCentre:
            return place.margin + room / 2;
        case Alignment::kRight:
            return place.margin + room;
        case Alignment::kLeft:
            break;
    }
    return place.margin;
}

void DrawText(DotStrip& strip, const Barcode& barcode, int bottom, int paperWidth, Glyphs& glyphs)
{
    const int width = static_cast<int>(barcode.text.size()) * kCellWidth;
    int x = std::clamp(barcode.x + (barcode.width - width) / 2, 0, std::max(0, paperWidth - width));
    for (const char character : barcode.text) {
        glyphs.Draw(strip, x, bottom, static_cast<unsigned char>(character), 1, Style{});
        x += kCellWidth;
    }
}

void Draw(const Symbol& symbol, const Barcode& barcode, Paper& paper, Glyphs& glyphs)
{
    const bool above = barcode.textPosition == 1 || barcode.textPosition == 3;
    const bool below = barcode.textPosition == 2 || barcode.textPosition == 3;
    const int barsTop = above ? kCellHeight + kTextGap : 0;
    const int barsBottom = barsTop + barcode.height;
    const int end = below ? barsBottom + kTextGap + kCellHeight : barsBottom;
    DotStrip strip(paper.Width(), end + kAfterGap);
    int x = barcode.x;
    bool bar = true;
    for (const uint8_t modules : symbol.elements) {
        const int width = modules * barcode.moduleWidth;
        if (bar) {
            strip.Fill(x, barsTop, width, barcode.height);
        }
        x += width;
        bar = !bar;
    }
    if (above) {
        DrawText(strip, barcode, kCellHeight, paper.Width(), glyphs);
    }
    if (below) {
        DrawText(strip, barcode, end, paper.Width(), glyphs);
    }
    strip.PutOn(paper);
}

}  // namespace

Barcode PrintBarcode(uint8_t m, std::span<const uint8_t> data, const BarcodeSettings& settings,
                     const BarcodePlace& place, Paper& paper, Glyphs& glyphs)
{
    const Symbol symbol = EncodeSymbol(m, data);
    Barcode barcode;
    barcode.symbology = symbol.name;
    barcode.data.assign(data.begin(), data.end());
    barcode.text = symbol.text;
    barcode.textPosition = settings.textPosition;
    barcode.height = settings.height;
    barcode.moduleWidth = settings.moduleWidth;
    barcode.problem = symbol.problem;
    barcode.width = std::accumulate(symbol.elements.begin(), symbol.elements.end(), 0) * settings.moduleWidth;
    barcode.x = LeftEdge(place, barcode.width, paper.Width());
    if (barcode.problem.empty() && barcode.x + barcode.width > paper.Width()) {
        barcode.problem = "wider than the printable area";
    }
    barcode.printed = barcode.problem.empty();
    if (barcode.printed) {
        Draw(symbol, barcode, paper, glyphs);
    }
    return barcode;
}

}  // namespace marbex::virtual_printer
