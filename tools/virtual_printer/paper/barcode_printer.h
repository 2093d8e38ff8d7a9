#pragma once

#include <cstdint>
#include <span>

#include "virtual_printer/happenings.h"
#include "virtual_printer/paper/glyphs.h"

namespace marbex::virtual_printer {

struct BarcodeSettings {
    int height = 162;      // GS h, dots
    int moduleWidth = 3;   // GS w, dots
    int textPosition = 0;  // GS H
};

// Where a barcode goes across the paper: aligned, or at a fixed place when x is not negative.
struct BarcodePlace {
    Alignment alignment = Alignment::kLeft;
    int margin = 0;
    int x = -1;
};

// Draws the barcode of GS k m n data onto the paper; tells what became of it.
Barcode PrintBarcode(uint8_t m, std::span<const uint8_t> data, const BarcodeSettings& settings,
                     const BarcodePlace& place, Paper& paper, Glyphs& glyphs);

}  // namespace marbex::virtual_printer
