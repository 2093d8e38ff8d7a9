#include "support/service_log.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>

#include "platform/clock.h"
#include "platform/files.h"
#include "platform/lock.h"
#include "platform/log_file.h"

namespace marbex::support {

namespace internal {
std::atomic<uint32_t> logEnabled{0};
}  // namespace internal

namespace {

constexpr std::size_t kLineLimit = 124;  // time stamp and message, without CR LF
constexpr uint64_t kMegabyte = 1 << 20;
constexpr uint64_t kRetryAfter = 64 << 10;  // bytes that a log grows by before its next try to be renamed

struct ServiceLog {
    platform::Lock lock;
    uint32_t level MARBEX_GUARDED_BY(lock) = 0;
    std::unique_ptr<platform::AppendFile> file MARBEX_GUARDED_BY(lock);
    std::string path MARBEX_GUARDED_BY(lock);
    uint64_t limit MARBEX_GUARDED_BY(lock) = 0;   // bytes; 0: none
    uint64_t fullAt MARBEX_GUARDED_BY(lock) = 0;  // bytes: when it shall be renamed
};

// Never destroyed: a thread that outlives main may still write a line.
ServiceLog& Log()
{
    static ServiceLog& log = *new ServiceLog;
    return log;
}

std::size_t FormatStamp(char* line)
{
    const platform::LocalTime now = platform::Now();
    const int length = std::snprintf(line, kLineLimit + 1, "[%04d/%02d/%02d %02d:%02d:%02d:%04d]", now.year, now.month,
                                     now.day, now.hour, now.minute, now.second, now.millisecond);
    return static_cast<std::size_t>(length);
}

std::unique_ptr<platform::AppendFile> OpenFile(const std::string& path)
{
    return platform::OpenForAppend(path, platform::OtherWriters::kRefused);
}

// The file has to be closed for that.
void SetAsideWhenFull(ServiceLog& log) MARBEX_REQUIRES(log.lock)
{
    if (log.file != nullptr) {
        const uint64_t size = log.file->Size();
        if (size < log.fullAt) return;
        log.file.reset();
        log.fullAt = platform::SetAside(log.path, log.limit) ? log.limit : size + kRetryAfter;
    }
    log.file = OpenFile(log.path);
}

void Send(std::string_view line)
{
    ServiceLog& log = Log();
    {
        const platform::LockHold hold(log.lock);
        // The log may have been switched while this line was being made.
        if (!LogIsEnabled()) return;
        if (log.level == 0) {
            if (log.limit != 0) SetAsideWhenFull(log);
            if (log.file != nullptr) log.file->Append(line);
            return;
        }
    }
    platform::WriteDebugOutput(line);
}

// Apart from LogWrite, so that a call while the log is off needs no room for the line.
[[gnu::noinline]] void WriteLine(const char* format, va_list arguments)
{
    char line[kLineLimit + 3];
    const std::size_t stamp = FormatStamp(line);
    line[stamp] = '\0';
    std::vsnprintf(line + stamp, kLineLimit + 1 - stamp, format, arguments);
    line[kLineLimit] = '\0';
    std::size_t length = std::strlen(line);
    line[length++] = '\r';
    line[length++] = '\n';
    Send({line, length});
}

}  // namespace

void LogOpen(const std::string& folder, uint32_t enabled, uint32_t level, int number, uint32_t limit)
{
    ServiceLog& log = Log();
    const platform::LockHold hold(log.lock);
    internal::logEnabled.store(enabled, std::memory_order_relaxed);
    log.level = level;
    log.file.reset();
    log.limit = 0;
    if (enabled != 0 && level == 0) {
        log.path = folder + "\\SOLogFile" + std::to_string(number) + ".txt";
        log.file = OpenFile(log.path);
        log.fullAt = limit * kMegabyte;
        log.limit = log.file != nullptr ? log.fullAt : 0;
    }
}

void LogClose()
{
    ServiceLog& log = Log();
    const platform::LockHold hold(log.lock);
    internal::logEnabled.store(0, std::memory_order_relaxed);
    log.level = 0;
    log.file.reset();
}

void LogWrite(const char* format, ...)
{
    if (!LogIsEnabled()) return;
    va_list arguments;
    va_start(arguments, format);
    WriteLine(format, arguments);
    va_end(arguments);
}

}  // namespace marbex::support
