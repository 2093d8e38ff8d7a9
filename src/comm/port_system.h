#pragma once

#include "platform/clock.h"
#include "platform/tcp.h"

namespace marbex::comm {

// What the ports take from the operating system; a test puts its own faults in.
struct PortSystem {
    platform::TcpSocketFactory newTcpSocket = platform::NewTcpSocket;
    platform::Clock* clock = &platform::SystemClock();
};

}  // namespace marbex::comm
