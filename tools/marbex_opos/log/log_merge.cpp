#include "marbex_opos/log/log_merge.h"

#include <algorithm>

#include "marbex_opos/log/log_reasons.h"

namespace marbex::tools {

namespace {

constexpr std::size_t kMostUndecided = 200;  // entries
constexpr std::size_t kMostAtOnce = 1000;    // entries

bool IsMore(LogReader& log)
{
    while (log.Entries().empty()) {
        if (log.Fill()) continue;
        log.EndOfInput();
        break;
    }
    return !log.Entries().empty();
}

}  // namespace

LogMerge::LogMerge(const std::string& folder)
    : service_(folder + "/SOLogFile1.txt", LogOrigin::kService), link_(folder + "/COposComm1.log", LogOrigin::kLink)
{
}

bool LogMerge::IsThere() const
{
    return service_.IsThere() || link_.IsThere();
}

std::vector<LogEntry> LogMerge::Next()
{
    std::vector<LogEntry> ready;
    bool hasService = IsMore(service_);
    bool hasLink = IsMore(link_);
    while (hasService || hasLink) {
        // Of one moment the service log, which says why, comes first.
        const bool takesService =
            !hasLink || (hasService && service_.Entries().front().stamp <= link_.Entries().front().stamp);
        LogReader& from = takesService ? service_ : link_;
        Judge(std::move(from.Entries().front()));
        from.Entries().pop_front();
        Release(false, ready);
        if (ready.size() > kMostAtOnce) return ready;
        if (from.Entries().empty()) (takesService ? hasService : hasLink) = IsMore(from);
    }
    Release(true, ready);
    return ready;
}

// A code that is followed by another one of the same object before its method has ended was no error.
void LogMerge::Judge(LogEntry entry)
{
    ErrorCodeLine now;
    if (entry.origin == LogOrigin::kService && IsErrorCodeLine(entry.text, now) && !undecided_.empty()) {
        ErrorCodeLine before;
        if (IsErrorCodeLine(undecided_.front().text, before) && before.tag == now.tag) {
            undecided_.front().isError = false;
            undecided_.front().reason.clear();
        }
    }
    undecided_.push_back(std::move(entry));
}

void LogMerge::Release(bool all, std::vector<LogEntry>& to)
{
    const auto isDecided = [&] {
        const LogEntry& first = undecided_.front();
        ErrorCodeLine code;
        if (!first.isError || !IsErrorCodeLine(first.text, code)) return true;
        // "[Tag] ClaimDevice End", and not that of SetErrorCode itself.
        return undecided_.size() > kMostUndecided ||
               std::any_of(undecided_.begin() + 1, undecided_.end(), [&](const LogEntry& later) {
                   return later.text.starts_with("[" + code.tag + "] ") && later.text.ends_with(" End") &&
                          later.text.find("SetErrorCode") == std::string::npos;
               });
    };
    while (!undecided_.empty() && (all || isDecided())) {
        to.push_back(std::move(undecided_.front()));
        undecided_.pop_front();
    }
}

}  // namespace marbex::tools
