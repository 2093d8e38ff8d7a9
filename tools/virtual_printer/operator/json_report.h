#pragma once

#include <string>

#include "virtual_printer/happenings.h"

namespace marbex::virtual_printer {

// One thing that happened as one line of JSON, without a line feed: {"event": "...", ...}. Bytes are hexadecimal text.
std::string ToJson(const Happening& happening);

}  // namespace marbex::virtual_printer
