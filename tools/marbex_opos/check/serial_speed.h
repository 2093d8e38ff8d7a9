#pragma once

#include <cstdint>
#include <optional>

#include "support/device_profile.h"

namespace marbex::tools {

// The speed, in baud, at which a printer on the serial port of the profile answers, other than the profile's own. Opens
// the port anew for each; half a second a speed at most.
std::optional<uint32_t> FindSpeed(const support::DeviceProfileStruct& profile);

}  // namespace marbex::tools
