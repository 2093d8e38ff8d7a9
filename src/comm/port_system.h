#pragma once

#include "platform/clock.h"
#include "platform/serial.h"
#include "platform/tcp.h"
#include "platform/usb.h"

namespace marbex::comm {

// What the ports take from the operating system; a test puts its own faults in.
struct PortSystem {
    platform::TcpSocketFactory newTcpSocket = platform::NewTcpSocket;
    platform::SerialSystem* serial = &platform::SystemSerial();
    platform::UsbSystem* usb = &platform::SystemUsb();
    platform::Clock* clock = &platform::SystemClock();
};

}  // namespace marbex::comm
