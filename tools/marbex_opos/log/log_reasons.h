#pragma once

#include <string>
#include <string_view>

#include "marbex_opos/log/log_entry.h"

namespace marbex::tools {

// Marks an entry that tells of an error, and adds what lies behind the numbers and words of the log.
void Explain(LogEntry& entry);

// "[TalisPOSPrinter] SetErrorCode Begin (112, 0)": what a method sets at its start and takes back when it succeeds.
// The tag ("TalisPOSPrinter") and whether the code is an error; none when the text is something else.
struct ErrorCodeLine {
    std::string tag;
    bool isError;
};
bool IsErrorCodeLine(std::string_view text, ErrorCodeLine& line);

}  // namespace marbex::tools
