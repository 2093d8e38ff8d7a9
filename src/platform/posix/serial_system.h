#pragma once

#include <memory>
#include <string>

#include "platform/registry.h"
#include "platform/serial.h"

namespace marbex::platform {

// The serial ports that a registry and the folder of device files tell of.
std::unique_ptr<SerialSystem> NewPosixSerial(const Registry& registry, std::string deviceFolder,
                                             std::string terminalClassFolder);

}  // namespace marbex::platform
