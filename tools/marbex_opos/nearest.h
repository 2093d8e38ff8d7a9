#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace marbex::tools {

// The name that was probably meant: the one that fewest letters away from what was typed, in any case, counting two
// exchanged neighbours once. None when every name is far off.
std::optional<std::string> Nearest(std::string_view typed, const std::vector<std::string_view>& names);

// "a, b, c"
std::string Joined(const std::vector<std::string>& names);

}  // namespace marbex::tools
