#pragma once

#include <memory>
#include <string>

#include "platform/serial.h"

namespace marbex::platform {

// Opens a terminal for this process alone. Null when that fails; error is then the system's number.
std::unique_ptr<SerialLine> OpenTerminal(const std::string& path, uint32_t& error);

}  // namespace marbex::platform
