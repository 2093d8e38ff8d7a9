#pragma once

#include <poll.h>

#include <cerrno>

#include "platform/transfer_limit.h"

namespace marbex::platform {

enum class PollResult { kReady, kTimedOut, kFailed };

// Waits for events of one descriptor until the limit; a hang-up or error of the descriptor is ready too, for the
// next transfer tells which. Signals do not stretch the wait.
inline PollResult PollUntil(int descriptor, short events, const TransferLimit& limit)
{
    for (;;) {
        const uint32_t slice = limit.Slice();
        pollfd item{descriptor, events, 0};
        const int found = poll(&item, 1, static_cast<int>(slice));
        if (found > 0) return PollResult::kReady;
        if (found == 0 && slice == 0) return PollResult::kTimedOut;
        if (found < 0 && errno != EINTR) return PollResult::kFailed;
    }
}

// Whether the other side is gone, or the device.
inline bool HasHungUp(int descriptor)
{
    pollfd item{descriptor, 0, 0};
    return poll(&item, 1, 0) > 0 && (item.revents & (POLLHUP | POLLERR)) != 0;
}

}  // namespace marbex::platform
