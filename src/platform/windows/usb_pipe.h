#pragma once

#include <memory>

#include "platform/usb.h"
#include "platform/windows/unique_handle.h"

namespace marbex::platform {

// A pipe over a file that was opened for overlapped transfers.
std::unique_ptr<UsbPipe> NewOverlappedPipe(UniqueHandle file);

}  // namespace marbex::platform
