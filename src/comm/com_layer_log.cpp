#include "comm/com_layer_log.h"

#include <cstdio>
#include <new>

#include "platform/clock.h"
#include "platform/files.h"
#include "platform/log_file.h"

namespace marbex::comm {

namespace {

constexpr std::size_t kLongestPath = 199;
constexpr std::size_t kLongestLine = 299;
constexpr auto kOthers = platform::OtherWriters::kAdmitted;  // of the same log

std::string ComposeLine(std::string_view prefix, std::string_view message)
{
    const platform::LocalTime now = platform::Now();
    char stamp[96];
    std::snprintf(stamp, sizeof stamp, "[%04d/%02d/%02d %02d:%02d:%02d:%04d]", now.year, now.month, now.day, now.hour,
                  now.minute, now.second, now.millisecond);
    std::string line = stamp;
    line.append(" ").append(prefix).append(" ").append(message);
    if (!line.ends_with('\n')) line += '\n';
    if (line.size() > kLongestLine) {
        line.resize(kLongestLine - 1);
        line += '\n';
    }
    return line;
}

}  // namespace

void CComLayerLog::SetMode(uint32_t destination, uint32_t mask)
{
    destination_ = destination;
    mask_ = mask;
}

int32_t CComLayerLog::SetPath(const char* path)
{
    if (destination_ != kLogToFile) return 1;
    if (path == nullptr) return 0;
    const std::string_view wanted = path;
    if (wanted.empty() || wanted.size() > kLongestPath) return 0;
    path_ = wanted;
    // Another device, of this process or another one, may make it at the same moment.
    if (!platform::CreateNewFile(path_))
        return platform::FileExists(path_) || platform::OpenForAppend(path_, kOthers) != nullptr ? 1 : 0;
    Write("", "=====================Log file succesfully created=====================\n", kLogProgress);
    return 1;
}

void CComLayerLog::Write(std::string_view prefix, std::string_view message, uint32_t level) const
{
    if (!Writes(level)) return;
    try {
        const std::string line = ComposeLine(prefix, message);
        if (destination_ == kLogToFile) {
            platform::AppendShared(path_, line, limit_);
        } else if (destination_ == kLogToDebugger) {
            platform::WriteDebugOutput(line);
        }
    } catch (const std::bad_alloc&) {
        // The line is missing; what it tells of goes on.
    }
}

}  // namespace marbex::comm
