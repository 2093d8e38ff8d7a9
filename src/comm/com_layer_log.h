#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace marbex::comm {

// Levels of the communication log, bits of its mask.
inline constexpr uint32_t kLogBytes = 1;     // every byte moved
inline constexpr uint32_t kLogCalls = 2;     // start and end of each operation
inline constexpr uint32_t kLogProgress = 4;  // what is going on
inline constexpr uint32_t kLogErrors = 8;

inline constexpr uint32_t kLogToNothing = 0;
inline constexpr uint32_t kLogToFile = 1;
inline constexpr uint32_t kLogToDebugger = 2;

// The log of one communication port: one stamped line an event, to a text file that is opened for each line only (so
// that several devices share one), or to the debugger's output. It never reports failure to whoever writes.
// Settings are made before the port is used; from then on any thread may write.
class CComLayerLog {
public:
    void SetMode(uint32_t destination, uint32_t mask);

    // Names the file, and makes it, with a first line, when it is missing. Only for the file destination; others do
    // nothing and answer 1. Returns 0, and keeps the former path, for no path or one above 199 characters; also when
    // the file cannot be made.
    int32_t SetPath(const char* path);

    // In megabytes of 1,048,576 bytes; 0: none. A file that has reached it is renamed to its name with ".1" behind it,
    // in the place of an older one, before the next line; one that cannot be renamed goes on growing.
    void SetLimit(uint32_t megabytes) { limit_ = megabytes * (uint64_t{1} << 20); }

    // Whether a line of this level would be written.
    bool Writes(uint32_t level) const { return destination_ != kLogToNothing && (mask_ & level) != 0; }
    bool DumpsBytes() const { return (mask_ & kLogBytes) != 0; }

    // "[yyyy/mm/dd hh:mm:ss:mmmm] prefix message"; the message is not interpreted, and gets a line feed when it has
    // none of its own. A line above 299 characters is cut to 298 and a line feed. One that cannot be written, or for
    // which there is no memory, is left out.
    void Write(std::string_view prefix, std::string_view message, uint32_t level) const;

private:
    uint32_t mask_ = 0;
    uint32_t destination_ = kLogToNothing;
    uint64_t limit_ = 0;  // bytes
    std::string path_ = "C:\\NuComLayer.log";
};

}  // namespace marbex::comm
