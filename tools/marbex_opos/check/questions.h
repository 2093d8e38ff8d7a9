#pragma once

// What is asked over a cable, in the printers' command language. The questions are answered at once and put nothing on
// paper; GS I waits its turn behind what the printer has not printed yet.

#include <cstdint>
#include <optional>
#include <string>

#include "marbex_opos/check/cable.h"

namespace marbex::tools {

// What came back to one question, and whether it could be asked.
struct Answer {
    bool wasSent = false;
    std::string bytes;
};

// Collects until length bytes are there or none has come for so many milliseconds.
Answer Ask(Cable& cable, std::string_view question, std::size_t length, uint32_t milliseconds);

// DLE EOT 0x14: four bytes as printer/status_query.h tells them. none: no answer, or not that of one of the printers;
// got is what came instead, kept as it is.
std::optional<uint32_t> AskFullStatus(Cable& cable, Answer& got, uint32_t milliseconds);

}  // namespace marbex::tools
