#include "faults.h"

#include <memory>
#include <stdexcept>

namespace marbex::soak {
namespace {

using std::chrono::milliseconds;
using virtual_printer::PaperState;

constexpr uint32_t kMostBytesBetween = 1800;
constexpr uint32_t kMostMsBetween = 6000;

}  // namespace

Faults::Faults(virtual_printer::PrinterServer& printer, uint64_t seed, bool loses,
               std::function<void(const std::string&)> tell)
    : printer_(printer), dice_(seed), loses_(loses), tell_(std::move(tell)), thread_([this] { Run(); })
{
}

Faults::~Faults()
{
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
    }
    changed_.notify_all();
    thread_.join();
    Restore();
}

void Faults::Run()
{
    for (;;) {
        const Fault fault = Roll();
        AwaitByteOrTime(fault);
        {
            const std::lock_guard lock(mutex_);
            if (ending_) {
                return;
            }
        }
        ++done_;
        const milliseconds half(fault.milliseconds / 2);
        bool goesOn = Sleep(half);
        if (goesOn && fault.goesOn) {
            fault.goesOn();
        }
        goesOn = goesOn && Sleep(half);
        if (fault.ends) {
            fault.ends();
        }
        if (!goesOn) {
            return;
        }
    }
}

// Begins the fault before a byte that the dice choose, or when none comes for a while.
void Faults::AwaitByteOrTime(const Fault& fault)
{
    auto once = std::make_shared<std::atomic<bool>>(false);
    const auto begin = [this, once, begins = fault.begins, name = fault.name] {
        if (!once->exchange(true)) {
            tell_(name);
            begins();
            changed_.notify_all();
        }
    };
    uint64_t received = 0;
    printer_.With([&received](virtual_printer::VirtualPrinter& printer) { received = printer.Received(); });
    try {
        printer_.At(received + dice_.Below(kMostBytesBetween), begin);
    } catch (const std::out_of_range&) {
        begin();
    }
    std::unique_lock lock(mutex_);
    const auto limit = milliseconds(100 + dice_.Below(kMostMsBetween));
    changed_.wait_for(lock, limit, [&] { return ending_ || once->load(); });
    const bool ending = ending_;
    lock.unlock();
    if (ending) {
        once->store(true);  // whatever its byte, it does not begin any more
    } else {
        begin();
    }
}

bool Faults::Sleep(milliseconds time)
{
    std::unique_lock lock(mutex_);
    return !changed_.wait_for(lock, time, [this] { return ending_; });
}

void Faults::Restore()
{
    printer_.SetPower(true);
    printer_.Refuse(false);
    printer_.SetCover(false);
    printer_.SetPaper(PaperState::kOk);
    printer_.SetMute(false);
    printer_.HalveAnswers(0);
    printer_.SetSpeed(0);
    printer_.Slow(0);
}

Faults::Fault Faults::Roll()
{
    const uint32_t time = dice_.MostlyShort(50, 3000);
    const std::string ms = " " + std::to_string(time) + " ms";
    const uint32_t kind = dice_.Below(100);
    if (kind < 36 && loses_) {
        if (kind < 16) {
            return {"drop", [this] { printer_.Drop(); }, {}, {}, 0};
        }
        return {"refuse" + ms, [this, time] { printer_.RefuseFor(milliseconds(time)); }, {}, {}, time};
    }
    if (kind < 47) {
        return {"power off" + ms, [this, time] { printer_.PowerCycle(milliseconds(time)); }, {}, {}, time};
    }
    if (kind < 52) {
        return {"slow paper, power off" + ms, [this] { printer_.SetSpeed(60); },
                [this, time] { printer_.PowerCycle(milliseconds(time)); }, [this] { printer_.SetSpeed(0); }, 2 * time};
    }
    if (kind < 63) {
        return {"cover" + ms, [this] { printer_.SetCover(true); }, {}, [this] { printer_.SetCover(false); }, time};
    }
    if (kind < 72) {
        return {"no paper" + ms,
                [this] { printer_.SetPaper(PaperState::kOut); },
                {},
                [this] { printer_.SetPaper(PaperState::kOk); },
                time};
    }
    if (kind < 80) {
        return {"silence" + ms, [this] { printer_.SetMute(true); }, {}, [this] { printer_.SetMute(false); }, time};
    }
    const uint32_t pace = 100 + dice_.Below(3000);
    const std::string bytes = " " + std::to_string(pace) + " bytes/s";
    if (kind < 83 && loses_) {
        return {"slow link" + bytes + ", drop" + ms, [this, pace] { printer_.Slow(pace); }, [this] { printer_.Drop(); },
                [this] { printer_.Slow(0); }, 2 * time};
    }
    if (kind < 86) {
        return {
            "slow link" + bytes + ms, [this, pace] { printer_.Slow(pace); }, {}, [this] { printer_.Slow(0); }, time};
    }
    if (kind < 93) {
        const uint32_t answers = 1 + dice_.Below(3);
        return {
            "half replies " + std::to_string(answers), [this, answers] { printer_.HalveAnswers(answers); }, {}, {}, 0};
    }
    virtual_printer::Bytes rubbish(1 + dice_.Below(64));
    for (uint8_t& byte : rubbish) {
        // Not the beginning of a status answer, nor what holds a line: nobody could tell those from the printer's own.
        do {
            byte = static_cast<uint8_t>(dice_.Below(256));
        } while (byte == 0x10 || byte == 0x11 || byte == 0x13);
    }
    return {"rubbish", [this, rubbish] { printer_.Say(rubbish); }, {}, {}, 0};
}

}  // namespace marbex::soak
