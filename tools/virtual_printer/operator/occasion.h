#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "virtual_printer/server.h"

namespace marbex::virtual_printer {

// A command that waits for its time.
struct Occasion {
    PrinterServer::Count what = PrinterServer::Count::kBytes;
    uint64_t count = 0;
    bool further = false;  // counted from now on, not from the start
    std::string command;   // what is done then
};

// "after 3 lines: paper out", "after 900 bytes: drop", "at cut 2: cover open", "at 900 drop"; nothing when the text is
// no such thing. Whether the command is one is not looked at.
std::optional<Occasion> ParseOccasion(const std::string& text);

}  // namespace marbex::virtual_printer
