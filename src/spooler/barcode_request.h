#pragma once

// What the spooler does with a barcode before it becomes a job: the parameters are logged and judged, the data is
// checked and its bars are drawn.

#include <cstdint>
#include <string_view>

#include "printer/barcode_engine.h"
#include "printer/job_payloads.h"

namespace marbex::spooler {

struct BarcodeRequest {
    std::string_view data;  // ends at its first 0x00
    int32_t symbology;      // PTR_BCS_...
    int32_t height;         // dots
    int32_t width;          // as the application gave it, in dots
    int32_t alignment;      // -1 left, -2 centre, -3 right, else dots from the left edge
    int32_t textPosition;   // -11 none, -12 above, -13 below
};

// The module width that a width asks for: 1, 2 or 3 dots.
uint32_t BarcodeModuleWidth(int32_t width);

// Fills the payload of the job and writes every line of the log from "PrintBarCode Begin" to "PrintBarCode End", under
// the given tag. 0, or OPOS_E_ILLEGAL for what cannot be printed and for a null payload, for which there was no memory;
// then the payload is of no use and no End line is written.
int32_t PrepareBarcode(const char* tag, bool logsCastWidth, printer::BarcodeEngine& engine,
                       const BarcodeRequest& request, printer::BarcodeDataStruct* out);

}  // namespace marbex::spooler
