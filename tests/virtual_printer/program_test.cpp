// The program itself, as a script uses it: commands in, lines of JSON out, a picture of the paper.

#include <gtest/gtest.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "bytes.h"
#include "program.h"

namespace marbex::virtual_printer {
namespace {

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
                                    {"garbage", false},
                                    {"stopped", true},
                                    {"power", true},
                                    {"waiting_bytes", 9},
                                    {"received", 15}}));
    program.Say("cover close");
    EXPECT_EQ(
        program.Next(),
        (Json{{"event", "text"}, {"text", "prezzo é"}, {"align", "left"}, {"x", 0}, {"style", {{"bold", true}}}}));
    EXPECT_EQ(program.Next()["event"], "command");
    Send(fd, "\x1Bi\x07");
    EXPECT_EQ(program.Next(),
              (Json{{"event", "cut"}, {"kind", "full"}, {"piece", 1}, {"file", folder / "receipt-1.png"}}));
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

TEST(Program, FaultsHitTheByteTheyAreMeantFor)
{
    const auto file = std::filesystem::path(testing::TempDir()) / ("vprinter-all-" + std::to_string(::getpid()));
    Program program({"--tcp", "127.0.0.1:0", "--received", file});
    const int fd = Connect(program.Next()["port"]);
    for (const char* nonsense :
         {"at 5", "at x drop", "at 5 quit", "at 5 at 6 drop", "at 5 paper none", "after 3: drop", "after lines 3: drop",
          "after 2 lines drop", "at page 2: drop", "status all", "power cycle -1", "refuse x", "speed fast", "half no",
          "say", "say 100", "say xx", "jam on", "printing hold"}) {
        program.Say(nonsense);
        EXPECT_TRUE(program.NextNamed("command").contains("problem")) << nonsense;
    }
    program.Say("at 8 power cycle 1");
    EXPECT_FALSE(program.NextNamed("command").contains("problem"));
    Send(fd, "one\nand more\n");
    EXPECT_EQ(program.NextNamed("text")["text"], "one");
    EXPECT_EQ(program.Next(), (Json{{"event", "power_off"}, {"lost", 4}, {"from", 4}, {"received", 8}}));
    EXPECT_EQ(program.Next(), (Json{{"event", "disconnected"}, {"unread", 5}}));
    EXPECT_EQ(program.Next(), (Json{{"event", "command"}, {"command", "power cycle 1"}, {"at", 8}}));
    EXPECT_EQ(program.Next(), (Json{{"event", "power_on"}, {"missed", 0}}));
    program.Say("at 7 drop");
    EXPECT_EQ(program.Next()["problem"], "8 bytes have been received already");
    program.Say(std::string(200000, 'x'));
    EXPECT_EQ(program.Next()["problem"], "no such command");
    program.Say("quit");
    EXPECT_EQ(program.ExitStatus(), 0);
    std::string received;
    std::getline(std::ifstream(file), received, '\0');
    EXPECT_EQ(received, "one\nand ");
    ::close(fd);
    std::filesystem::remove(file);
}

// Standard input is empty, as of a service; the commands come over the socket, in pieces too.
TEST(Program, TakesCommandsOverASocketAndAnswersThere)
{
    const std::string path = testing::TempDir() + "control-" + std::to_string(::getpid());
    Program program(
        {"--model", "TALIS", "--tcp", "127.0.0.1:0", "--model", "BRISA", "--tcp", "127.0.0.1:0", "--control", path});
    EXPECT_EQ(program.NextNamed("listening")["printer"], 1);
    EXPECT_EQ(program.NextNamed("listening")["printer"], 2);
    program.CloseInput();
    const auto connect = [&path] {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof(address.sun_path) - 1);
        const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
        EXPECT_EQ(::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
        return fd;
    };
    const auto answer = [](int fd) {
        std::string line;
        char byte = 0;
        while (::read(fd, &byte, 1) == 1 && byte != '\n') {
            line.push_back(byte);
        }
        return line.empty() ? Json() : Json::parse(line);
    };
    const int first = connect();
    const int second = connect();
    Send(second, "2 paper");
    Send(first, "cover open\nstatus\n");
    EXPECT_EQ(answer(first)["command"], "cover open");
    EXPECT_EQ(answer(first)["cover"], "open");
    Send(second, " none\r\n2 paper low");
    EXPECT_TRUE(answer(second).contains("problem"));
    ::shutdown(second, SHUT_WR);
    EXPECT_EQ(answer(second), (Json{{"printer", 2}, {"event", "command"}, {"command", "paper low"}}));
    EXPECT_TRUE(answer(second).is_null()) << "closed";
    Send(first, "quit\n");
    EXPECT_EQ(program.ExitStatus(), 0);
    EXPECT_NE(::access(path.c_str(), F_OK), 0);
    ::close(first);
    ::close(second);
    std::ofstream(path) << "a file of somebody";
    EXPECT_EQ(Program({"--tcp", "127.0.0.1:0", "--control", path}).ExitStatus(), 1);
    std::filesystem::remove(path);
}

class Script : public testing::Test {
protected:
    std::string Write(const std::string& text) const
    {
        std::ofstream(file_) << text;
        return file_;
    }
    void TearDown() override { std::filesystem::remove(file_); }

private:
    std::string file_ = testing::TempDir() + "script-" + std::to_string(::getpid());
};

// Each step takes effect at its byte, however much of the stream arrives at once.
TEST_F(Script, GoesThroughItsStepsEachInItsTime)
{
    Program program({"--tcp", "127.0.0.1:0", "--script",
                     Write("# the roll ends, and is changed\n"
                           "after 3 lines: paper out\n\nwait 20 ms\n  paper ok\n"
                           "at cut 1: garbage on\nafter 3 bytes: garbage off\nstatus half\n"
                           "at cut 1: paper out\nat cut 2: power cycle 1\n")});
    const int fd = Connect(program.Next()["port"]);
    const auto text = [&program] { return program.NextNamed("text")["text"]; };
    const auto command = [&program] {
        const Json json = program.NextNamed("command");
        return json["command"].get<std::string>() + " at " + std::to_string(json["at"].get<int>()) + " line " +
               std::to_string(json["script_line"].get<int>());
    };
    Send(fd, "1\n2\n3\n4\n");
    EXPECT_EQ(text(), "1");
    EXPECT_EQ(text(), "2");
    EXPECT_EQ(program.Next()["text"], "3");
    EXPECT_EQ(command(), "paper out at 6 line 2");
    EXPECT_EQ(program.NextNamed("text")["text"], "4") << "when there is paper again";
    EXPECT_EQ(command(), "paper ok at 8 line 5");
    Send(fd, "\x1Bi\x10\x04\x01\x10\x04\x14\x10\x04\x01");
    EXPECT_EQ(command(), "garbage on at 10 line 6");
    EXPECT_EQ(program.Next()["answer"], "ED");
    EXPECT_EQ(command(), "garbage off at 13 line 7");
    EXPECT_EQ(command(), "status half at 13 line 8");
    const Json tooLate = program.Next();
    EXPECT_EQ(tooLate["script_line"], 9);
    EXPECT_EQ(tooLate.value("problem", ""), "") << "there has been no second cut";
    EXPECT_EQ(program.NextNamed("status_query")["answer"], "10 0F 05");
    Send(fd, "5\n");
    program.Say("paper ok");
    EXPECT_EQ(text(), "5");
    Send(fd,
         "a\x1Bi"
         "b\n");
    EXPECT_EQ(program.NextNamed("power_off")["lost"], 0);
    EXPECT_EQ(program.NextNamed("disconnected")["unread"], 2);
    ::close(fd);
}

TEST_F(Script, SaysInWhichLineItIsWrong)
{
    for (const char* wrong : {"dance", "wait 2", "wait 2 h", "wait -1 s", "after 3 lines: dance", "jam on", "quit"}) {
        Program program({"--tcp", "127.0.0.1:0", "--script", Write("cover open\n\n" + std::string(wrong) + "\n")});
        EXPECT_EQ(program.ExitStatus(), 64) << wrong;
        EXPECT_NE(program.Complaint().find(", line 3: " + std::string(wrong)), std::string::npos)
            << program.Complaint();
    }
    EXPECT_EQ(Program({"--tcp", "127.0.0.1:0", "--script", "/nonexistent"}).ExitStatus(), 64);
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
    Program asked({"--tcp", "localhost:0"});
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
             {"--tcp", "127.0.0.1:0", "--buffer", "1"},
             {"--tcp", "127.0.0.1:0", "--terminal", "/tmp/x"},
         }) {
        Program program(arguments);
        EXPECT_EQ(program.ExitStatus(), 64) << arguments.back();
    }
    EXPECT_EQ(Program({"--tcp", "256.0.0.1:0"}).ExitStatus(), 1) << "a place that cannot be had";
    EXPECT_EQ(Program({"--version"}).ExitStatus(), 0);
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
