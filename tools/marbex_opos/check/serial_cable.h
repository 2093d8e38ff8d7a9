#pragma once

#include <cstdint>
#include <memory>

#include "marbex_opos/check/cable.h"
#include "support/device_profile.h"

namespace marbex::tools {

// The serial port of a profile with its settings. Null when it cannot be opened; error is then the system's number.
std::unique_ptr<Cable> OpenSerialCable(const support::DeviceProfileStruct& profile, uint32_t& error);

}  // namespace marbex::tools
