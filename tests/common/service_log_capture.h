#pragma once

// The service log's lines, without their time stamps, while one of these lives.

#include <algorithm>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "platform/files.h"
#include "support/service_log.h"

namespace marbex::test {

class ServiceLogCapture {
public:
    ServiceLogCapture()
    {
        Lines().clear();
        platform::CaptureDebugOutput([](std::string_view text) {
            const std::size_t stampEnd = text.find(']');
            while (!text.empty() && (text.back() == '\n' || text.back() == '\r'))
                text.remove_suffix(1);
            const std::lock_guard hold(Guard());
            Lines().emplace_back(stampEnd == std::string_view::npos ? text : text.substr(stampEnd + 1));
        });
        support::LogOpen("", 1, 1, 1);
    }

    ~ServiceLogCapture()
    {
        support::LogClose();
        platform::CaptureDebugOutput(nullptr);
    }

    ServiceLogCapture(const ServiceLogCapture&) = delete;
    ServiceLogCapture& operator=(const ServiceLogCapture&) = delete;

    std::vector<std::string> Taken() const
    {
        const std::lock_guard hold(Guard());
        return Lines();
    }

    void Forget() const
    {
        const std::lock_guard hold(Guard());
        Lines().clear();
    }

    std::size_t Count(std::string_view line) const
    {
        const auto lines = Taken();
        return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), line));
    }

    bool Has(std::string_view line) const { return Count(line) > 0; }

private:
    static std::mutex& Guard()
    {
        static std::mutex guard;
        return guard;
    }

    static std::vector<std::string>& Lines()
    {
        static std::vector<std::string> lines;
        return lines;
    }
};

}  // namespace marbex::test
