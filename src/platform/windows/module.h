#pragma once

#include <windows.h>

namespace marbex::platform {

// The library or program that this code is linked into.
HMODULE ThisModule();

}  // namespace marbex::platform
