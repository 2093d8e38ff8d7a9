// What the waits have in common on every operating system: limits that are kept over many waits, and messages that run
// while a thread waits.

#include "platform/kernel.h"

#include "platform/deadline.h"
#include "platform/window.h"

namespace marbex::platform {

WaitResult WaitForOne(WaitObject& object, uint32_t timeout)
{
    WaitObject* const one[] = {&object};
    return WaitForAny(one, timeout);
}

WaitResult WaitForAnyRunningMessages(std::span<WaitObject* const> objects, uint32_t timeout)
{
    const Deadline deadline(timeout);
    while (true) {
        const WaitResult result = WaitForAnyOrMessages(objects, deadline.Remaining());
        if (result.status != WaitStatus::kMessages) return result;
        RunOneMessage();
        // Messages that never cease to come must not keep the wait from its end.
        if (deadline.Remaining() == 0) {
            return objects.empty() ? WaitResult{WaitStatus::kTimedOut} : WaitForAny(objects, 0);
        }
    }
}

WaitResult WaitForOneRunningMessages(WaitObject& object, uint32_t timeout)
{
    WaitObject* const one[] = {&object};
    return WaitForAnyRunningMessages(one, timeout);
}

void Mutex::Acquire() MARBEX_NO_THREAD_SAFETY_ANALYSIS
{
    WaitForOne(*this, kForever);
}

bool Mutex::AcquireWithin(uint32_t timeout) MARBEX_NO_THREAD_SAFETY_ANALYSIS
{
    return WaitForOne(*this, timeout).Obtained();
}

void Mutex::AcquireRunningMessages() MARBEX_NO_THREAD_SAFETY_ANALYSIS
{
    WaitForOneRunningMessages(*this, kForever);
}

}  // namespace marbex::platform
