// Whoever appends locks the end of all files, where nothing ever stands, while he writes: the system alone would not
// keep apart those who append to a file of another machine.
//
// Whoever sets a file aside has it open for nobody to write meanwhile, which the system grants only while nobody does;
// looks at its size once more; and gives it its new name through that very handle. So nobody writes into a file that is
// already set aside, where the next one would take its place, and no file is set aside in place of another.
//
// Whoever comes to append in that moment is refused, and tries again. What keeps a file or its lock longer than that is
// none of us, and no till waits for it.

#include "platform/log_file.h"

#include <windows.h>

#include <atomic>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "platform/windows/open_file.h"

namespace marbex::platform {

namespace {

// An append takes less time than the shortest sleep, so most waits are over while others run.
constexpr int kYields = 200;
constexpr uint64_t kLongestWait = 1000;  // ms: far longer than an append on a machine that is busy with other things

// The last wait was in vain: until the file, or its lock, can be had again, nobody waits for it.
std::atomic<bool> fileIsHopeless{false};
std::atomic<bool> lockIsHopeless{false};

// Asks until it is granted, or refused with another error than busy.
template <typename Ask>
bool Await(std::atomic<bool>& isHopeless, DWORD busy, Ask ask)
{
    Clock& clock = SystemClock();
    const uint64_t start = clock.Milliseconds();
    for (int tries = 1; !ask(); ++tries) {
        if (GetLastError() != busy) return false;
        if (isHopeless.load(std::memory_order_relaxed)) return false;
        if (clock.Milliseconds() - start >= kLongestWait) {
            isHopeless.store(true, std::memory_order_relaxed);
            return false;
        }
        if (tries > kYields) {
            clock.Sleep(1);
        } else {
            SwitchToThread();
        }
    }
    isHopeless.store(false, std::memory_order_relaxed);
    return true;
}

// With the right to append, and not to write elsewhere, every write goes to the end of the file. A lock takes the right
// to read.
UniqueHandle Open(const std::string& path)
{
    UniqueHandle file;
    Await(fileIsHopeless, ERROR_SHARING_VIOLATION, [&] {
        file = OpenFile(path, GENERIC_READ | FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_ALWAYS);
        return static_cast<bool>(file);
    });
    return file;
}

// Closing the file gives the lock back.
void Lock(HANDLE file)
{
    OVERLAPPED place{};
    place.Offset = 0xFFFFFFFE;
    place.OffsetHigh = 0x7FFFFFFF;
    Await(lockIsHopeless, ERROR_LOCK_VIOLATION, [&] {
        return LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &place) != FALSE;
    });
}

uint64_t SizeOf(HANDLE file)
{
    LARGE_INTEGER size{};
    return GetFileSizeEx(file, &size) ? static_cast<uint64_t>(size.QuadPart) : 0;
}

bool Rename(HANDLE file, const std::wstring& name)
{
    std::vector<char> bytes(sizeof(FILE_RENAME_INFO) + name.size() * sizeof(wchar_t));
    auto* const info = reinterpret_cast<FILE_RENAME_INFO*>(bytes.data());
    info->ReplaceIfExists = TRUE;
    info->FileNameLength = static_cast<DWORD>(name.size() * sizeof(wchar_t));
    name.copy(info->FileName, name.size());
    return SetFileInformationByHandle(file, FileRenameInfo, info, static_cast<DWORD>(bytes.size())) != FALSE;
}

}  // namespace

bool SetAside(const std::string& path, uint64_t limit)
{
    const std::wstring name = WidePath(path);
    const UniqueHandle file(CreateFileW(name.c_str(), DELETE | FILE_READ_ATTRIBUTES | SYNCHRONIZE, FILE_SHARE_READ,
                                        nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) return GetLastError() == ERROR_FILE_NOT_FOUND;
    return SizeOf(file.Get()) < limit || Rename(file.Get(), name + L".1");
}

bool AppendShared(const std::string& path, std::string_view bytes, uint64_t limit)
{
    UniqueHandle file = Open(path);
    if (file && limit != 0 && SizeOf(file.Get()) >= limit) {
        file.Close();
        SetAside(path, limit);
        file = Open(path);
    }
    if (!file) return false;
    Lock(file.Get());
    return WriteAll(file.Get(), bytes);
}

}  // namespace marbex::platform
