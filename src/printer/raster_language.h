#pragma once

// Bitmaps in the printer's raster language (ESC & / ESC *): rows of dots, compressed, without their trailing white.

#include <cstdint>

#include "printer/job_payloads.h"
#include "printer/printer_link.h"

namespace marbex::printer {

// Rotates, places and prints a bitmap on paper that is rasterWidth dots wide. Writes in pieces of 900 bytes and more;
// ends at the first that fails and returns its result, else 0. A rotation that is none prints an empty raster.
int32_t PrintRaster(const BitmapDataStruct& bitmap, uint32_t rasterWidth, const PrinterLink& link);

}  // namespace marbex::printer
