#include "virtual_printer/posix/command_input.h"

#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "virtual_printer/posix/endpoints.h"

namespace marbex::virtual_printer {
namespace {

constexpr std::size_t kLongestLine = 65536;

}  // namespace

CommandInput::CommandInput(const std::string& socket) : socket_(socket), sources_(1)
{
    sigset_t ends;
    sigemptyset(&ends);
    sigaddset(&ends, SIGINT);
    sigaddset(&ends, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &ends, nullptr);
    signals_ = Descriptor(::signalfd(-1, &ends, SFD_CLOEXEC));
    sources_.front().fd = STDIN_FILENO;
    struct stat input {};
    endsWithInput_ = socket.empty() &&
                     (::isatty(STDIN_FILENO) != 0 ||
                      (::fstat(STDIN_FILENO, &input) == 0 && (S_ISFIFO(input.st_mode) || S_ISSOCK(input.st_mode))));
    if (!socket.empty()) {
        const mode_t before = ::umask(S_IRWXG | S_IRWXO);
        try {
            listener_ = ListenUnix(socket);
        } catch (...) {
            ::umask(before);
            throw;
        }
        ::umask(before);
    }
}

CommandInput::~CommandInput()
{
    if (listener_.Open()) {
        ::unlink(socket_.c_str());
    }
}

std::optional<std::string> CommandInput::NextLine()
{
    for (;;) {
        if (auto line = LineAtHand()) {
            return line;
        }
        if ((sources_.front().atEnd && endsWithInput_) || !WaitForMore()) {
            return std::nullopt;
        }
    }
}

std::optional<std::string> CommandInput::LineAtHand()
{
    last_ = nullptr;
    for (Source& source : sources_) {
        if (auto line = LineOf(source)) {
            last_ = source.connection.Open() ? &source : nullptr;
            return line;
        }
    }
    sources_.remove_if([](const Source& source) { return source.connection.Open() && source.atEnd; });
    return std::nullopt;
}

std::optional<std::string> CommandInput::LineOf(Source& source)
{
    std::string& text = source.text;
    const std::size_t end = std::min(text.find('\n'), source.atEnd ? text.size() : std::string::npos);
    if (end != std::string::npos && !text.empty()) {
        std::string line = text.substr(0, end);
        text.erase(0, end + 1);
        return std::exchange(source.tooLong, false) ? "(a line that is too long)" : line;
    }
    if (text.size() > kLongestLine) {
        source.tooLong = true;
        text.clear();
    }
    return std::nullopt;
}

bool CommandInput::WaitForMore()
{
    // A negative descriptor is skipped by poll.
    std::vector<pollfd> fds{{signals_.Get(), POLLIN, 0},
                            {sources_.size() <= kMostConnections ? listener_.Get() : -1, POLLIN, 0}};
    for (const Source& source : sources_) {
        fds.push_back({source.atEnd ? -1 : source.fd, POLLIN, 0});
    }
    if (::poll(fds.data(), fds.size(), -1) < 0) {
        return true;
    }
    auto ready = fds.begin() + 2;
    for (Source& source : sources_) {
        if (ready++->revents != 0) {
            ReadMore(source);
        }
    }
    if (fds[1].revents != 0) {
        Descriptor connection(::accept4(listener_.Get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (connection.Open()) {
            Source& source = sources_.emplace_back();
            source.fd = connection.Get();
            source.connection = std::move(connection);
        }
    }
    return fds[0].revents == 0;
}

void CommandInput::ReadMore(Source& source)
{
    std::array<char, 4096> buffer{};
    const ssize_t count = ::read(source.fd, buffer.data(), buffer.size());
    if (count <= 0) {
        source.atEnd = true;
    } else {
        source.text.append(buffer.data(), static_cast<std::size_t>(count));
    }
}

void CommandInput::Reply(const std::string& line)
{
    if (last_ == nullptr) {
        return;
    }
    const std::string text = line + "\n";
    if (::send(last_->fd, text.data(), text.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(text.size())) {
        last_->atEnd = true;
        last_->text.clear();
    }
}

}  // namespace marbex::virtual_printer
