#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string_view>

#include "marbex_opos/line_source.h"

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
        std::size_t end = 0;
        while ((end = pending_.find('\n', searched_)) == std::string::npos) {
            searched_ = pending_.size();
            if (!Fill()) return Last();
        }
        std::string line = pending_.substr(0, end);
        pending_.erase(0, end + 1);
        searched_ = 0;
        return line;
    }

private:
    // What stands after the last line end is a line too.
    std::optional<std::string> Last()
    {
        if (pending_.empty()) return std::nullopt;
        std::string line;
        line.swap(pending_);
        searched_ = 0;
        return line;
    }

    bool Fill()
    {
        WaitForInput();
        std::array<char, 65536> buffer;
        const ssize_t got = read(descriptor_, buffer.data(), buffer.size());
        if (got < 0) return errno == EINTR;
        pending_.append(buffer.data(), static_cast<std::size_t>(got));
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
    std::string pending_;
    std::size_t searched_ = 0;  // bytes of pending_ known to hold no line end
};

}  // namespace

std::unique_ptr<LineSource> OpenLines(const std::string& path, MessageHooks hooks)
{
    const int descriptor = path.empty() ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) return nullptr;
    return std::make_unique<PosixLineFile>(descriptor, std::move(hooks));
}

}  // namespace marbex::tools
