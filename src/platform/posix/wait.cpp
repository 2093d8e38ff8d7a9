// The wait functions. kernel_state.h tells how a wait and a signal meet.

#include <algorithm>
#include <array>

#include "platform/deadline.h"
#include "platform/posix/kernel_state.h"

namespace marbex::platform {
namespace {

// Takes what the waiter wants, if it can be had now.
bool TryTake(Waiter& waiter) MARBEX_REQUIRES(waitLock)
{
    if (waiter.wanted == Wanted::kAny) {
        for (std::size_t i = 0; i < waiter.objects.size(); ++i) {
            NativeObject& object = *waiter.objects[i];
            if (!object.IsSignalledFor(waiter.thread)) continue;
            const bool abandoned = object.Take(waiter.thread);
            waiter.result = {abandoned ? WaitStatus::kAbandoned : WaitStatus::kSignalled, i};
            return true;
        }
        return false;
    }

    for (const NativeObject* object : waiter.objects) {
        if (!object->IsSignalledFor(waiter.thread)) return false;
    }
    waiter.result = {WaitStatus::kSignalled, 0};
    for (std::size_t i = 0; i < waiter.objects.size(); ++i) {
        const bool abandoned = waiter.objects[i]->Take(waiter.thread);
        if (abandoned && waiter.result.status == WaitStatus::kSignalled) waiter.result = {WaitStatus::kAbandoned, i};
    }
    return true;
}

bool HasMessages(const ThreadState& thread) MARBEX_REQUIRES(waitLock)
{
    return !thread.queue->messages.empty();
}

// Sleeps until the waiter is satisfied, the moment comes or, when asked for, a message does.
void Sleep(Waiter& waiter, bool forMessages, const Deadline& deadline) MARBEX_REQUIRES(waitLock)
{
    ThreadState& thread = waiter.thread;
    for (NativeObject* object : waiter.objects)
        object->waiters.push_back(&waiter);
    if (forMessages) thread.queue->sleeper = &thread;

    while (!waiter.satisfied && !(forMessages && HasMessages(thread))) {
        if (deadline.Never()) {
            thread.wakeUp.Wait(waitLock);
        } else if (!thread.wakeUp.WaitUntil(waitLock, deadline.When())) {
            break;
        }
    }

    if (forMessages) thread.queue->sleeper = nullptr;
    for (NativeObject* object : waiter.objects)
        std::erase(object->waiters, &waiter);
}

WaitResult WaitFor(std::span<NativeObject* const> objects, Wanted wanted, bool forMessages, uint32_t timeout)
{
    ThreadState& thread = CurrentThread();
    Waiter waiter{objects, wanted, thread, false, {}};

    const LockHold hold(waitLock);
    if (TryTake(waiter)) return waiter.result;
    if (timeout != 0 && !(forMessages && HasMessages(thread))) {
        Sleep(waiter, forMessages, Deadline(timeout));
        if (waiter.satisfied) return waiter.result;
    }
    return {forMessages && HasMessages(thread) ? WaitStatus::kMessages : WaitStatus::kTimedOut, 0};
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

void Offer(NativeObject& object)
{
    for (Waiter* waiter : object.waiters) {
        if (waiter->satisfied || !TryTake(*waiter)) continue;
        waiter->satisfied = true;
        waiter->thread.wakeUp.NotifyOne();
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

}  // namespace marbex::platform
