#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "marbex_opos/console/line_buffer.h"
#include "marbex_opos/console/line_source.h"

namespace marbex::tools {

namespace {

class PosixLineFile final : public LineSource {
public:
    PosixLineFile(int descriptor, MessageHooks hooks) : descriptor_(descriptor), hooks_(std::move(hooks)) {}
    ~PosixLineFile() override
    {
        if (descriptor_ != STDIN_FILENO) close(descriptor_);
    }
    PosixLineFile(const PosixLineFile&) = delete;
    PosixLineFile& operator=(const PosixLineFile&) = delete;

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
        WaitForInput();
        std::array<char, 65536> bytes;
        const ssize_t got = read(descriptor_, bytes.data(), bytes.size());
        if (got < 0) return errno == EINTR;
        buffer_.Append({bytes.data(), static_cast<std::size_t>(got)});
        return got > 0;
    }

    void WaitForInput()
    {
        while (true) {
            std::array<pollfd, 2> wanted{{{descriptor_, POLLIN, 0}, {hooks_.descriptor(), POLLIN, 0}}};
            if (poll(wanted.data(), wanted.size(), -1) < 0 && errno != EINTR) return;
            if (wanted[0].revents != 0) return;
            if (wanted[1].revents != 0) hooks_.runMessages();
        }
    }

    int descriptor_;
    MessageHooks hooks_;
    LineBuffer buffer_;
};

}  // namespace

std::unique_ptr<LineSource> OpenLines(const std::string& path, const MessageHooks& hooks)
{
    const int descriptor = path.empty() ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) return nullptr;
    return std::make_unique<PosixLineFile>(descriptor, hooks);
}

}  // namespace marbex::tools
