#pragma once

// A call of the platform layer while it lasts, and the one thing in a run that fails on demand: a call of the platform
// layer that can fail, or an allocation of the code that runs on the machine.

#include <cstdint>
#include <new>
#include <optional>
#include <string>

#include "platform/simulated/machine/scheduler.h"

namespace marbex::simulated {

struct Mishap {
    enum class Kind { kNone, kCall, kAllocation };
    Kind kind = Kind::kNone;
    uint64_t when = 0;     // which one fails, from 1 on
    uint64_t counted = 0;  // so far
    std::string what;      // has failed; empty until then
};
Mishap& TheMishap();

// Whether this call of the platform layer is the one that fails.
bool CallFails(const char* what);

// For operator new of the program. Only the driver's allocations count: not the machine's, nor those of an application.
bool AllocationFails();

// The running thread does what is not the driver's own.
class Apart {
public:
    explicit Apart(int change = 1) : task_(Processor().IsRunning() ? &Processor().Current() : nullptr), change_(change)
    {
        if (task_ != nullptr) task_->apart += change_;
    }
    ~Apart()
    {
        if (task_ != nullptr) task_->apart -= change_;
    }
    Apart(const Apart&) = delete;
    Apart& operator=(const Apart&) = delete;

private:
    Task* const task_;
    const int change_;
};

// Code of the driver that runs within something apart: a service that is called, a window procedure.
class Within : public Apart {
public:
    Within() : Apart(Processor().IsRunning() ? -Processor().Current().apart : 0) {}
};

// The making of a kernel object, for which there may be no memory.
class Made {
public:
    Made()
    {
        if (AllocationFails()) throw std::bad_alloc();
        apart_.emplace();
    }

private:
    std::optional<Apart> apart_;
};

class Call {
public:
    Call() { Processor().Point(); }
    // One that can fail.
    explicit Call(const char* what) : Call() { fails_ = CallFails(what); }
    bool Fails() const { return fails_; }

private:
    const Apart apart_;
    bool fails_ = false;
};

}  // namespace marbex::simulated
