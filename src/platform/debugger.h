#pragma once

#include <string_view>

namespace marbex::platform {

// The operating system's side of WriteDebugOutput (files.h).
void WriteToDebugger(std::string_view text);

}  // namespace marbex::platform
