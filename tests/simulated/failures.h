#pragma once

#include <cstdint>

#include "platform/simulated/machine/call.h"
#include "run.h"

namespace marbex::tests {

// Runs a short day of a till in which one thing fails: the when-th call of the platform layer that can, or allocation.
// Nothing fails when there are not so many. The process must be fresh.
void RunFailure(Link link, simulated::Mishap::Kind kind, uint64_t when, bool aloud, void (*finished)(const Outcome&));

}  // namespace marbex::tests
