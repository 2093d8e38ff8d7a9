#pragma once

// Opening files by the paths that files.h tells of.

#include <string>

#include "platform/posix/unique_fd.h"

namespace marbex::platform {

// Text of a path as the system takes it: through NativePath, and in UTF-8 unless a file has just those bytes for its
// name.
std::string SystemPath(const std::string& path);

// As open does, by a path of SystemPath, with these additions.
//
// Nothing waits: a configured path that turns out to be a named pipe would hold up the till until somebody opens its
// other end. A pipe is no file in any case: when its reader goes, the next line would be the till's last.
//
// Writing, in a folder that others than the user and the superuser may change, goes to a plain file with one name only,
// and not through a link: what stands there under a log's name may have been put there to have the till write into
// another file. In a folder that everybody may change, the file must be the user's, the superuser's or that of the
// folder's owner, too. errno tells, as ever, when it is refused.
//
// A new file in a folder that hands its group on (mode 2775) may be written by the group: several tills share a log
// there.
//
// O_TRUNC is not for this: what is refused would be empty already.
UniqueFd OpenFile(const std::string& systemPath, int flags);

// Whether the path still names the open file.
bool StillNamed(int fd, const std::string& systemPath);

// The file that the path leads to, through all links; the path itself when there is none.
std::string ResolvedPath(const std::string& systemPath);

}  // namespace marbex::platform
