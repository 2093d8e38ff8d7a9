#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "platform/simulated/machine/cable.h"
#include "printer_end.h"
#include "till.h"

namespace marbex::tests {

// What a run came to.
struct Outcome {
    bool good = false;
    uint64_t fingerprint = 0;  // of everything that happened
    uint64_t prints = 0;       // calls that print
    uint64_t points = 0;       // calls of the platform layer
    uint64_t mishaps = 0;      // things that could have failed
};

// By their numbers in a profile.
enum class Link : uint8_t { kSerial, kTcp, kUsb };

// The world a run begins with; times in milliseconds.
struct Setting {
    std::string name;  // of the run, for complaints
    std::string model = "TALIS ETHERNET";
    Link link = Link::kTcp;
    bool confirms = false;
    uint32_t baudRate = 115200;
    uint32_t receiveTimeout = 500;
    uint32_t sendTimeout = 500;
    uint32_t logEnabled = 0;
    uint32_t settings = 0;
    bool toFile = false;            // events go to a file (OpenService_NET)
    simulated::Moment latency = 0;  // of the cable, microseconds
    simulated::Pace pace;
    uint64_t cableDice = 1;
    uint64_t processorDice = 1;
};

// What there is in a run.
struct World {
    Till& till;
    Story& story;
    Account& account;
    simulated::Cable& cable;
    PrinterEnd& printer;
    Link link;
};
using Play = std::function<void(const World&)>;

// Runs play, which leaves the service closed, in this process, which must be fresh; complaints go to standard output,
// with the whole story when aloud. finished is told the outcome, also of a run that cannot go on and does not return.
void RunSetting(const Setting& setting, bool aloud, void (*finished)(const Outcome&), const Play& play);

// The setting and the play are as the dice of that seed say.
void RunSeed(uint64_t seed, bool aloud, void (*finished)(const Outcome&));

// Two threads that wait for each other's mutex: the report goes to standard output.
[[noreturn]] void RunDeadlock();

// Makes what every run needs and no run changes.
void WarmUp();

}  // namespace marbex::tests
