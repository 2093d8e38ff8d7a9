#include <windows.h>

#include <array>

#include "marbex_opos/console/line_buffer.h"
#include "marbex_opos/console/line_source.h"
#include "platform/kernel.h"
#include "platform/windows/wide_text.h"

namespace marbex::tools {

namespace {

class WindowsLineFile final : public LineSource {
public:
    WindowsLineFile(HANDLE file, bool isOurs) : file_(file), isOurs_(isOurs) {}
    ~WindowsLineFile() override
    {
        if (isOurs_) CloseHandle(file_);
    }
    WindowsLineFile(const WindowsLineFile&) = delete;
    WindowsLineFile& operator=(const WindowsLineFile&) = delete;

    std::optional<std::string> NextLine() override
    {
        while (true) {
            if (std::optional<std::string> line = buffer_.TakeLine()) return line;
            if (!Fill()) return buffer_.TakeRest();
        }
    }

private:
    bool Fill()
    {
        std::array<char, 65536> bytes;
        DWORD got = 0;
        const auto read = [&] {
            if (!ReadFile(file_, bytes.data(), static_cast<DWORD>(bytes.size()), &got, nullptr)) got = 0;
        };
        if (HasInput()) {
            read();
        } else {
            ReadWhileMessagesRun(read);
        }
        buffer_.Append({bytes.data(), got});
        return got > 0;
    }

    // A read that waits keeps a thread of its own busy: a pipe cannot be waited for together with messages.
    static void ReadWhileMessagesRun(const std::function<void()>& read)
    {
        const auto reader = platform::Thread::Start(read);
        if (reader) {
            platform::WaitForOneRunningMessages(*reader, platform::kForever);
        } else {
            read();
        }
    }

    // Whether a read would return at once, be it with the end of the input.
    bool HasInput() const
    {
        const DWORD kind = GetFileType(file_);
        if (kind == FILE_TYPE_DISK) return true;
        DWORD waiting = 0;
        return kind == FILE_TYPE_PIPE && (!PeekNamedPipe(file_, nullptr, 0, nullptr, &waiting, nullptr) || waiting > 0);
    }

    HANDLE file_;
    bool isOurs_;
    LineBuffer buffer_;
};

}  // namespace

std::unique_ptr<LineSource> OpenLines(const std::string& path, const MessageHooks&)
{
    if (path.empty()) return std::make_unique<WindowsLineFile>(GetStdHandle(STD_INPUT_HANDLE), false);
    const HANDLE file =
        CreateFileW(platform::WideFromUtf8(path).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return nullptr;
    return std::make_unique<WindowsLineFile>(file, true);
}

}  // namespace marbex::tools
