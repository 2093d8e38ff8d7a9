#pragma once

// The service log: one text log a process, written by every service object, device, spooler and event handler.
// A diagnostic trace only; nothing reads it back and nothing fails because of it.

#include <atomic>
#include <cstdint>
#include <string>

namespace marbex::support {

namespace internal {
extern std::atomic<uint32_t> logEnabled;
}  // namespace internal

// Switches the log. enabled 0 writes nothing; level 0 appends to SOLogFile<number>.txt in folder (created when missing,
// never truncated, readable by others meanwhile), any other level goes to the debugger's output. A file open from
// before is closed. A file that cannot be opened loses its lines silently. With a limit, in megabytes of 1,048,576
// bytes, a file that has reached it is renamed to its name with ".1" behind it, in the place of an older one, before
// the next line; one that cannot be renamed goes on growing. Any thread.
void LogOpen(const std::string& folder, uint32_t enabled, uint32_t level, int number, uint32_t limit = 0);

// Switches the log off and closes its file. Any thread.
void LogClose();

// Whether LogWrite writes anything; for callers that would have to prepare arguments.
inline bool LogIsEnabled()
{
    return internal::logEnabled.load(std::memory_order_relaxed) != 0;
}

// Writes one line: "[yyyy/mm/dd hh:mm:ss:mmmm]", the message as printf makes it, CR LF; time stamp and message together
// are cut at 124 characters. One append a line; lines of several threads never mix. A null text prints as "(null)".
// Costs one call and one test while the log is off. Any thread.
void LogWrite(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace marbex::support
