#pragma once

// The logs of a till as one, by time.

#include <deque>
#include <string>
#include <vector>

#include "marbex_opos/log/log_entry.h"
#include "marbex_opos/log/log_reader.h"

namespace marbex::tools {

class LogMerge {
public:
    // folder: of this system.
    explicit LogMerge(const std::string& folder);

    bool IsThere() const;
    // The next entries, in order; none when all that is written has been given. An entry of a moment at which another
    // log may still say something comes with the next call.
    std::vector<LogEntry> Next();

private:
    void Release(bool all, std::vector<LogEntry>& to);
    void Judge(LogEntry entry);

    LogReader service_;
    LogReader link_;
    std::deque<LogEntry> undecided_;  // a code that a method sets at its start, and what came after it
};

}  // namespace marbex::tools
