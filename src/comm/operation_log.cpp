#include "comm/operation_log.h"

#include <cstdarg>
#include <cstdio>
#include <string_view>

namespace marbex::comm {

namespace {

// Longer than any line of the log, so the cut is made there and not here.
constexpr std::size_t kMessageSize = 512;

void WriteFormatted(const CComLayerLog& log, const char* prefix, uint32_t level, const char* format, va_list arguments)
    __attribute__((format(printf, 4, 0)));

void WriteFormatted(const CComLayerLog& log, const char* prefix, uint32_t level, const char* format, va_list arguments)
{
    if (!log.Writes(level)) return;
    char message[kMessageSize];
    if (std::vsnprintf(message, sizeof message, format, arguments) >= 0) log.Write(prefix, message, level);
}

}  // namespace

void OperationLog::Progress(const char* format, ...) const
{
    va_list arguments;
    va_start(arguments, format);
    WriteFormatted(log_, prefix_, kLogProgress, format, arguments);
    va_end(arguments);
}

void OperationLog::Call(const char* format, ...) const
{
    va_list arguments;
    va_start(arguments, format);
    WriteFormatted(log_, prefix_, kLogCalls, format, arguments);
    va_end(arguments);
}

void OperationLog::Bytes(const char* format, ...) const
{
    va_list arguments;
    va_start(arguments, format);
    WriteFormatted(log_, prefix_, kLogBytes, format, arguments);
    va_end(arguments);
}

void OperationLog::Error(const char* format, ...) const
{
    va_list arguments;
    va_start(arguments, format);
    WriteFormatted(log_, prefix_, kLogErrors, format, arguments);
    va_end(arguments);
}

}  // namespace marbex::comm
