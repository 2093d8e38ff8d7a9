#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "marbex_opos/check/cable.h"

namespace marbex::tools {

// What the printer answers to GS I, in one byte or two; none when it does not answer in time.
std::optional<uint16_t> AskIdentifier(Cable& cable, uint32_t milliseconds);

// The models that have this identifier, in the order of the model table.
std::vector<std::string> ModelsOf(uint16_t identifier);

}  // namespace marbex::tools
