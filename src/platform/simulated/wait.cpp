// The wait functions, and the lock that waits.

#include <algorithm>
#include <array>
#include <utility>

#include "platform/lock.h"
#include "platform/simulated/kernel_state.h"
#include "platform/simulated/machine/call.h"

namespace marbex::platform {
namespace {

using simulated::kNever;
using simulated::Moment;
using simulated::Processor;
using simulated::Task;

// Takes what the waiter wants, if it can be had now.
bool TryTake(Waiter& waiter)
{
    if (waiter.wanted == Wanted::kAny) {
        for (std::size_t i = 0; i < waiter.objects.size(); ++i) {
            if (!waiter.objects[i]->IsSignalledFor(waiter.task)) continue;
            const bool abandoned = waiter.objects[i]->Take(waiter.task);
            waiter.result = {abandoned ? WaitStatus::kAbandoned : WaitStatus::kSignalled, i};
            return true;
        }
        return false;
    }
    for (const NativeObject* object : waiter.objects) {
        if (!object->IsSignalledFor(waiter.task)) return false;
    }
    waiter.result = {WaitStatus::kSignalled, 0};
    for (std::size_t i = 0; i < waiter.objects.size(); ++i) {
        const bool abandoned = waiter.objects[i]->Take(waiter.task);
        if (abandoned && waiter.result.status == WaitStatus::kSignalled) waiter.result = {WaitStatus::kAbandoned, i};
    }
    return true;
}

bool HasMessages(Waiter& waiter)
{
    return waiter.forMessages && !QueueOf(waiter.task).messages.empty();
}

void SleepFor(Waiter& waiter, Moment until)
{
    MessageQueue& queue = QueueOf(waiter.task);
    for (NativeObject* object : waiter.objects)
        object->waiters.push_back(&waiter);
    if (waiter.forMessages) queue.sleeper = &waiter.task;
    while (!waiter.satisfied && !HasMessages(waiter) && Processor().Sleep(until, waiter)) {
    }
    queue.sleeper = nullptr;
    for (NativeObject* object : waiter.objects)
        std::erase(object->waiters, &waiter);
}

WaitResult WaitFor(std::span<NativeObject* const> objects, Wanted wanted, bool forMessages, uint32_t timeout)
{
    const simulated::Call call;
    Waiter waiter(objects, wanted, forMessages, Processor().Current());
    if (TryTake(waiter)) return waiter.result;
    if (timeout != 0 && !HasMessages(waiter)) {
        SleepFor(waiter, timeout == kForever ? kNever : Processor().Now() + simulated::Milliseconds(timeout));
        if (waiter.satisfied) return waiter.result;
    }
    return {HasMessages(waiter) ? WaitStatus::kMessages : WaitStatus::kTimedOut, 0};
}

// The states behind a caller's objects.
class NativeObjects {
public:
    explicit NativeObjects(std::span<WaitObject* const> objects)
    {
        if (objects.size() > kMaximumWaitObjects) return;
        for (const WaitObject* object : objects) {
            NativeObject* const native = object != nullptr ? object->Native() : nullptr;
            const auto end = natives_.begin() + count_;
            if (native == nullptr || std::find(natives_.begin(), end, native) != end) return;
            natives_[static_cast<std::size_t>(count_++)] = native;
        }
        usable_ = true;
    }

    bool Usable() const { return usable_; }
    std::span<NativeObject* const> All() const { return {natives_.data(), static_cast<std::size_t>(count_)}; }

private:
    std::array<NativeObject*, kMaximumWaitObjects> natives_;
    std::ptrdiff_t count_ = 0;
    bool usable_ = false;
};

}  // namespace

void Waiter::Tell(std::ostream& report) const
{
    const char* join = "";
    for (const NativeObject* object : objects) {
        report << join;
        object->Tell(report);
        join = wanted == Wanted::kAll ? " and " : " or ";
    }
    if (forMessages) report << join << "a message";
}

void Offer(NativeObject& object)
{
    const simulated::Apart apart;
    for (Waiter* waiter : object.waiters) {
        if (waiter->satisfied || !TryTake(*waiter)) continue;
        waiter->satisfied = true;
        Processor().Wake(waiter->task);
    }
}

WaitResult WaitForAny(std::span<WaitObject* const> objects, uint32_t timeout)
{
    const NativeObjects natives(objects);
    if (!natives.Usable() || objects.empty()) return {};
    return WaitFor(natives.All(), Wanted::kAny, false, timeout);
}

WaitResult WaitForAll(std::span<WaitObject* const> objects, uint32_t timeout)
{
    const NativeObjects natives(objects);
    if (!natives.Usable() || objects.empty()) return {};
    return WaitFor(natives.All(), Wanted::kAll, false, timeout);
}

WaitResult WaitForAnyOrMessages(std::span<WaitObject* const> objects, uint32_t timeout)
{
    const NativeObjects natives(objects);
    if (!natives.Usable()) return {};
    return WaitFor(natives.All(), Wanted::kAny, true, timeout);
}

// A thread that waits for a lock; lives on its stack.
struct LockWaiter final : simulated::Reason {
    LockWaiter(const NativeLock& taken, Task& waiting) : lock(taken), task(waiting) {}
    void Tell(std::ostream& report) const override
    {
        report << "a lock";
        if (const Task* holder = lock.Holder()) report << " of thread " << holder->id << " (" << holder->name << ')';
    }

    const NativeLock& lock;
    Task& task;
    LockWaiter* next = nullptr;
};

// Locks are taken outside of a run too, by nobody.
void NativeLock::lock()
{
    simulated::Scheduler& processor = Processor();
    if (!processor.IsRunning()) return;
    processor.Point();
    Task& self = processor.Current();
    while (holder_ != nullptr) {
        LockWaiter waiter(*this, self);
        waiter.next = std::exchange(waiters_, &waiter);
        processor.Sleep(kNever, waiter);
    }
    holder_ = &self;
}

void NativeLock::unlock()
{
    holder_ = nullptr;
    // All of them look again, and the dice say who comes first.
    for (const LockWaiter* waiter = std::exchange(waiters_, nullptr); waiter != nullptr; waiter = waiter->next)
        Processor().Wake(waiter->task);
    Processor().Point();
}

}  // namespace marbex::platform
