#include "platform/simulated/machine/scheduler.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "platform/simulated/machine/call.h"

namespace marbex::simulated {
namespace {

// A run goes through many lengths of a stall: half of them are shorter than the root of the longest.
Moment StallOf(Random& random, uint32_t longestMilliseconds)
{
    uint64_t longest = longestMilliseconds;
    while (longest > 1 && random.OneIn(2))
        longest /= 3;
    return Milliseconds(1 + random.Below(longest));
}

class Busy final : public Reason {
public:
    void Tell(std::ostream& report) const override { report << "the processor, which is busy elsewhere"; }
};

}  // namespace

void Scheduler::Run(uint64_t seed, const Pace& pace, Failed failed, const std::function<void()>& first)
{
    random_ = Random(seed);
    pace_ = pace;
    failed_ = std::move(failed);
    auto task = std::make_unique<Task>();
    task->id = ++lastTask_;
    task->name = "till";
    task->fibre = std::make_unique<Fibre>();
    current_ = task.get();
    tasks_.push_back(std::move(task));
    first();
    current_ = nullptr;
}

void Scheduler::Point()
{
    if (current_ == nullptr || acting_) return;
    const Apart apart;
    if (++points_ > pace_.mostPoints) Fail("the run does not end");
    Advance(now_ + 1);
    if (random_.OneIn(pace_.stallOneIn)) {
        const Moment stall = StallOf(random_, pace_.longestStall);
        stalled_ += stall;
        Sleep(now_ + stall, Busy());
    } else if (random_.OneIn(pace_.switchOneIn)) {
        SwitchTo(*Choose());
    }
}

bool Scheduler::Sleep(Moment until, const Reason& reason)
{
    const Apart apart;
    Task& self = *current_;
    self.woken = false;
    self.reason = &reason;
    self.wakeAt = until;
    self.state = Task::State::kWaiting;
    nextDue_ = std::min(nextDue_, until);
    GoOn();
    self.reason = nullptr;
    self.wakeAt = kNever;
    return self.woken;
}

void Scheduler::Wake(Task& task)
{
    if (task.state != Task::State::kWaiting) return;
    task.woken = true;
    task.state = Task::State::kReady;
}

Task& Scheduler::Start(std::string name, std::function<void()> body)
{
    auto task = std::make_unique<Task>();
    task->id = ++lastTask_;
    task->name = std::move(name);
    task->body = std::move(body);
    task->fibre = std::make_unique<Fibre>(RunBody);
    tasks_.push_back(std::move(task));
    return *tasks_.back();
}

void Scheduler::RunBody()
{
    Fibre::Begun();
    Processor().current_->body();
    Processor().EndCurrent();
}

void Scheduler::EndCurrent()
{
    ++current_->apart;
    current_->state = Task::State::kEnded;
    current_->body = nullptr;
    GoOn();
    std::abort();  // nobody switches to a thread that has ended
}

std::size_t Scheduler::LiveThreads() const
{
    return static_cast<std::size_t>(std::count_if(tasks_.begin(), tasks_.end(),
                                                  [](const auto& task) { return task->state != Task::State::kEnded; }));
}

uint64_t Scheduler::At(Moment moment, std::function<void()> action)
{
    actions_.emplace(std::pair(moment, ++lastAction_), std::move(action));
    nextDue_ = std::min(nextDue_, moment);
    return lastAction_;
}

void Scheduler::CallOff(uint64_t number)
{
    const auto found =
        std::find_if(actions_.begin(), actions_.end(), [=](const auto& entry) { return entry.first.second == number; });
    if (found != actions_.end()) actions_.erase(found);
}

// Lets time pass: what is due by then happens, and who waits for no more than that can go on.
void Scheduler::Advance(Moment to)
{
    now_ = std::max(now_, to);
    if (now_ < nextDue_) return;
    acting_ = true;
    while (!actions_.empty() && actions_.begin()->first.first <= now_) {
        const auto action = std::move(actions_.begin()->second);
        actions_.erase(actions_.begin());
        action();
    }
    acting_ = false;
    nextDue_ = actions_.empty() ? kNever : actions_.begin()->first.first;
    for (const auto& task : tasks_) {
        if (task->state != Task::State::kWaiting) continue;
        if (task->wakeAt <= now_) {
            task->state = Task::State::kReady;
        } else {
            nextDue_ = std::min(nextDue_, task->wakeAt);
        }
    }
}

Task* Scheduler::Choose()
{
    ready_.clear();
    for (const auto& task : tasks_) {
        if (task->state == Task::State::kReady) ready_.push_back(task.get());
    }
    return ready_.empty() ? nullptr : ready_[random_.Below(ready_.size())];
}

// The running thread cannot: somebody else does, after so much time as it takes.
void Scheduler::GoOn()
{
    Task* next = Choose();
    while (next == nullptr) {
        if (nextDue_ == kNever) Fail("nobody can go on");
        Advance(nextDue_);
        next = Choose();
    }
    SwitchTo(*next);
}

void Scheduler::SwitchTo(Task& next)
{
    Task& self = *current_;
    if (&next == &self) return;
    current_ = &next;
    self.fibre->SwitchTo(*next.fibre);
    FreeEnded();
}

// Not by the ended thread itself, whose stack it would be standing on.
void Scheduler::FreeEnded()
{
    std::erase_if(tasks_,
                  [this](const auto& task) { return task->state == Task::State::kEnded && task.get() != current_; });
}

void Scheduler::Fail(const std::string& why)
{
    failed_(why + '\n' + Report());
    std::abort();
}

Scheduler& Processor()
{
    static auto& processor = *new Scheduler;
    return processor;
}

bool WaitPlace::Wait(Moment until)
{
    Scheduler& processor = Processor();
    Task* const self = &processor.Current();
    waiting_.push_back(self);
    const bool woken = processor.Sleep(until, *this);
    std::erase(waiting_, self);
    return woken;
}

void WaitPlace::WakeAll()
{
    for (Task* const task : waiting_)
        Processor().Wake(*task);
}

}  // namespace marbex::simulated
