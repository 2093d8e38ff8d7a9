#pragma once

// Tests whose cases are text. A file of them is C++ source that holds one raw string; a line "== Name" begins a case,
// and empty lines and those that begin with "#" are for the reader.

#include <ostream>
#include <sstream>
#include <string>
#include <vector>

namespace marbex::tests {

struct TextCase {
    std::string name;
    std::vector<std::string> lines;

    friend void PrintTo(const TextCase& one, std::ostream* out) { *out << one.name; }
};

inline std::vector<TextCase> TextCasesIn(const std::string& text)
{
    std::vector<TextCase> cases;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("== ")) {
            cases.push_back({line.substr(3), {}});
        } else if (!line.empty() && line[0] != '#') {
            cases.back().lines.push_back(line);
        }
    }
    return cases;
}

}  // namespace marbex::tests
