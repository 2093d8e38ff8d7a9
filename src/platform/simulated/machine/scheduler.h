#pragma once

// The one processor of the simulated computer, its threads and its time.
//
// Threads run one at a time. At every call of the platform layer (Point) the dice say whether another one goes on, so a
// seed and the code decide the whole order of a run. Time is virtual: a call takes a microsecond, and when nobody can
// go on time jumps to the next moment that somebody waits for. When there is none either, nobody can ever go on: the
// run has failed, and the report says who waits for whom.
//
// What the machine itself does at a moment (a byte that arrives, a cable that is plugged in again) runs between two
// steps of the threads, on whatever stack is there, and never waits.

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "platform/simulated/machine/fibre.h"
#include "platform/simulated/machine/random.h"

namespace marbex::platform {
struct NativeObject;
struct MessageQueue;
}  // namespace marbex::platform

namespace marbex::simulated {

using Moment = uint64_t;  // microseconds since the machine was switched on
inline constexpr Moment kNever = UINT64_MAX;
constexpr Moment Milliseconds(uint64_t count)
{
    return count * 1000;
}

// Why a thread does not go on, for the report.
class Reason {
public:
    virtual void Tell(std::ostream& report) const = 0;

protected:
    ~Reason() = default;
};

// One thread.
struct Task {
    enum class State { kReady, kWaiting, kEnded };

    uint64_t id = 0;
    std::string name;
    State state = State::kReady;
    Moment wakeAt = kNever;
    bool woken = false;
    const Reason* reason = nullptr;
    std::unique_ptr<Fibre> fibre;
    std::function<void()> body;
    std::vector<platform::NativeObject*> owned;  // mutexes
    std::shared_ptr<platform::MessageQueue> queue;
    int apart = 0;  // not 0: it does what is not the driver's own (call.h)
};

// How wildly a run goes.
struct Pace {
    uint32_t switchOneIn = 8;      // a call of the platform layer at which another thread may go on
    uint32_t stallOneIn = 0;       // one at which the thread is held up for a while, as on a busy till
    uint32_t longestStall = 1000;  // milliseconds
    uint64_t mostPoints = 20'000'000;
};

class Scheduler {
public:
    // Told once why the run cannot go on; does not return.
    using Failed = std::function<void(const std::string& why)>;

    // Runs first as the first thread until it returns. Threads that it leaves behind never run again.
    void Run(uint64_t seed, const Pace& pace, Failed failed, const std::function<void()>& first);
    bool IsRunning() const { return current_ != nullptr; }
    bool IsActing() const { return acting_; }  // the machine itself does something

    // A call of the platform layer. Nothing happens outside of Run.
    void Point();
    // Puts the running thread to sleep until it is woken or the moment comes; false when it came.
    bool Sleep(Moment until, const Reason& reason);
    void Wake(Task& task);

    Task& Start(std::string name, std::function<void()> body);
    [[noreturn]] void EndCurrent();  // the running thread's state is cleared away by then
    Task& Current() { return *current_; }
    std::size_t LiveThreads() const;

    Moment Now() const { return now_; }
    Moment Stalled() const { return stalled_; }  // how long threads were held up, all together
    uint64_t Points() const { return points_; }
    // At that moment, or at once when it has passed; those of one moment in the order they were asked for. A number by
    // which it can be called off.
    uint64_t At(Moment moment, std::function<void()> action);
    void CallOff(uint64_t number);

    std::string Report() const;  // who waits for whom
    [[noreturn]] void Fail(const std::string& why);

private:
    static void RunBody();
    void Advance(Moment to);
    void GoOn();
    void SwitchTo(Task& next);
    Task* Choose();
    void FreeEnded();

    Random random_{0};
    Pace pace_;
    Failed failed_;
    Task* current_ = nullptr;
    std::vector<std::unique_ptr<Task>> tasks_;
    std::vector<Task*> ready_;  // scratch of Choose
    Moment now_ = 0;
    Moment nextDue_ = kNever;  // not later than the first moment that anything waits for
    Moment stalled_ = 0;
    uint64_t points_ = 0;
    uint64_t lastTask_ = 0;
    uint64_t lastAction_ = 0;
    bool acting_ = false;
    std::map<std::pair<Moment, uint64_t>, std::function<void()>> actions_;
};

Scheduler& Processor();

// Where threads wait for something that has no name: a byte, a lock.
class WaitPlace final : public Reason {
public:
    explicit WaitPlace(std::string what) : what_(std::move(what)) {}

    bool Wait(Moment until);  // false when the moment came; whoever is woken looks again
    void WakeAll();
    void Tell(std::ostream& report) const override { report << what_; }

private:
    std::string what_;
    std::vector<Task*> waiting_;
};

}  // namespace marbex::simulated
