#pragma once

#include <cstdint>

#include "platform/clock.h"

namespace marbex::device {

// Opens the cash drawer of the PC-based models, which hangs on an output of the board's Super I/O chip: LpcSio.dll, a
// library of the board, reads and writes the chip's configuration registers. Blocks for both times (ms) and runs no
// messages. False, with a line under the given tag, when the library or one of its functions is missing.
bool OpenSuperIoDrawer(const char* tag, platform::Clock& clock, int32_t onTime, int32_t offTime);

}  // namespace marbex::device
