#pragma once

#include <memory>
#include <string>

#include "account/paper_account.h"
#include "station.h"
#include "tally.h"
#include "till_process.h"

namespace marbex::soak {

// One printer whose tills are killed in the middle, round after round: the next till has to find everything as if
// nothing had been.
class KillLane {
public:
    KillLane(int number, Cable cable, uint64_t seed, std::string folder, Tally& tally);
    void Run(uint32_t rounds);

private:
    bool Round(uint32_t number);
    bool KillSometime(TillProcess& till, const std::string& load);
    void LookForLeftovers(const std::string& round);
    long PrintNext(uint32_t roundNumber, bool net, const std::string& round);
    void Fail(const std::string& round, const std::string& what);

    Tally& tally_;
    const uint64_t seed_;
    Dice dice_;
    PaperAccount paper_;  // used under the printer's lock
    Station station_;
};

}  // namespace marbex::soak
