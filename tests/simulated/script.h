#pragma once

// What the application, its operator and the world around them do in a run, as the dice say.

#include <memory>

#include "platform/kernel.h"
#include "platform/simulated/machine/cable.h"
#include "platform/simulated/machine/random.h"
#include "run.h"

namespace marbex::tests {

class Script {
public:
    Script(uint64_t seed, const World& world);
    ~Script();

    void GetReady();  // open, claimed and enabled, as far as the world lets it
    void Run();       // receipts, faults, everything at once
    void Settle();    // all is put right; what can still be printed is

private:
    // How the application behaves in this run.
    struct Temper {
        uint32_t nestsOneIn;    // events in whose handler it calls the service
        uint32_t fiddlesOneIn;  // receipts before which it does something else
        uint32_t closesOneIn;   // of these, how often it closes or drops the service
        int asyncPercent;
        int retryPercent;  // of the error events
        int clearPercent;
    };

    void PlanFaults();
    void Happen();  // one thing at the printer
    void CyclePower(simulated::Moment off);
    void PowerOn();  // if it is off
    void Receipt();
    void PrintSome();
    void Fiddle();
    void Handle(const TillEvent& event, int32_t* response);
    void Nest();
    void RunMessages(uint32_t milliseconds);
    void AwaitCompletions(uint32_t milliseconds);
    void AwaitRest();  // nothing runs, nothing is pending
    void AwaitStatus();
    bool StatusIsRight();  // of a printer that is well
    void StartWorker();
    void Work(uint64_t seed);
    void CloseOnWorker();
    void JoinWorker();

    simulated::Random dice_;
    Till& till_;
    Story& story_;
    Account& account_;
    simulated::Cable& cable_;
    PrinterEnd& printer_;
    const Link link_;
    Temper temper_{};
    bool settling_ = false;
    int nested_ = 0;
    std::unique_ptr<platform::Thread> worker_;
    bool workerStops_ = false;
};

}  // namespace marbex::tests
