#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/serial.h"

namespace marbex::platform {

// The line of a device path such as "\\.\COM3", shared with nobody. Null when it cannot be opened; error then says why.
std::unique_ptr<SerialLine> OpenSerialLine(const std::string& path, uint32_t& error);

}  // namespace marbex::platform
