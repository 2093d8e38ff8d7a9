#pragma once

// What may follow in the line that is being typed.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/registry.h"

namespace marbex::tools {

struct Completions {
    std::string typed;                    // before the cursor; what the candidates begin with, in any case
    std::vector<std::string> candidates;  // sorted; a method carries its "("
    std::string ending;                   // follows the only candidate

    // What to put in the place of what was typed; none when the candidates have nothing more in common.
    std::optional<std::string> Replacement() const;
};

// line: the text before the cursor. The names of devices are those of the registry.
Completions Complete(std::string_view line, const platform::Registry& registry = platform::SystemRegistry());

// Names for a person to choose from, sorted down the columns of lines of at most so many characters; of very many only
// the first. No line end after the last line.
std::string InColumns(const std::vector<std::string>& names, std::size_t width);

}  // namespace marbex::tools
