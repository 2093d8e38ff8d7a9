#pragma once

// What the program says. Text is UTF-8 and a line ends in "\n", on every system and wherever the output goes, so that
// the same statements give the same bytes. Each call is one write, at once.

#include <cstddef>
#include <string>
#include <string_view>

namespace marbex::tools {

void Print(std::string_view text);       // to standard output
void PrintError(std::string_view text);  // to standard error

// The text and blanks after it, at least width bytes.
std::string Padded(std::string_view text, std::size_t width);

}  // namespace marbex::tools
