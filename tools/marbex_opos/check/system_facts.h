#pragma once

// What only the operating system can tell about why something does not work, and what a person types there.

#include <cstdint>
#include <string>
#include <vector>

namespace marbex::tools {

// The system's number of an error in its own words: "Connection refused".
std::string SystemWords(uint32_t error);

enum class PortFault : uint8_t { kRefused, kNoAnswer, kMissing, kDenied, kInUse, kNoTerminal, kOther };
PortFault FaultOf(uint32_t error);

struct Advice {
    std::string text;
    std::string next;
};

// Why this user may not open the device file, and how to change that.
Advice WhyDenied(const std::string& path);

// The programs that have the device file, or a connection to the address (host byte order), open: "till (4711)". Only
// those that this user may see, and not this program.
std::vector<std::string> UsersOfFile(const std::string& path);
std::vector<std::string> UsersOfAddress(uint32_t address, uint16_t port);

// Where a person finds a USB interface: its device file, or its path where there is none.
std::string UsbPlace(const std::string& devicePath);

// Whether this user may make files there. Makes none that stays.
bool MayWriteIn(const std::string& folder);
std::string MakeFolderCommand(const std::string& folder);
std::string LetWriteCommand(const std::string& folder);

}  // namespace marbex::tools
