#pragma once

#include <memory>

#include "platform/code_page.h"

namespace marbex::platform {

// Over the C library's iconv, without transliteration.
std::unique_ptr<CharacterConverter> MakeIconvConverter(const char* iconvName);

}  // namespace marbex::platform
