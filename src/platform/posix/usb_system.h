#pragma once

#include <memory>
#include <string>

#include "platform/registry.h"
#include "platform/usb.h"

namespace marbex::platform {

// The USB printers that a registry tells of, else those of the kernel's class folder with nodes in deviceFolder.
std::unique_ptr<UsbSystem> NewPosixUsb(const Registry& registry, std::string classFolder, std::string deviceFolder);

}  // namespace marbex::platform
