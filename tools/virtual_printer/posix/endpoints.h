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

// A pseudo-terminal in raw mode.
struct PseudoTerminal {
    Descriptor master;
    Descriptor keptOpen;  // the client's side
    std::string path;     // what a client opens
};
// keepOpen: the client's side stays open here, so that a client may come and go and finds it in raw mode. Else it is as
// a system leaves a terminal that nobody has open, and the master tells whether somebody has.
PseudoTerminal OpenPseudoTerminal(bool keepOpen = true);
// Makes, or moves, a symbolic link.
void LeadLinkTo(const std::string& target, const std::string& link);

// Makes the close of a TCP connection a reset.
void ResetOnClose(const Descriptor& connection);

}  // namespace marbex::virtual_printer
