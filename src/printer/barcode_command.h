#pragma once

#include <string>

#include "printer/job_payloads.h"

namespace marbex::printer {

// The commands that make the printer draw a barcode, in one piece, with the alignment back to left at the end. Numbers
// are sent as their low bytes, unchecked.
std::string BarcodeCommand(const BarcodeDataStruct& barcode);

}  // namespace marbex::printer
