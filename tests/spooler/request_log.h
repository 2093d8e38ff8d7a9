#pragma once

// The service log's lines, without their time stamps, while one of these lives.

#include <string>
#include <string_view>
#include <vector>

#include "platform/files.h"
#include "support/service_log.h"

namespace marbex::test {

class RequestLog {
public:
    RequestLog()
    {
        Lines().clear();
        platform::CaptureDebugOutput([](std::string_view line) {
            line.remove_prefix(line.find(']') + 1);
            Lines().emplace_back(line.substr(0, line.find_last_not_of("\r\n") + 1));
        });
        support::LogOpen("", 1, 1, 1);
    }
    ~RequestLog()
    {
        support::LogClose();
        platform::CaptureDebugOutput(nullptr);
    }
    RequestLog(const RequestLog&) = delete;
    RequestLog& operator=(const RequestLog&) = delete;

    static std::vector<std::string>& Lines()
    {
        static std::vector<std::string> lines;
        return lines;
    }

    // The lines from then on.
    static std::vector<std::string> Take()
    {
        std::vector<std::string> lines;
        lines.swap(Lines());
        return lines;
    }
};

}  // namespace marbex::test
