#pragma once

#include <cstdint>

#include "run.h"

namespace marbex::tests {

// Every way to print, every fault, every behaviour of the application and every end, on each link.
uint64_t CasesOfMatrix();

// Runs one of them, from 0 on. The process must be fresh.
void RunCase(uint64_t number, bool aloud, void (*finished)(const Outcome&));

}  // namespace marbex::tests
