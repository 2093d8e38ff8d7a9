#pragma once

// Files, and the debugger's output. Paths go through NativePath (registry.h) here, callers do not. Any thread.
//
// A path is UTF-8, as it comes from the registry; one that is not well-formed UTF-8 is taken as text in the ANSI code
// page, as it comes from the application (POSIX: unless a file has just those bytes for its name). Pipes, and
// devices of Windows, are no files, since writing into one could take for ever. POSIX: what is written to in a folder
// that others may change is no link and has no other name (posix/open_file.h).

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace marbex::platform {

// A file open for appending: created when missing, never truncated, its contents kept. Others may read it meanwhile.
class AppendFile {
public:
    virtual ~AppendFile() = default;
    // One write at the end of the file; false when it failed.
    virtual bool Append(std::string_view bytes) = 0;
    virtual uint64_t Size() const = 0;  // bytes
};

// Whether others may open the file for writing meanwhile. POSIX: they always may.
enum class OtherWriters { kRefused, kAdmitted };

// Null when the file cannot be created or opened.
std::unique_ptr<AppendFile> OpenForAppend(const std::string& path, OtherWriters others);

bool FileExists(const std::string& path);       // can be opened for reading
bool CreateEmptyFile(const std::string& path);  // replaces an existing one by an empty one
bool CreateNewFile(const std::string& path);    // an empty one; false when there is one already

// Opens (creating it when missing) with no other writer or reader allowed, appends all or nothing, closes; false when
// it cannot be had now or is not written. POSIX: a non-blocking advisory lock on the whole file.
bool AppendExclusively(const std::string& path, std::string_view bytes);

// The whole file; none when it cannot be read or is larger than limit. errno is set when the system says why.
std::optional<std::string> ReadWholeFile(const std::string& path, uint64_t limit);

// One line to the debugger's output: OutputDebugString on Windows; on POSIX one write to standard error. The text
// carries its own line end.
void WriteDebugOutput(std::string_view text);

// For tests: gives every later line to sink instead; an empty one restores.
using DebugOutputSink = void (*)(std::string_view text);
void CaptureDebugOutput(DebugOutputSink sink);

}  // namespace marbex::platform
