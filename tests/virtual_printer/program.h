#pragma once

// The program itself, as a script uses it.

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace marbex::virtual_printer {

using Json = nlohmann::json;

class Program {
public:
    explicit Program(std::vector<std::string> arguments)
    {
        std::array<int, 2> in{};
        std::array<int, 2> out{};
        std::array<int, 2> errors{};
        if (::pipe(in.data()) != 0 || ::pipe(out.data()) != 0 || ::pipe(errors.data()) != 0) {
            return;
        }
        arguments.insert(arguments.begin(), MARBEX_VIRTUAL_PRINTER);
        std::vector<char*> argv;
        for (std::string& argument : arguments) {
            argv.push_back(argument.data());
        }
        argv.push_back(nullptr);
        child_ = ::fork();
        if (child_ == 0) {
            ::dup2(in[0], 0);
            ::dup2(out[1], 1);
            ::dup2(errors[1], 2);
            ::close(in[1]);
            ::close(out[0]);
            ::execv(argv[0], argv.data());
            ::_exit(127);
        }
        ::close(in[0]);
        ::close(out[1]);
        ::close(errors[1]);
        errors_ = errors[0];
        in_ = in[1];
        out_ = out[0];
    }
    ~Program()
    {
        CloseInput();
        ::close(out_);
        ::close(errors_);
        if (child_ > 0) {
            ::kill(child_, SIGKILL);
            ::waitpid(child_, nullptr, 0);
        }
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    void Say(const std::string& line) const
    {
        const std::string text = line + "\n";
        ASSERT_EQ(::write(in_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    void CloseInput()
    {
        if (in_ >= 0) {
            ::close(in_);
            in_ = -1;
        }
    }
    // The next line of output; null when none comes.
    Json Next()
    {
        std::size_t end = 0;
        while ((end = text_.find('\n')) == std::string::npos) {
            pollfd one{out_, POLLIN, 0};
            std::array<char, 4096> buffer{};
            const ssize_t count = ::poll(&one, 1, 10000) > 0 ? ::read(out_, buffer.data(), buffer.size()) : 0;
            if (count <= 0) {
                return nullptr;
            }
            text_.append(buffer.data(), static_cast<std::size_t>(count));
        }
        Json json = Json::parse(text_.substr(0, end));
        json.erase("time");
        text_.erase(0, end + 1);
        return json;
    }
    Json NextNamed(const std::string& event)
    {
        Json json = Next();
        while (!json.is_null() && json["event"] != event) {
            json = Next();
        }
        return json;
    }
    int ExitStatus()
    {
        int status = 0;
        ::waitpid(std::exchange(child_, 0), &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    // What it has said on standard error by its end.
    std::string Complaint()
    {
        std::array<char, 4096> buffer{};
        for (ssize_t count = 0; (count = ::read(errors_, buffer.data(), buffer.size())) > 0;) {
            complaint_.append(buffer.data(), static_cast<std::size_t>(count));
        }
        return complaint_;
    }
    void Signal(int signal) const { ::kill(child_, signal); }

private:
    pid_t child_ = 0;
    int in_ = -1;
    int out_ = -1;
    int errors_ = -1;
    std::string text_;
    std::string complaint_;
};

inline int Connect(int port)
{
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    return fd;
}

inline void Send(int fd, std::string_view bytes)
{
    ASSERT_EQ(::write(fd, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
}

}  // namespace marbex::virtual_printer
