#pragma once

// What the console says about its language and about what can be called.

#include <string>

#include "marbex_opos/console/statement.h"

namespace marbex::tools {

// Lines, each with its end.
std::string HelpText(const Help& help);

}  // namespace marbex::tools
