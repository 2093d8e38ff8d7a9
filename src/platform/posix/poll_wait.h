#pragma once

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <climits>

#include "platform/deadline.h"

namespace marbex::platform {

enum class PollResult { kReady, kTimedOut, kFailed };

// Waits for events of one descriptor until the deadline; a hang-up or error of the descriptor is ready too, for the
// next transfer tells which. Signals do not stretch the wait.
inline PollResult PollUntil(int descriptor, short events, const Deadline& deadline)
{
    for (;;) {
        pollfd item{descriptor, events, 0};
        const int found = poll(&item, 1, static_cast<int>(std::min<uint32_t>(deadline.Remaining(), INT_MAX)));
        if (found > 0) return PollResult::kReady;
        if (found == 0) return PollResult::kTimedOut;
        if (errno != EINTR) return PollResult::kFailed;
    }
}

// Whether the other side is gone, or the device.
inline bool HasHungUp(int descriptor)
{
    pollfd item{descriptor, 0, 0};
    return poll(&item, 1, 0) > 0 && (item.revents & (POLLHUP | POLLERR)) != 0;
}

}  // namespace marbex::platform
