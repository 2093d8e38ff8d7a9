#pragma once

// Result codes in words.

#include <cstdint>
#include <string>

namespace marbex::tools {

// "106 (OPOS_E_ILLEGAL)", "0 (OPOS_SUCCESS)", with an extended code "114 (OPOS_E_EXTENDED), 201
// (OPOS_EPTR_COVER_OPEN)".
std::string ResultText(int32_t code, int32_t extended = 0);

}  // namespace marbex::tools
