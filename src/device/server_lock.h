#pragma once

#include "device/process_state.h"

namespace marbex::device {

// Keeps the server in the process while it exists: the first member of what must not lose its code under it.
class ServerLock {
public:
    ServerLock() { ++TheProcess().ServerLocks; }
    ~ServerLock() { --TheProcess().ServerLocks; }
    ServerLock(const ServerLock&) = delete;
    ServerLock& operator=(const ServerLock&) = delete;
};

}  // namespace marbex::device
