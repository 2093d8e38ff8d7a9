#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "printer/barcode_row.h"
#include "printer/barcode_symbology.h"

namespace marbex::printer {

// Checks barcode data and draws its bars. One engine serves a spooler for all its barcodes; nothing is carried from one
// to the next. Not for several threads at a time.
class BarcodeEngine {
public:
    // Whether the data, up to its first 0x00, may be printed in the symbology. Draws the bar row when it may; the row
    // is empty when not. moduleWidth is in dots.
    bool Encode(std::string_view data, Symbology symbology, uint32_t moduleWidth);

    // The human-readable text of the data encoded last; a check digit that was missing is in it.
    std::string GetHriText() const;

    uint32_t GetWidth() const { return row_.Dots(); }  // dots drawn, at most 4000
    std::span<const uint8_t, BarRow::kBytes> Bars() const { return row_.Bytes(); }

private:
    Symbology symbology_ = Symbology::kUpcA;
    std::string data_;
    BarRow row_;
};

}  // namespace marbex::printer
