#pragma once

// The values that a statement writes and that a service object answers with.

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include "marbex_opos/opos/code_names.h"

namespace marbex::tools {

using Value = std::variant<int32_t, bool, std::u16string>;

struct NullText {  // a text result that is a null BSTR
    bool operator==(const NullText&) const = default;
};

// What a call gave back: nothing, a number, no text or text.
using Result = std::variant<std::monostate, int32_t, NullText, std::u16string>;

// Text in double quotes as the console prints it: control characters, quote and backslash escaped, the rest UTF-8.
std::string Quoted(std::u16string_view text);

// "", "5", "null" or quoted text; a number that one of the sets has a name for as "5 (NAME)".
std::string Printed(const Result& result, const NameSets& sets = {});

}  // namespace marbex::tools
