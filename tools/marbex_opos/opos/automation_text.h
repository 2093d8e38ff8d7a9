#pragma once

// Result codes of automation in words.

#include <string>

#include "platform/automation.h"

namespace marbex::tools {

std::string Described(HRESULT result);  // "type mismatch (0x80020005)"

}  // namespace marbex::tools
