#pragma once

#include <string>
#include <vector>

#include "common/text_cases.h"

namespace marbex::tests {

// The communication log of a short exchange over a kind of link; in the text a blank at the end of a line is \s.
inline std::string ExpectedLog(const std::string& link)
{
    static const std::vector<TextCase> logs = TextCasesIn(
#include "comm/stories/exchanges.txt"
    );
    std::string text;
    for (const TextCase& one : logs) {
        if (one.name != link) continue;
        for (const std::string& line : one.lines)
            text += (line.ends_with("\\s") ? line.substr(0, line.size() - 2) + " " : line) + "\n";
    }
    return text;
}

}  // namespace marbex::tests
