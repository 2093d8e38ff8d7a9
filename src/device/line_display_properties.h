#pragma once

#include <cstdint>
#include <optional>

#include "device/model_description.h"

namespace marbex::device {

// Whether an index belongs to the line display that three models carry; the other models refuse it.
bool IsDisplayProperty(int32_t index);

// The value of a display property that never changes; none for those that the displays do not have.
std::optional<int32_t> DisplayConstant(int32_t index, const DisplayDescription& display);

}  // namespace marbex::device
