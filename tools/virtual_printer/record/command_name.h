#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "virtual_printer/language/command_reader.h"

namespace marbex::virtual_printer {

// A command for a person to read.
struct CommandName {
    std::string code;     // as the printers' manuals write it, with its parameters in decimal: "ESC ! 8"
    std::string meaning;  // "print mode: bold"
};

// bytes: the whole command. Of a run of characters or raster rows that stand together, all of them.
CommandName NameOf(Op op, std::span<const uint8_t> bytes);

}  // namespace marbex::virtual_printer
