#pragma once

// One log of a till, read from its beginning and on as it grows, also when it is set aside for a new one.

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>

#include "marbex_opos/log/command_namer.h"
#include "marbex_opos/log/log_entry.h"

namespace marbex::tools {

class LogReader {
public:
    // path: of this system, as NativePath gives it. origin: the service log or the communication log.
    LogReader(std::string path, LogOrigin origin);

    // Whether there is such a log, or one that was set aside.
    bool IsThere() const;
    // Takes in what has been written since the last time, at most so many bytes. False when there is nothing new.
    bool Fill();
    // What was taken in, oldest first. Without more to come, also what may still grow.
    std::deque<LogEntry>& Entries() { return entries_; }
    void EndOfInput() { EndTransfer(); }

private:
    bool FillFrom(const std::string& path);
    void TakeLine(std::string_view line);
    void TakeLinkLine(const std::string& stamp, std::string_view text);
    void EndTransfer();
    void Add(const std::string& stamp, LogOrigin origin, std::string text);

    const std::string path_;
    const LogOrigin origin_;
    bool inFormer_ = false;  // reading the one that was set aside
    uint64_t offset_ = 0;
    std::string unfinished_;  // a line whose end is not written yet
    std::deque<LogEntry> entries_;
    // Bytes that are being gathered.
    bool isGathering_ = false;
    LogOrigin direction_ = LogOrigin::kSent;
    std::string transferStamp_;
    std::size_t announced_ = 0;
    std::string bytes_;
    CommandNamer namer_;
};

}  // namespace marbex::tools
