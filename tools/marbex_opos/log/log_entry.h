#pragma once

#include <cstdint>
#include <string>

namespace marbex::tools {

enum class LogOrigin : uint8_t {
    kService,   // the service log
    kLink,      // the communication log
    kSent,      // a command, out of the bytes in it
    kReceived,  // an answer
};

// What one of a till's logs says of one moment.
struct LogEntry {
    std::string stamp;  // "2026/11/23 21:24:55:0142", local time; sorts as text
    LogOrigin origin = LogOrigin::kService;
    std::string text;
    bool isError = false;
    std::string reason;  // what lies behind it, in words; may be empty
};

}  // namespace marbex::tools
