#include "platform/files.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/debugger.h"
#include "platform/lock.h"
#include "platform/posix/open_file.h"
#include "platform/posix/unique_fd.h"
#include "platform/posix/whole_write.h"

namespace marbex::platform {

namespace {

class PosixAppendFile : public AppendFile {
public:
    explicit PosixAppendFile(UniqueFd fd) : fd_(std::move(fd)) {}
    bool Append(std::string_view bytes) override { return WriteAll(fd_.Get(), bytes); }
    uint64_t Size() const override
    {
        struct stat status {};
        return fstat(fd_.Get(), &status) == 0 ? static_cast<uint64_t>(status.st_size) : 0;
    }

private:
    UniqueFd fd_;
};

}  // namespace

std::unique_ptr<AppendFile> OpenForAppend(const std::string& path, OtherWriters /*others*/)
{
    UniqueFd fd = OpenFile(SystemPath(path), O_WRONLY | O_CREAT | O_APPEND);
    if (!fd) return nullptr;
    return std::make_unique<PosixAppendFile>(std::move(fd));
}

bool FileExists(const std::string& path)
{
    const UniqueFd fd = OpenFile(SystemPath(path), O_RDONLY);
    struct stat status {};
    return fd && fstat(fd.Get(), &status) == 0 && !S_ISDIR(status.st_mode);
}

bool CreateEmptyFile(const std::string& path)
{
    const UniqueFd fd = OpenFile(SystemPath(path), O_WRONLY | O_CREAT);
    struct stat status {};
    if (!fd || fstat(fd.Get(), &status) != 0) return false;
    return !S_ISREG(status.st_mode) || ftruncate(fd.Get(), 0) == 0;
}

bool CreateNewFile(const std::string& path)
{
    return static_cast<bool>(OpenFile(SystemPath(path), O_WRONLY | O_CREAT | O_EXCL));
}

bool AppendExclusively(const std::string& path, std::string_view bytes)
{
    const std::string file = SystemPath(path);
    const UniqueFd fd = OpenFile(file, O_WRONLY | O_CREAT | O_APPEND);
    // A reader that took the file away meanwhile would leave us writing into a file without a name.
    if (!fd || flock(fd.Get(), LOCK_EX | LOCK_NB) != 0 || !StillNamed(fd.Get(), file)) return false;
    struct stat before {};
    if (fstat(fd.Get(), &before) != 0) return false;
    if (WriteAll(fd.Get(), bytes)) return true;
    if (S_ISREG(before.st_mode)) [[maybe_unused]]
        const int cut = ftruncate(fd.Get(), before.st_size);
    return false;
}

std::optional<std::string> ReadWholeFile(const std::string& path, uint64_t limit)
{
    const UniqueFd fd = OpenFile(SystemPath(path), O_RDONLY);
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
