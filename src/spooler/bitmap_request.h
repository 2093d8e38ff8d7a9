#pragma once

// What the spooler does with a picture file before it becomes a job: it is loaded, brought to its size and turned into
// black and white dots.

#include <cstdint>
#include <string>

#include "printer/job_payloads.h"

namespace marbex::spooler {

struct BitmapRequest {
    std::string fileName;
    int32_t width;      // dots, or PTR_BM_ASIS
    int32_t alignment;  // -1 left, -2 centre, -3 right, else dots from the left edge
    int32_t rotation;   // PTR_RP_...
};

// Fills the payload of the job and writes every line of the log from "PrintBitmap Begin" to "PrintBitmap End", under
// the given tag. 0; OPOS_E_NOEXIST when the file is no picture; OPOS_E_ILLEGAL for a width below 1 that is not
// PTR_BM_ASIS, for a raster of more than 64 Mi dots or without memory, and for a null payload, for which there was none
// either. After a refusal the payload is of no use and no End line is written.
int32_t PrepareBitmap(const char* tag, const BitmapRequest& request, printer::BitmapDataStruct* out);

}  // namespace marbex::spooler
