#include "virtual_printer/posix/command_input.h"

#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <utility>

namespace marbex::virtual_printer {
namespace {

constexpr std::size_t kLongestLine = 65536;

}  // namespace

CommandInput::CommandInput()
{
    sigset_t ends;
    sigemptyset(&ends);
    sigaddset(&ends, SIGINT);
    sigaddset(&ends, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &ends, nullptr);
    signals_ = Descriptor(::signalfd(-1, &ends, SFD_CLOEXEC));
    struct stat input {};
    endsWithInput_ = ::isatty(STDIN_FILENO) != 0 ||
                     (::fstat(STDIN_FILENO, &input) == 0 && (S_ISFIFO(input.st_mode) || S_ISSOCK(input.st_mode)));
}

std::optional<std::string> CommandInput::NextLine()
{
    for (;;) {
        const std::size_t end = std::min(text_.find('\n'), atEnd_ ? text_.size() : std::string::npos);
        if (end != std::string::npos && !text_.empty()) {
            std::string line = text_.substr(0, end);
            text_.erase(0, end + 1);
            return std::exchange(tooLong_, false) ? "(a line that is too long)" : line;
        }
        if (text_.size() > kLongestLine) {
            tooLong_ = true;
            text_.clear();
        }
        if (atEnd_ && endsWithInput_) {
            return std::nullopt;
        }
        std::array<pollfd, 2> fds{{{signals_.Get(), POLLIN, 0}, {atEnd_ ? -1 : STDIN_FILENO, POLLIN, 0}}};
        if (::poll(fds.data(), fds.size(), -1) < 0) {
            continue;
        }
        if (fds[0].revents != 0) {
            return std::nullopt;
        }
        ReadMore();
    }
}

void CommandInput::ReadMore()
{
    std::array<char, 4096> buffer{};
    const ssize_t count = ::read(STDIN_FILENO, buffer.data(), buffer.size());
    if (count <= 0) {
        atEnd_ = true;
    } else {
        text_.append(buffer.data(), static_cast<std::size_t>(count));
    }
}

}  // namespace marbex::virtual_printer
