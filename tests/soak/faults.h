#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

#include "receipt.h"
#include "virtual_printer/server.h"

namespace marbex::soak {

// Does things to a printer, one after the other, as dice say: most of them at a certain byte, some at a certain time.
class Faults {
public:
    // tell: called with what is done, on any thread, without the printer's lock or with it.
    // loses: the link can be lost; else power is cut instead.
    Faults(virtual_printer::PrinterServer& printer, uint64_t seed, bool loses,
           std::function<void(const std::string&)> tell);
    ~Faults();
    Faults(const Faults&) = delete;
    Faults& operator=(const Faults&) = delete;

    int Done() const { return done_; }

private:
    struct Fault {
        std::string name;
        std::function<void()> begins;
        std::function<void()> goesOn;  // after half of its time
        std::function<void()> ends;
        uint32_t milliseconds = 0;
    };

    void Run();
    Fault Roll();
    void AwaitByteOrTime(const Fault& fault);
    bool Sleep(std::chrono::milliseconds time);
    void Restore();

    virtual_printer::PrinterServer& printer_;
    Dice dice_;
    const bool loses_;
    const std::function<void(const std::string&)> tell_;
    std::atomic<int> done_{0};
    std::mutex mutex_;
    std::condition_variable changed_;
    bool ending_ = false;
    std::thread thread_;
};

}  // namespace marbex::soak
