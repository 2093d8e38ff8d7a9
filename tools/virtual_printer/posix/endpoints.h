#pragma once

#include <cstdint>
#include <string>

#include "virtual_printer/posix/descriptor.h"

namespace marbex::virtual_printer {

// The ends of links that a printer offers. All throw std::system_error when they cannot be set up, and are
// non-blocking.

// A listening TCP socket; port receives the one that was picked when it is 0.
Descriptor ListenTcp(const std::string& host, uint16_t& port, int receiveBuffer);
// A listening unix stream socket; an old socket of that path is replaced.
Descriptor ListenUnix(const std::string& path);

// A pseudo-terminal in raw mode. The other side stays open here too, so that a client may come and go.
struct PseudoTerminal {
    Descriptor master;
    Descriptor keptOpen;
    std::string path;  // what a client opens
};
PseudoTerminal OpenPseudoTerminal();

// Makes the close of a TCP connection a reset.
void ResetOnClose(const Descriptor& connection);

}  // namespace marbex::virtual_printer
