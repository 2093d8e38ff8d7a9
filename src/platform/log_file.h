#pragma once

// Log files that several programs write, and that end. Paths as in files.h. Any thread.

#include <cstdint>
#include <string>
#include <string_view>

namespace marbex::platform {

// Appends in one write to a file that others append to in the same way; it is made when it is missing. When it has
// limit bytes or more (0: no limit), it is set aside first; a file that cannot be set aside goes on growing. No line of
// those that write so is lost, nor one of the file that was set aside last. False when it is not written.
bool AppendShared(const std::string& path, std::string_view bytes, uint64_t limit);

// Gives a file of at least limit bytes its name and ".1" for a new one, in the place of an older file of that name; the
// next that appends makes it anew. True when the file is shorter than limit afterwards, or gone: somebody else may just
// have done the same.
bool SetAside(const std::string& path, uint64_t limit);

}  // namespace marbex::platform
