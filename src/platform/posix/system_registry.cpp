// The registry file and those who share it.
//
// Readers never wait: they see either the file before a change or the one after it, because a change is a new file put
// in the old one's place. Writers, of this process and others, take turns by a lock on a file beside the registry, and
// the one whose turn it is reads the registry anew before it changes anything. So no change is lost and no reader meets
// half a file, not even after a power cut.

#include <fcntl.h>
#include <limits.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <memory>
#include <utility>

#include "platform/clock.h"
#include "platform/files.h"
#include "platform/lock.h"
#include "platform/posix/open_file.h"
#include "platform/posix/registry_location.h"
#include "platform/posix/unique_fd.h"
#include "platform/posix/whole_write.h"
#include "platform/reg_file.h"
#include "platform/registry.h"
#include "platform/text.h"

namespace marbex::platform {

namespace {

constexpr uint64_t kLargestFile = 64u << 20;
constexpr uint32_t kTurnTimeout = 10000;  // ms a writer waits for the others
constexpr mode_t kNewFileMode = 0644;
// A file system stamps changes in steps of some milliseconds. A file changed this shortly before it was read may have
// been changed again without showing it.
constexpr int64_t kStampStep = 50'000'000;  // ns

thread_local std::string lastProblem;

std::string ErrorText(int error)
{
    return std::generic_category().message(error);
}

struct FileStamp {
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = -1;  // -1: there is no file
    int64_t changed = 0;

    bool operator==(const FileStamp&) const = default;
};

int64_t Nanoseconds(const timespec& time)
{
    return static_cast<int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

FileStamp StampOf(const std::string& path)
{
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return {};
    return {status.st_dev, status.st_ino, status.st_size, Nanoseconds(status.st_ctim)};
}

// What a reading of the file gave; never changed afterwards.
struct Snapshot {
    std::string path;
    FileStamp stamp;
    bool settled = false;  // the stamp will tell any later change
    RegDocument document;
    std::string problem;  // why there is no document
};

std::shared_ptr<const Snapshot> ReadSnapshot(const std::string& path)
{
    auto snapshot = std::make_shared<Snapshot>();
    snapshot->path = path;
    snapshot->stamp = StampOf(path);
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    snapshot->settled = snapshot->stamp.size < 0 || Nanoseconds(now) - snapshot->stamp.changed > kStampStep;
    if (access(path.c_str(), F_OK) != 0 && (errno == ENOENT || errno == ENOTDIR)) return snapshot;

    errno = 0;
    const auto bytes = ReadWholeFile(path, kLargestFile);
    if (!bytes) {
        snapshot->problem =
            path + ": cannot be read: " + (errno != 0 ? ErrorText(errno) : "not a plain file, or too large");
        return snapshot;
    }
    auto parsed = ParseRegFile(*bytes);
    if (const auto* problem = std::get_if<RegParseProblem>(&parsed)) {
        snapshot->problem = path + ":" + std::to_string(problem->line) + ": " + problem->message;
    } else {
        snapshot->document = std::get<RegDocument>(std::move(parsed));
    }
    return snapshot;
}

// The writers' turn at one registry file; held until destroyed.
UniqueFd TakeTurn(const std::string& path)
{
    const std::string lockPath = path + ".lock";
    // Nothing is written into it, and nobody waits at a pipe that somebody has put there.
    constexpr int kAlways = O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;
    UniqueFd fd(open(lockPath.c_str(), O_RDWR | O_CREAT | kAlways, kNewFileMode));
    const int refused = errno;
    if (!fd) fd = UniqueFd(open(lockPath.c_str(), O_RDONLY | kAlways));  // another user's
    if (!fd) {
        lastProblem = lockPath + ": cannot be created: " + ErrorText(refused);
        return fd;
    }
    Clock& clock = SystemClock();
    const uint64_t start = clock.Milliseconds();
    while (flock(fd.Get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) {
            lastProblem = lockPath + ": cannot be locked: " + ErrorText(errno);
            return {};
        }
        if (clock.Milliseconds() - start >= kTurnTimeout) {
            lastProblem = lockPath + ": held by another program for more than 10 seconds";
            return {};
        }
        clock.Sleep(1);
    }
    return fd;
}

// Puts a file with these contents in the place of path, with its permissions.
bool ReplaceFile(const std::string& path, std::string_view contents)
{
    std::string temporary = path + ".XXXXXX";
    const UniqueFd fd(mkostemp(temporary.data(), O_CLOEXEC));
    if (!fd) {
        lastProblem = path + ": cannot be written: " + ErrorText(errno);
        return false;
    }
    struct stat old {};
    const bool existed = stat(path.c_str(), &old) == 0;
    // Only the superuser can give a file away; for others the owner is right already.
    if (existed && fchown(fd.Get(), old.st_uid, old.st_gid) != 0) errno = 0;
    const bool done = fchmod(fd.Get(), existed ? old.st_mode & 0777 : kNewFileMode) == 0 &&
                      WriteAll(fd.Get(), contents) && fsync(fd.Get()) == 0 &&
                      rename(temporary.c_str(), path.c_str()) == 0;
    if (!done) {
        lastProblem = path + ": cannot be written: " + ErrorText(errno);
        unlink(temporary.c_str());
        return false;
    }
    const UniqueFd folder(open(FolderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder) fsync(folder.Get());
    return true;
}

std::string FullPath(std::string_view path)
{
    while (path.starts_with('\\'))
        path.remove_prefix(1);
    while (path.ends_with('\\'))
        path.remove_suffix(1);
    std::string full = "HKEY_LOCAL_MACHINE";
    if (!path.empty()) full.append("\\").append(path);
    return full;
}

bool IsRoot(std::string_view path)
{
    return path.find_first_not_of('\\') == std::string_view::npos;
}

bool IsWritableName(std::string_view name)
{
    for (const char c : name) {
        if (static_cast<unsigned char>(c) < 0x20) return false;
    }
    return true;
}

class FileRegistry : public Registry {
public:
    bool KeyExists(std::string_view path) const override
    {
        const auto snapshot = Current();
        return snapshot != nullptr && HasKey(snapshot->document, path);
    }

    std::optional<std::vector<std::string>> Subkeys(std::string_view path) const override
    {
        const auto snapshot = Current();
        if (snapshot == nullptr || !HasKey(snapshot->document, path)) return std::nullopt;
        return snapshot->document.Subkeys(FullPath(path));
    }

    std::optional<std::vector<RegistryValue>> Values(std::string_view path) const override
    {
        const auto snapshot = Current();
        if (snapshot == nullptr || !HasKey(snapshot->document, path)) return std::nullopt;
        std::vector<RegistryValue> values;
        if (const RegSection* section = snapshot->document.Find(FullPath(path))) {
            for (const RegEntry& entry : section->entries)
                values.push_back(entry.value);
        }
        return values;
    }

    std::optional<RegistryValue> Value(std::string_view path, std::string_view name) const override
    {
        const auto snapshot = Current();
        const RegEntry* entry = snapshot ? snapshot->document.FindEntry(FullPath(path), name) : nullptr;
        if (entry == nullptr) return std::nullopt;
        return entry->value;
    }

    bool CreateKey(std::string_view path) override
    {
        return Change([&](RegDocument& document) {
            if (HasKey(document, path)) return Outcome::kAsItWas;
            const std::string full = FullPath(path);
            if (!IsWritableName(full) || full.find("\\\\") != std::string::npos ||
                full.find(']') != std::string::npos) {
                return Refuse("a key cannot be named \"" + std::string(path) + "\"");
            }
            document.Ensure(full);
            return Outcome::kChanged;
        });
    }

    bool SetValue(std::string_view path, const RegistryValue& value) override
    {
        return Change([&](RegDocument& document) {
            if (!HasKey(document, path)) return Refuse("there is no key " + FullPath(path));
            if (!IsWritableName(value.name)) return Refuse("a value cannot have control characters in its name");
            RegistryValue wellFormed = value;
            if (value.type == RegistryType::kSz || value.type == RegistryType::kExpandSz ||
                value.type == RegistryType::kMultiSz) {
                wellFormed.data = Utf8FromUtf16(Utf16FromUtf8(value.data));
            }
            const RegEntry* old = document.FindEntry(FullPath(path), value.name);
            if (old != nullptr && old->value.type == wellFormed.type && old->value.data == wellFormed.data) {
                return Outcome::kAsItWas;
            }
            document.Set(FullPath(path), RegEntry{std::move(wellFormed), {}, {}});
            return Outcome::kChanged;
        });
    }

    bool DeleteValue(std::string_view path, std::string_view name) override
    {
        return Change([&](RegDocument& document) {
            if (document.DeleteEntry(FullPath(path), name)) return Outcome::kChanged;
            return Refuse("there is no value \"" + std::string(name) + "\" in " + FullPath(path));
        });
    }

    bool DeleteKey(std::string_view path) override
    {
        return Change([&](RegDocument& document) {
            if (IsRoot(path)) return Refuse("the hive itself cannot be deleted");
            if (document.DeleteKey(FullPath(path))) return Outcome::kChanged;
            return Refuse("there is no key " + FullPath(path));
        });
    }

    std::string LastProblem() const override { return lastProblem; }

private:
    enum class Outcome { kChanged, kAsItWas, kRefused };

    static Outcome Refuse(std::string problem)
    {
        lastProblem = std::move(problem);
        return Outcome::kRefused;
    }

    static bool HasKey(const RegDocument& document, std::string_view path)
    {
        return IsRoot(path) || document.KeyExists(FullPath(path));
    }

    // The file as it is now; null, with the problem told, when it cannot be read.
    std::shared_ptr<const Snapshot> Current() const
    {
        lastProblem.clear();
        const std::string path = RegistryFilePath();
        std::shared_ptr<const Snapshot> snapshot;
        std::string announced;
        {
            const LockHold hold(lock_);
            if (cached_ != nullptr && cached_->settled && cached_->path == path && cached_->stamp == StampOf(path)) {
                snapshot = cached_;
            } else {
                snapshot = ReadSnapshot(path);
                cached_ = snapshot;
                if (snapshot->problem != announced_) announced = announced_ = snapshot->problem;
            }
        }
        if (!announced.empty()) WriteDebugOutput("Marbex OPOS registry: " + announced + "\n");
        if (snapshot->problem.empty()) return snapshot;
        lastProblem = snapshot->problem;
        return nullptr;
    }

    static bool Change(const std::function<Outcome(RegDocument&)>& edit)
    {
        lastProblem.clear();
        // The file may be a link to the real one, which is what must be replaced.
        const std::string path = ResolvedPath(RegistryFilePath());
        if (!MakeFolders(FolderOf(path))) {
            lastProblem = FolderOf(path) + ": cannot be created: " + ErrorText(errno);
            return false;
        }
        const UniqueFd turn = TakeTurn(path);
        if (!turn) return false;
        const auto snapshot = ReadSnapshot(path);
        if (!snapshot->problem.empty()) {
            lastProblem = snapshot->problem;
            return false;
        }
        RegDocument document = snapshot->document;
        switch (edit(document)) {
            case Outcome::kChanged:
                return ReplaceFile(path, WriteRegFile(document));
            case Outcome::kAsItWas:
                return true;
            case Outcome::kRefused:
                break;
        }
        return false;
    }

    mutable Lock lock_;
    mutable std::shared_ptr<const Snapshot> cached_ MARBEX_GUARDED_BY(lock_);
    mutable std::string announced_ MARBEX_GUARDED_BY(lock_);  // the problem that was told last
};

}  // namespace

Registry& SystemRegistry()
{
    LocateRegistry();
    // Never destroyed: a thread that outlives main may still ask.
    static FileRegistry& registry = *new FileRegistry;
    return registry;
}

}  // namespace marbex::platform
