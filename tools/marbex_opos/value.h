#pragma once

// The values that a statement writes and that a service object answers with.

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

namespace marbex::tools {

using Value = std::variant<int32_t, bool, std::u16string>;

struct NullText {};  // a text result that is a null BSTR

// What a call gave back: nothing, a number, no text or text.
using Result = std::variant<std::monostate, int32_t, NullText, std::u16string>;

// Text in double quotes as the console prints it: control characters, quote and backslash escaped, the rest UTF-8.
std::string Quoted(std::u16string_view text);

std::string Printed(const Result& result);  // "", "5", "null" or quoted text

}  // namespace marbex::tools
