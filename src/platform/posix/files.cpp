#include "platform/files.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/debugger.h"
#include "platform/lock.h"
#include "platform/posix/unique_fd.h"
#include "platform/posix/whole_write.h"
#include "platform/registry.h"
#include "platform/text.h"
#include "platform/unicode.h"

// Every file is opened with O_NONBLOCK: it changes nothing for a file on disk, and a configured path that turns out to
// be a named pipe must not hold up the till until somebody opens its other end. A pipe is no file in any case: when its
// reader goes, the next line would be the till's last.

namespace marbex::platform {

namespace {

constexpr mode_t kNewFileMode = 0644;

// What the application passes is text of the ANSI code page. A name in other bytes than UTF-8 may yet be a file's.
std::string SystemPath(const std::string& path)
{
    const std::string native = NativePath(path);
    if (IsUtf8(path) || access(native.c_str(), F_OK) == 0) return native;
    return NativePath(Utf8FromUtf16(WidenAnsi(path)));
}

UniqueFd Open(const std::string& path, int flags)
{
    const std::string native = SystemPath(path);
    for (;;) {
        const int fd = open(native.c_str(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, kNewFileMode);
        if (fd < 0 && errno == EINTR) continue;
        UniqueFd file(fd);
        struct stat status {};
        if (file && (fstat(fd, &status) != 0 || S_ISFIFO(status.st_mode))) file.Reset();
        return file;
    }
}

class PosixAppendFile : public AppendFile {
public:
    explicit PosixAppendFile(UniqueFd fd) : fd_(std::move(fd)) {}
    bool Append(std::string_view bytes) override { return WriteAll(fd_.Get(), bytes); }

private:
    UniqueFd fd_;
};

// Whether path still names the open file: a reader that took the file away while we were getting hold of it would
// leave us writing into a file without a name.
bool StillNamed(int fd, const std::string& path)
{
    struct stat open {};
    struct stat named {};
    return fstat(fd, &open) == 0 && stat(SystemPath(path).c_str(), &named) == 0 && open.st_dev == named.st_dev &&
           open.st_ino == named.st_ino;
}

}  // namespace

std::unique_ptr<AppendFile> OpenForAppend(const std::string& path, OtherWriters /*others*/)
{
    UniqueFd fd = Open(path, O_WRONLY | O_CREAT | O_APPEND);
    if (!fd) return nullptr;
    return std::make_unique<PosixAppendFile>(std::move(fd));
}

bool FileExists(const std::string& path)
{
    const UniqueFd fd = Open(path, O_RDONLY);
    struct stat status {};
    return fd && fstat(fd.Get(), &status) == 0 && !S_ISDIR(status.st_mode);
}

bool CreateEmptyFile(const std::string& path)
{
    return static_cast<bool>(Open(path, O_WRONLY | O_CREAT | O_TRUNC));
}

bool CreateNewFile(const std::string& path)
{
    return static_cast<bool>(Open(path, O_WRONLY | O_CREAT | O_EXCL));
}

bool AppendExclusively(const std::string& path, std::string_view bytes)
{
    const UniqueFd fd = Open(path, O_WRONLY | O_CREAT | O_APPEND);
    if (!fd || flock(fd.Get(), LOCK_EX | LOCK_NB) != 0 || !StillNamed(fd.Get(), path)) return false;
    struct stat before {};
    if (fstat(fd.Get(), &before) != 0) return false;
    if (WriteAll(fd.Get(), bytes)) return true;
    if (S_ISREG(before.st_mode)) [[maybe_unused]]
        const int cut = ftruncate(fd.Get(), before.st_size);
    return false;
}

std::optional<std::string> ReadWholeFile(const std::string& path, uint64_t limit)
{
    const UniqueFd fd = Open(path, O_RDONLY);
    struct stat status {};
    if (!fd || fstat(fd.Get(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
    if (static_cast<uint64_t>(status.st_size) > limit) return std::nullopt;

    // The size is a first guess only: files of /proc and /sys tell none, and others grow.
    std::string contents;
    contents.resize(static_cast<std::size_t>(status.st_size) + 1);
    std::size_t length = 0;
    for (;;) {
        const ssize_t got = read(fd.Get(), contents.data() + length, contents.size() - length);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return std::nullopt;
        if (got == 0) break;
        length += static_cast<std::size_t>(got);
        if (length > limit) return std::nullopt;
        if (length == contents.size()) contents.resize(contents.size() * 2 + 4096);
    }
    contents.resize(length);
    return contents;
}

void WriteToDebugger(std::string_view text)
{
    // Whoever has started the till may have gone, or may never read: the line is lost then, and nobody waits for it nor
    // dies of it. A pipe that takes something takes a whole line, when one thread at a time asks.
    static Lock& lock = *new Lock;
    const LockHold hold(lock);
    pollfd item{STDERR_FILENO, POLLOUT, 0};
    if (poll(&item, 1, 0) > 0 && item.revents == POLLOUT) WriteAll(STDERR_FILENO, text);
}

}  // namespace marbex::platform
