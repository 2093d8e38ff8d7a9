#pragma once

#include <cstdint>

namespace marbex::tests {

// What a run came to.
struct Outcome {
    bool good = false;
    uint64_t fingerprint = 0;  // of everything that happened
    uint64_t prints = 0;       // calls that print
    uint64_t points = 0;       // calls of the platform layer
};

// Runs one seed in this process, which must be fresh; complaints go to standard output, with the whole story when
// aloud. finished is told the outcome, also of a run that cannot go on and does not return.
void RunSeed(uint64_t seed, bool aloud, void (*finished)(const Outcome&));

// Two threads that wait for each other's mutex: the report goes to standard output.
[[noreturn]] void RunDeadlock();

// Makes what every run needs and no run changes.
void WarmUp();

}  // namespace marbex::tests
