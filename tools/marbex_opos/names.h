#pragma once

// Comparing names as automation does: ASCII letters without regard to case.

#include <string_view>

namespace marbex::tools {

bool SameName(std::string_view left, std::string_view right);
bool StartsWithName(std::string_view text, std::string_view prefix);

}  // namespace marbex::tools
