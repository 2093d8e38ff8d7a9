#include "platform/posix/open_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <utility>

#include "platform/posix/registry_location.h"
#include "platform/registry.h"
#include "platform/text.h"
#include "platform/unicode.h"

namespace marbex::platform {

namespace {

constexpr mode_t kNewFileMode = 0644;
constexpr mode_t kSharedFileMode = 0664;
constexpr mode_t kHandsGroupOn = S_ISGID | S_IWGRP;
constexpr int kAlways = O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
constexpr int kMostTries = 100;

bool IsTrusted(uid_t owner)
{
    return owner == geteuid() || owner == 0;
}

bool OthersMayChange(const struct stat& folder)
{
    return (folder.st_mode & (S_IWGRP | S_IWOTH)) != 0 || !IsTrusted(folder.st_uid);
}

// In a folder that others may change.
bool MayBeWritten(const struct stat& file, const struct stat& folder)
{
    if (!S_ISREG(file.st_mode) || file.st_nlink > 1) return false;
    return (folder.st_mode & S_IWOTH) == 0 || IsTrusted(file.st_uid) || file.st_uid == folder.st_uid;
}

UniqueFd Refuse(int error)
{
    errno = error;
    return {};
}

// openat, not through a link, with a word on whether the file was made by it.
UniqueFd OpenOrMake(int folder, const std::string& name, int flags, bool& made)
{
    for (int tries = 0; tries < kMostTries; ++tries) {
        made = false;
        UniqueFd file(openat(folder, name.c_str(), (flags & ~(O_CREAT | O_EXCL)) | O_NOFOLLOW));
        if (file && (flags & O_EXCL) != 0) return Refuse(EEXIST);
        if (!file && errno == EINTR) continue;
        if (file || errno != ENOENT || (flags & O_CREAT) == 0) return file;
        made = true;
        file = UniqueFd(openat(folder, name.c_str(), flags | O_EXCL | O_NOFOLLOW, kNewFileMode));
        // Somebody else was faster.
        if (file || errno != EEXIST || (flags & O_EXCL) != 0) return file;
    }
    return Refuse(EEXIST);
}

UniqueFd OpenToWrite(const std::string& path, int flags)
{
    const UniqueFd folder(open(FolderOf(path).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    struct stat folderStatus {};
    if (!folder || fstat(folder.Get(), &folderStatus) != 0) return {};
    const std::string name = path.substr(path.rfind('/') + 1);
    if (name.empty()) return Refuse(EISDIR);
    const bool guarded = OthersMayChange(folderStatus);
    flags |= kAlways;
    bool made = false;
    UniqueFd file = guarded ? OpenOrMake(folder.Get(), name, flags, made)
                            : UniqueFd(openat(folder.Get(), name.c_str(), flags, kNewFileMode));
    struct stat status {};
    if (!file || fstat(file.Get(), &status) != 0) return {};
    if (S_ISFIFO(status.st_mode) || (guarded && !MayBeWritten(status, folderStatus))) return Refuse(EPERM);
    if (made && (folderStatus.st_mode & kHandsGroupOn) == kHandsGroupOn) fchmod(file.Get(), kSharedFileMode);
    return file;
}

UniqueFd OpenToRead(const std::string& path, int flags)
{
    for (;;) {
        UniqueFd file(open(path.c_str(), flags | kAlways));
        if (!file && errno == EINTR) continue;
        struct stat status {};
        if (file && (fstat(file.Get(), &status) != 0 || S_ISFIFO(status.st_mode))) return Refuse(EPERM);
        return file;
    }
}

}  // namespace

// What the application passes is text of the ANSI code page. A name in other bytes than UTF-8 may yet be a file's.
std::string SystemPath(const std::string& path)
{
    std::string native = NativePath(path);
    if (IsUtf8(path) || access(native.c_str(), F_OK) == 0) return native;
    return NativePath(Utf8FromUtf16(WidenAnsi(path)));
}

UniqueFd OpenFile(const std::string& systemPath, int flags)
{
    return (flags & O_ACCMODE) == O_RDONLY ? OpenToRead(systemPath, flags) : OpenToWrite(systemPath, flags);
}

bool StillNamed(int fd, const std::string& systemPath)
{
    struct stat open {};
    struct stat named {};
    return fstat(fd, &open) == 0 && stat(systemPath.c_str(), &named) == 0 && open.st_dev == named.st_dev &&
           open.st_ino == named.st_ino;
}

std::string ResolvedPath(const std::string& systemPath)
{
    const std::unique_ptr<char, decltype(&free)> real(realpath(systemPath.c_str(), nullptr), &free);
    return real ? real.get() : systemPath;
}

}  // namespace marbex::platform
