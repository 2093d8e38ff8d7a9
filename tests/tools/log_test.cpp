// The two logs of a till as one: their order, the bytes by their names, errors by their reasons, and how they grow.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>

#include "marbex_opos/log/log_merge.h"
#include "temp_registry.h"

namespace marbex::tools {
namespace {

class LogMergeTest : public ::testing::Test {
protected:
    std::string Service() const { return registry_.Folder() + "/SOLogFile1.txt"; }
    std::string Link() const { return registry_.Folder() + "/COposComm1.log"; }
    // Appends a line of a millisecond.
    void Service(int when, const std::string& text) { Append(Service(), when, "", text + "\r\n"); }
    void Link(int when, const std::string& text) { Append(Link(), when, " ", text + " \n"); }
    void Bytes(int when, const std::string& direction, const std::string& bytes)
    {
        const bool isSent = direction == "Send";
        const std::string count = std::to_string(bytes.size());
        Link(when, isSent ? "W -  Bytes to send: " + count + ", packet byte used:1" : "R -  Receive buffer size: 64");
        Link(when, isSent ? "W -  " + count + " bytes to write:" : "R -  " + count + " bytes read:");
        for (std::size_t at = 0; at < bytes.size(); ++at) {
            char line[64];
            std::snprintf(line, sizeof line, "X -  %sBuffer[0x%02x]=0x%02x", direction.c_str(),
                          static_cast<unsigned>(at), static_cast<unsigned char>(bytes[at]));
            Link(when, line);
        }
    }

    // What there is to read now: "5 -> LF  print the line", errors with their reasons behind.
    std::vector<std::string> Read()
    {
        if (!merge_) merge_.emplace(registry_.Folder());
        std::vector<std::string> lines;
        while (true) {
            const std::vector<LogEntry> entries = merge_->Next();
            if (entries.empty()) return lines;
            for (const LogEntry& entry : entries) {
                static constexpr const char* kMarks[] = {"", "-- ", "-> ", "<- "};
                lines.push_back(std::to_string(std::stoi(entry.stamp.substr(20))) + " " +
                                kMarks[static_cast<int>(entry.origin)] + entry.text +
                                (entry.isError ? " ! " + entry.reason : ""));
            }
        }
    }

    tests::TempRegistry registry_;

private:
    static void Append(const std::string& file, int when, const std::string& blank, const std::string& text)
    {
        char stamp[40];
        std::snprintf(stamp, sizeof stamp, "[2026/11/23 21:00:00:%04d]", when);
        std::ofstream(file, std::ios::binary | std::ios::app) << stamp << blank << text;
    }

    std::optional<LogMerge> merge_;
};

using Lines = std::vector<std::string>;

TEST_F(LogMergeTest, PutsThemInOrderAndNamesWhatIsOnTheWire)
{
    Service(2, "[T] PrintNormal Begin");
    Link(1, "Open -  Calling function in ethernet class");
    Link(1, "CNuComEth::OpenEth -  TCP connect successful with 10.0.0.1");
    Bytes(2, "Send", "\x1B!\x08Hi\xE9\n\x10\x04\x14\x1DI\x01");
    Bytes(3, "Receive", "\x10\x0F\x05\x03" + std::string(2, '\0'));
    Bytes(4, "Receive", "\xB9");
    Bytes(5, "Send", "\x1B");  // a command in two writes
    Bytes(6, "Send", "i");
    Link(7, "W -  Bytes to send: 12, packet byte used:12");  // of a log without the bytes
    Service(8, "[T] PrintNormal End");
    EXPECT_EQ(Read(),
              (Lines{"1 -- CNuComEth::OpenEth -  TCP connect successful with 10.0.0.1", "2 [T] PrintNormal Begin",
                     "2 -> ESC ! 8  print mode: bold", "2 -> text  \"Hi\\xE9\"", "2 -> LF  print the line",
                     "2 -> DLE EOT 20  asks for the whole status", "2 -> GS I 1  asks who the printer is",
                     "3 <- 10 0F 05 03 00 00  status: cover open, no paper", "4 <- B9  identity: BRISA",
                     "6 -> ESC i  full cut", "7 -> 12 bytes", "8 [T] PrintNormal End"}));
}

TEST_F(LogMergeTest, SaysWhatLiesBehindAnError)
{
    Service(1, "[T] SetErrorCode Begin (112, 0)");  // at the beginning of a method that then succeeds
    Service(1, "[T] SetErrorCode End");
    Service(1, "[T] SetErrorCode Begin (0, 0)");
    Service(2, "[T] SetErrorCode Begin (102, 0)");
    Service(2, "[T] SetErrorCode End");
    Service(2, "[T] ClaimDevice End");
    Service(3, "[S] --- DoJob Printer Error 13172850");
    Link(4, "CNuComEth::ReadTCP -  Read failed: no bytes read during reading operation");
    Link(4, "AdvSetSerialDTR -  Serial function failed: a different com type has been setted");
    Lines errors = Read();
    std::erase_if(errors, [](const std::string& line) { return line.find(" ! ") == std::string::npos; });
    EXPECT_EQ(errors,
              (Lines{"2 [T] SetErrorCode Begin (102, 0) ! 102 (OPOS_E_CLAIMED)",
                     "3 [S] --- DoJob Printer Error 13172850 ! 114 (OPOS_E_EXTENDED), 201 (OPOS_EPTR_COVER_OPEN)",
                     "4 -- CNuComEth::ReadTCP -  Read failed: no bytes read during reading operation ! "
                     "the printer did not answer in time (TimeoutRX)"}));
}

TEST_F(LogMergeTest, FollowsThemAlsoWhenTheyBeginAnew)
{
    Service(1, "one");
    EXPECT_EQ(Read(), Lines{"1 one"});
    EXPECT_EQ(Read(), Lines{});
    Service(2, "two");
    Link(2, "both");
    EXPECT_EQ(Read(), (Lines{"2 two", "2 -- both"}));
    Service(3, "the last before");
    std::filesystem::rename(Service(), Service() + ".1");
    Service(4, "new");
    EXPECT_EQ(Read(), (Lines{"3 the last before", "4 new"}));
    std::ofstream(Service(), std::ios::app) << "[2026/11/23 21:00:00:0005]ha";
    EXPECT_EQ(Read(), Lines{}) << "a line that is being written";
    std::ofstream(Service(), std::ios::app) << "lf\r\n";
    EXPECT_EQ(Read(), Lines{"5 half"});
}

}  // namespace
}  // namespace marbex::tools
