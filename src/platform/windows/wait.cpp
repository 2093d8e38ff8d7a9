// The wait functions.
//
// The system's own waits do the work. What is added here: they refuse the same object twice in every case, they never
// end before their time (the system counts in ticks of up to 16 ms and may round down), and a wait that messages end is
// ended by messages only.
//
// That last one looks into the queue itself, then sleeps until an object is signalled or something new has come to the
// queue. Nothing is lost in between: looking marks all that waits as seen, what comes after that wakes the sleeper.
// What wakes it need not be a message: one that was sent, not posted, is handled by the look itself. A quit message
// would wake it for ever, so it is set aside until the wait is over and is then left for the application's own loop.

#include <windows.h>

#include <algorithm>
#include <array>

#include "platform/deadline.h"
#include "platform/kernel.h"
#include "platform/windows/messages.h"
#include "platform/windows/native_object.h"

namespace marbex::platform {
namespace {

// The handles behind a caller's objects.
class Handles {
public:
    explicit Handles(std::span<WaitObject* const> objects)
    {
        if (objects.size() > kMaximumWaitObjects) return;
        for (const WaitObject* object : objects) {
            const HANDLE handle = object != nullptr ? HandleOf(object->Native()) : nullptr;
            const auto end = handles_.begin() + count_;
            if (handle == nullptr || std::find(handles_.begin(), end, handle) != end) return;
            handles_[count_++] = handle;
        }
        usable_ = true;
    }

    bool Usable() const { return usable_; }
    DWORD Count() const { return count_; }
    const HANDLE* Data() const { return handles_.data(); }

private:
    std::array<HANDLE, kMaximumWaitObjects> handles_;
    DWORD count_ = 0;
    bool usable_ = false;
};

// What a wait for count objects has answered.
WaitResult ResultOf(DWORD answer, DWORD count)
{
    // WAIT_OBJECT_0 is 0.
    if (answer < count) return {WaitStatus::kSignalled, answer};
    if (answer >= WAIT_ABANDONED_0 && answer - WAIT_ABANDONED_0 < count) {
        return {WaitStatus::kAbandoned, answer - WAIT_ABANDONED_0};
    }
    return {answer == WAIT_TIMEOUT ? WaitStatus::kTimedOut : WaitStatus::kFailed, 0};
}

WaitResult WaitFor(const Handles& handles, BOOL all, uint32_t timeout)
{
    const auto wait = [&](DWORD limit) {
        return ResultOf(WaitForMultipleObjects(handles.Count(), handles.Data(), all, limit), handles.Count());
    };
    if (timeout == 0 || timeout == kForever) return wait(timeout);
    const Deadline deadline(timeout);
    while (true) {
        const uint32_t remaining = deadline.Remaining();
        const WaitResult result = wait(remaining);
        if (result.status != WaitStatus::kTimedOut || remaining == 0) return result;
    }
}

}  // namespace

WaitResult WaitForAny(std::span<WaitObject* const> objects, uint32_t timeout)
{
    const Handles handles(objects);
    if (!handles.Usable() || objects.empty()) return {};
    return WaitFor(handles, FALSE, timeout);
}

WaitResult WaitForAll(std::span<WaitObject* const> objects, uint32_t timeout)
{
    const Handles handles(objects);
    if (!handles.Usable() || objects.empty()) return {};
    return WaitFor(handles, TRUE, timeout);
}

WaitResult WaitForAnyOrMessages(std::span<WaitObject* const> objects, uint32_t timeout)
{
    const Handles handles(objects);
    if (!handles.Usable()) return {};
    const Deadline deadline(timeout);
    QuitAside quit;
    while (true) {
        // Looking for messages handles those that were sent, and these may signal an object.
        const bool messageWaits = MessageWaits(quit);
        if (handles.Count() > 0) {
            const WaitResult result = WaitFor(handles, FALSE, 0);
            if (result.status != WaitStatus::kTimedOut) return result;
        }
        if (messageWaits) return {WaitStatus::kMessages, 0};
        const uint32_t remaining = deadline.Remaining();
        if (remaining == 0) return {WaitStatus::kTimedOut, 0};
        const DWORD answer = MsgWaitForMultipleObjectsEx(handles.Count(), handles.Data(), remaining, QS_ALLINPUT, 0);
        if (answer == WAIT_OBJECT_0 + handles.Count() || answer == WAIT_TIMEOUT) continue;
        return ResultOf(answer, handles.Count());
    }
}

}  // namespace marbex::platform
