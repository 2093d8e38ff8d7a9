#include "till_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

extern char** environ;

namespace marbex::soak {

TillProcess::TillProcess(const std::string& folder)
{
    std::array<int, 2> in{};
    std::array<int, 2> out{};
    if (::pipe2(in.data(), O_CLOEXEC) != 0 || ::pipe2(out.data(), O_CLOEXEC) != 0) {
        throw std::system_error(errno, std::generic_category(), "pipe");
    }
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, in[0], STDIN_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    std::string program = MARBEX_SOAK_TILL;
    std::string argument = folder;
    std::array<char*, 3> arguments{program.data(), argument.data(), nullptr};
    // What threads keep for themselves in the C library's heap would be taken for growth.
    std::string tunables = "GLIBC_TUNABLES=glibc.malloc.tcache_count=0:glibc.malloc.arena_max=1";
    std::vector<char*> environment{tunables.data()};
    for (char** one = environ; *one != nullptr; ++one) {
        environment.push_back(*one);
    }
    environment.push_back(nullptr);
    const int error = ::posix_spawn(&child_, program.c_str(), &actions, nullptr, arguments.data(), environment.data());
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(in[0]);
    ::close(out[1]);
    in_ = in[1];
    out_ = out[0];
    if (error != 0) {
        child_ = -1;
        throw std::system_error(error, std::generic_category(), program);
    }
}

TillProcess::~TillProcess()
{
    if (child_ > 0) {
        Kill();
        Reap();
    }
    ::close(in_);
    ::close(out_);
}

void TillProcess::Say(const std::string& line) const
{
    const std::string text = line + "\n";
    if (::write(in_, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        throw std::system_error(errno, std::generic_category(), "the till does not listen");
    }
}

std::optional<std::string> TillProcess::Next(std::chrono::milliseconds limit)
{
    const auto end = std::chrono::steady_clock::now() + limit;
    std::size_t feed = 0;
    while ((feed = text_.find('\n')) == std::string::npos) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now()).count();
        pollfd one{out_, POLLIN, 0};
        std::array<char, 4096> buffer{};
        if (left <= 0 || ::poll(&one, 1, static_cast<int>(left)) == 0) {
            return std::nullopt;
        }
        const ssize_t count = ::read(out_, buffer.data(), buffer.size());
        if (count == 0 || (count < 0 && errno != EINTR)) {
            return std::nullopt;
        }
        text_.append(buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
    std::string line = text_.substr(0, feed);
    text_.erase(0, feed + 1);
    return line;
}

void TillProcess::Kill() const
{
    ::kill(child_, SIGKILL);
}

int TillProcess::Reap()
{
    int status = 0;
    ::waitpid(std::exchange(child_, -1), &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

}  // namespace marbex::soak
