// Whoever appends holds the file's lock with the others; whoever sets it aside holds it alone. The lock goes with the
// file and not with its name, so after taking it each looks whether the name is still the file's: if not, somebody has
// set it aside meanwhile, and the new file is opened. So nobody writes into a file that is already set aside, where the
// next one would take its place.
//
// What holds a lock longer than any append is none of us, and no till waits for that.

#include "platform/log_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>

#include "platform/clock.h"
#include "platform/posix/open_file.h"
#include "platform/posix/whole_write.h"

namespace marbex::platform {

namespace {

constexpr int kMostTries = 100;          // to find a file that nobody has set aside meanwhile
constexpr uint64_t kLongestWait = 1000;  // ms: far longer than an append on a machine that is busy with other things
constexpr int kAppend = O_WRONLY | O_CREAT | O_APPEND;

// The last wait for this kind of lock was in vain: until one can be had again, nobody waits for it.
std::atomic<bool> sharedIsHopeless{false};
std::atomic<bool> exclusiveIsHopeless{false};

bool Lock(int fd, int kind)
{
    std::atomic<bool>& isHopeless = kind == LOCK_EX ? exclusiveIsHopeless : sharedIsHopeless;
    Clock& clock = SystemClock();
    const uint64_t start = clock.Milliseconds();
    while (flock(fd, kind | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) return false;
        if (isHopeless.load(std::memory_order_relaxed)) return false;
        if (clock.Milliseconds() - start >= kLongestWait) {
            isHopeless.store(true, std::memory_order_relaxed);
            return false;
        }
        clock.Sleep(1);
    }
    isHopeless.store(false, std::memory_order_relaxed);
    return true;
}

bool IsFull(int fd, uint64_t limit, struct stat& status)
{
    return limit != 0 && fstat(fd, &status) == 0 && S_ISREG(status.st_mode) &&
           static_cast<uint64_t>(status.st_size) >= limit;
}

// The new file is for the same users as the old one.
void MakeAnew(const std::string& systemPath, const struct stat& old)
{
    const UniqueFd fresh = OpenFile(systemPath, kAppend | O_EXCL);
    if (!fresh) return;
    if (fchown(fresh.Get(), static_cast<uid_t>(-1), old.st_gid) == 0) fchmod(fresh.Get(), old.st_mode & 0666);
}

bool SetAsideByName(const std::string& systemPath, uint64_t limit)
{
    const UniqueFd file = OpenFile(systemPath, O_WRONLY | O_APPEND);
    if (!file) return errno == ENOENT;
    struct stat status {};
    if (!IsFull(file.Get(), limit, status)) return true;
    if (!Lock(file.Get(), LOCK_EX)) return false;
    if (!StillNamed(file.Get(), systemPath)) return true;
    const std::string name = ResolvedPath(systemPath);
    if (rename(name.c_str(), (name + ".1").c_str()) != 0) return false;
    MakeAnew(name, status);
    return true;
}

}  // namespace

bool SetAside(const std::string& path, uint64_t limit)
{
    return SetAsideByName(SystemPath(path), limit);
}

bool AppendShared(const std::string& path, std::string_view bytes, uint64_t limit)
{
    const std::string systemPath = SystemPath(path);
    bool mayBeSetAside = true;
    for (int i = 0; i < kMostTries; ++i) {
        const UniqueFd file = OpenFile(systemPath, kAppend);
        if (!file) return false;
        const bool isLocked = Lock(file.Get(), LOCK_SH);
        if (isLocked && !StillNamed(file.Get(), systemPath)) continue;
        struct stat status {};
        if (!mayBeSetAside || !IsFull(file.Get(), limit, status)) return WriteAll(file.Get(), bytes);
        mayBeSetAside = false;
        flock(file.Get(), LOCK_UN);
        SetAsideByName(systemPath, limit);
    }
    return false;
}

}  // namespace marbex::platform
