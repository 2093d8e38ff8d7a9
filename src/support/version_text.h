#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace marbex::support {

// The value of ServiceObjectVersion for a FileVersion string: its decimal digits as one number, divided by 10 once when
// above 999, plus 1014000 (OPOS release 1.14). "0, 4, 7, 1" gives 1014471; text without digits 1014000.
int32_t ServiceObjectVersionOf(std::string_view fileVersion);

// prefix followed by the version: blanks skipped, commas turned into points, cut before the third comma.
std::string ServiceObjectDescriptionOf(std::string_view prefix, std::string_view fileVersion);

}  // namespace marbex::support
