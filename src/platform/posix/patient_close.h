#pragma once

#include <cstdint>

#include "platform/posix/unique_fd.h"

namespace marbex::platform {

// Closes a file whose driver may wait inside close, for output that the device does not take: it may wait so many
// milliseconds and is interrupted then. Always closes.
void CloseWithin(UniqueFd descriptor, uint32_t milliseconds);

}  // namespace marbex::platform
