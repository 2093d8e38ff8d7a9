#pragma once

// The .reg format: "Windows Registry Editor Version 5.00" and its predecessor REGEDIT4 (in code page 1252). Read are
// UTF-8, with or without byte order mark, and UTF-16 in both byte orders; all value kinds; continuation lines;
// comments; deletions of keys
// ("[-key]") and values ("name"=-), which act on what stands above them.

#include <cstddef>
#include <string>
#include <string_view>
#include <variant>

#include "platform/reg_document.h"

namespace marbex::platform {

struct RegParseProblem {
    std::size_t line = 0;  // 1 for the first
    std::string message;
};

// An empty text is an empty document.
std::variant<RegDocument, RegParseProblem> ParseRegFile(std::string_view bytes);

// The document as version 5.00 in its encoding and with its line ends. Values that were not changed since they were
// read are written as they stood, comments before the value or key they stood before.
std::string WriteRegFile(const RegDocument& document);

}  // namespace marbex::platform
