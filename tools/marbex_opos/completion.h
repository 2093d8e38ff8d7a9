#pragma once

// What may follow in the line that is being typed.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace marbex::tools {

struct Completions {
    std::size_t typed = 0;                // bytes before the cursor that the candidates replace
    std::vector<std::string> candidates;  // sorted; a method carries its "("
};

// line: the text before the cursor.
Completions Complete(std::string_view line);

// The longest text that every candidate begins with.
std::string CommonStart(const std::vector<std::string>& candidates);

// The candidates for a person to choose from, in a line; of very many only the first.
std::string Listed(const std::vector<std::string>& candidates);

}  // namespace marbex::tools
