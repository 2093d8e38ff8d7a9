// The program itself, as a script uses it: commands in, lines of JSON out, a picture of the paper.

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "bytes.h"

namespace marbex::virtual_printer {
namespace {

using Json = nlohmann::json;

class Program {
public:
    explicit Program(std::vector<std::string> arguments)
    {
        std::array<int, 2> in{};
        std::array<int, 2> out{};
        if (::pipe(in.data()) != 0 || ::pipe(out.data()) != 0) {
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
            ::close(in[1]);
            ::close(out[0]);
            ::execv(argv[0], argv.data());
            ::_exit(127);
        }
        ::close(in[0]);
        ::close(out[1]);
        in_ = in[1];
        out_ = out[0];
    }
    ~Program()
    {
        CloseInput();
        ::close(out_);
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
        const Json json = Json::parse(text_.substr(0, end));
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
    void Signal(int signal) const { ::kill(child_, signal); }

private:
    pid_t child_ = 0;
    int in_ = -1;
    int out_ = -1;
    std::string text_;
};

int Connect(int port)
{
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    return fd;
}

void Send(int fd, std::string_view bytes)
{
    ASSERT_EQ(::write(fd, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
}

TEST(Program, TellsWhatHappensAndTakesCommands)
{
    const auto folder = std::filesystem::path(testing::TempDir()) / ("vprinter-" + std::to_string(::getpid()));
    std::filesystem::create_directories(folder);
    const std::string picture = folder / "receipt.png";
    const std::string portFile = folder / "port";
    Program program(
        {"--model", "talis", "--tcp", "127.0.0.1:0", "--paper", picture, "--cut-files", "--port-file", portFile});
    const Json first = program.Next();
    ASSERT_EQ(first["event"], "listening");
    const int fd = Connect(first["port"]);
    EXPECT_EQ(program.Next()["event"], "connected");
    int port = 0;
    std::ifstream(portFile) >> port;
    EXPECT_EQ(port, first["port"]);

    program.Say("cover open");
    EXPECT_EQ(program.Next(), (Json{{"event", "command"}, {"command", "cover open"}}));
    Send(fd, "\x1B!\x08prezzo \x82\n\x10\x04\x14");
    EXPECT_EQ(program.Next(), (Json{{"event", "status_query"}, {"kind", 20}, {"answer", "10 0F 00 03 00 00"}}));
    program.Say("status");
    EXPECT_EQ(program.Next(), (Json{{"event", "status"},
                                    {"cover", "open"},
                                    {"paper", "ok"},
                                    {"jam", false},
                                    {"mute", false},
                                    {"stopped", true},
                                    {"waiting_bytes", 9}}));
    program.Say("cover close");
    EXPECT_EQ(
        program.Next(),
        (Json{{"event", "text"}, {"text", "prezzo é"}, {"align", "left"}, {"x", 0}, {"style", {{"bold", true}}}}));
    EXPECT_EQ(program.Next()["event"], "command");
    Send(fd, "\x1Bi\x07");
    EXPECT_EQ(program.Next(), (Json{{"event", "cut"}, {"kind", "full"}}));
    EXPECT_EQ(program.Next(), (Json{{"event", "unknown"}, {"bytes", "07"}, {"why", "control character"}}));
    EXPECT_TRUE(std::filesystem::exists(folder / "receipt-1.png"));
    program.Say("dance");
    EXPECT_EQ(program.Next()["problem"], "no such command");
    program.Say("drop");
    EXPECT_EQ(program.NextNamed("disconnected")["event"], "disconnected");
    program.Say("quit");
    EXPECT_EQ(program.NextNamed("command")["command"], "drop");
    EXPECT_EQ(program.NextNamed("command")["command"], "quit");
    EXPECT_EQ(program.ExitStatus(), 0);
    EXPECT_GT(std::filesystem::file_size(picture), 200U);
    ::close(fd);
    std::filesystem::remove_all(folder);
}

TEST(Program, PrintsAllThatHasArrivedBeforeItEnds)
{
    const auto file =
        std::filesystem::path(testing::TempDir()) / ("vprinter-commands-" + std::to_string(::getpid()) + ".bin");
    Program program({"--tcp", "127.0.0.1:0", "--commands", file});
    const int fd = Connect(program.Next()["port"]);
    std::string commands;
    for (int i = 0; i < 10000; ++i)
        commands += "\x1B!\x08";
    Send(fd, commands);
    ::close(fd);
    program.Say("quit");
    EXPECT_EQ(program.ExitStatus(), 0);
    EXPECT_EQ(std::filesystem::file_size(file), commands.size());
    std::filesystem::remove(file);
}

TEST(Program, EndsWithItsInputAndAtASignal)
{
    Program closed({"--serial", "--model", "CORVO"});
    EXPECT_TRUE(closed.Next().contains("serial"));
    closed.CloseInput();
    EXPECT_EQ(closed.ExitStatus(), 0);
    Program asked({"--tcp", "127.0.0.1:0"});
    EXPECT_EQ(asked.Next()["event"], "listening");
    asked.Signal(SIGTERM);
    EXPECT_EQ(asked.ExitStatus(), 0);
}

TEST(Program, RefusesArgumentsThatMakeNoSense)
{
    for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
             {"--model", "TALIS"},
             {"--model", "NOBODY", "--tcp", "127.0.0.1:0"},
             {"--tcp", "9100"},
             {"--tcp", "127.0.0.1:70000"},
             {"--tcp", "127.0.0.1:0", "--serial"},
             {"--tcp", "127.0.0.1:0", "--cut-files"},
             {"--tcp", "256.0.0.1:0"},
         }) {
        Program program(arguments);
        EXPECT_NE(program.ExitStatus(), 0) << arguments.back();
    }
}

// Thousands of lines stay within the memory kept for them, and the picture of what is left is whole.
TEST(Paper, ForgetsTheBeginningOfAVeryLongRoll)
{
    Paper paper(64);
    const std::vector<uint8_t> row{0x80, 0, 0, 0, 0, 0, 0, 0x01};
    for (std::size_t i = 0; i < Paper::kMaxRows + 1000; ++i) {
        paper.Append(row);
        if (i % 100000 == 0) {
            paper.Cut(true);
        }
    }
    EXPECT_LE(paper.Rows(), Paper::kMaxRows);
    EXPECT_GT(paper.FirstPage(), 1U);
    EXPECT_TRUE(paper.Dot(0, 0, 0));
    EXPECT_TRUE(paper.Dot(0, 63, 0));
    EXPECT_FALSE(paper.Dot(0, 1, 0));
    const std::string file = testing::TempDir() + "long.png";
    EXPECT_TRUE(paper.Save(file));
    EXPECT_FALSE(paper.Save("/nonexistent/long.png"));
    EXPECT_FALSE(paper.Save("/dev/full/long.png"));
    std::remove(file.c_str());
}

}  // namespace
}  // namespace marbex::virtual_printer
