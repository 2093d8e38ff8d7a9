#pragma once

#include <string>
#include <string_view>

namespace marbex::printer {

// Print data with every support::kNulMarker turned into one 0x00 byte, from left to right; what a replacement leaves is
// not looked at again. Returns text itself when there is no marker in it, else a view of storage.
std::string_view ReplaceNulMarkers(std::string_view text, std::string& storage);

}  // namespace marbex::printer
