#include "platform/files.h"

#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "platform/debugger.h"
#include "platform/unicode.h"
#include "platform/windows/open_file.h"
#include "platform/windows/unique_handle.h"
#include "platform/windows/wide_text.h"

namespace marbex::platform {

namespace {

constexpr DWORD kLargestTransfer = 1 << 20;

// The C library's number for an error of the system; 0 when it has none.
int ErrnoOf(DWORD error)
{
    const std::error_condition condition = std::system_category().default_error_condition(static_cast<int>(error));
    return condition.category() == std::generic_category() ? condition.value() : 0;
}

class WindowsAppendFile : public AppendFile {
public:
    explicit WindowsAppendFile(UniqueHandle file) : file_(std::move(file)) {}
    bool Append(std::string_view bytes) override { return WriteAll(file_.Get(), bytes); }
    uint64_t Size() const override
    {
        LARGE_INTEGER size{};
        return GetFileSizeEx(file_.Get(), &size) ? static_cast<uint64_t>(size.QuadPart) : 0;
    }

private:
    UniqueHandle file_;
};

}  // namespace

std::wstring WidePath(const std::string& path)
{
    const std::u16string wide = IsUtf8(path) ? Utf16FromUtf8(path) : WidenAnsi(path);
    return {wide.begin(), wide.end()};
}

UniqueHandle OpenFile(const std::string& path, DWORD access, DWORD sharing, DWORD disposition)
{
    UniqueHandle file(
        CreateFileW(WidePath(path).c_str(), access, sharing, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (file && GetFileType(file.Get()) != FILE_TYPE_DISK) file.Close();
    return file;
}

bool WriteAll(HANDLE file, std::string_view bytes)
{
    while (!bytes.empty()) {
        const auto length = static_cast<DWORD>(std::min<std::size_t>(bytes.size(), kLargestTransfer));
        DWORD written = 0;
        if (!WriteFile(file, bytes.data(), length, &written, nullptr) || written == 0) return false;
        bytes.remove_prefix(written);
    }
    return true;
}

std::unique_ptr<AppendFile> OpenForAppend(const std::string& path, OtherWriters others)
{
    // With the right to append, and not to write elsewhere, every write goes to the end of the file.
    const DWORD sharing = others == OtherWriters::kAdmitted ? FILE_SHARE_READ | FILE_SHARE_WRITE : FILE_SHARE_READ;
    UniqueHandle file = OpenFile(path, FILE_APPEND_DATA | SYNCHRONIZE, sharing, OPEN_ALWAYS);
    if (!file) return nullptr;
    return std::make_unique<WindowsAppendFile>(std::move(file));
}

bool FileExists(const std::string& path)
{
    return static_cast<bool>(
        OpenFile(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, OPEN_EXISTING));
}

bool CreateEmptyFile(const std::string& path)
{
    return static_cast<bool>(OpenFile(path, GENERIC_WRITE, FILE_SHARE_READ, CREATE_ALWAYS));
}

bool CreateNewFile(const std::string& path)
{
    return static_cast<bool>(OpenFile(path, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, CREATE_NEW));
}

bool AppendExclusively(const std::string& path, std::string_view bytes)
{
    const UniqueHandle file = OpenFile(path, GENERIC_WRITE, 0, OPEN_ALWAYS);
    LARGE_INTEGER end;
    if (!file || !GetFileSizeEx(file.Get(), &end) || !SetFilePointerEx(file.Get(), end, nullptr, FILE_BEGIN)) {
        return false;
    }
    if (WriteAll(file.Get(), bytes)) return true;
    if (SetFilePointerEx(file.Get(), end, nullptr, FILE_BEGIN)) SetEndOfFile(file.Get());
    return false;
}

std::optional<std::string> ReadWholeFile(const std::string& path, uint64_t limit)
{
    const UniqueHandle file =
        OpenFile(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, OPEN_EXISTING);
    if (!file) errno = ErrnoOf(GetLastError());
    LARGE_INTEGER size;
    if (!file || !GetFileSizeEx(file.Get(), &size)) return std::nullopt;
    if (static_cast<uint64_t>(size.QuadPart) > limit) return std::nullopt;

    // The size is a first guess only: the file may grow.
    std::string contents;
    contents.resize(static_cast<std::size_t>(size.QuadPart) + 1);
    std::size_t length = 0;
    for (;;) {
        const auto room = static_cast<DWORD>(std::min<std::size_t>(contents.size() - length, kLargestTransfer));
        DWORD got = 0;
        if (!ReadFile(file.Get(), contents.data() + length, room, &got, nullptr)) return std::nullopt;
        if (got == 0) break;
        length += got;
        if (length > limit) return std::nullopt;
        if (length == contents.size()) contents.resize(contents.size() * 2 + 4096);
    }
    contents.resize(length);
    return contents;
}

void WriteToDebugger(std::string_view text)
{
    OutputDebugStringA(std::string(text).c_str());
}

}  // namespace marbex::platform
