#include "support/service_log.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <thread>
#include <vector>

#include "platform/files.h"
#include "temp_registry.h"

namespace marbex::support {
namespace {

using tests::TempRegistry;

constexpr const char* kFile = "drive_c/SOLogFile1.txt";

std::vector<std::string> LinesOf(const std::string& contents)
{
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < contents.size();) {
        const std::size_t end = contents.find("\r\n", at);
        lines.push_back(contents.substr(at, end - at));
        if (end == std::string::npos) break;
        at = end + 2;
    }
    return lines;
}

// The lines without their time stamps; a line that does not begin with one says so.
std::vector<std::string> MessagesOf(const std::string& contents)
{
    constexpr std::string_view kStamp = "[0000/00/00 00:00:00:0000]";
    std::vector<std::string> messages = LinesOf(contents);
    for (std::string& line : messages) {
        std::string form = line.substr(0, kStamp.size());
        for (char& c : form)
            c = c >= '0' && c <= '9' ? '0' : c;
        line = form == kStamp ? line.substr(kStamp.size()) : "no time stamp: " + line;
    }
    return messages;
}

using Messages = std::vector<std::string>;

TEST(ServiceLog, WritesStampedLinesAndKeepsEarlierOnes)
{
    const TempRegistry registry;
    LogWrite("[Early] dropped");
    LogOpen(registry.Drive(), 1, 0, 1);
    LogWrite("[TalisPOSPrinter] PrintNormal Begin (%d, %s)", 2, "ABC");
    LogOpen(registry.Drive(), 1, 0, 1);
    const char* volatile none = nullptr;  // volatile: a compiler that sees the null refuses the call
    LogWrite("[OpenService] %s", none);
    LogClose();
    LogWrite("[Late] dropped");
    EXPECT_EQ(MessagesOf(registry.ContentsBelow(kFile)),
              (Messages{"[TalisPOSPrinter] PrintNormal Begin (2, ABC)", "[OpenService] (null)"}));
    EXPECT_TRUE(registry.ContentsBelow(kFile).ends_with("\r\n"));
}

TEST(ServiceLog, CutsLinesAt124Characters)
{
    const TempRegistry registry;
    LogOpen(registry.Drive() + "\\", 1, 0, 1);
    for (const std::size_t length : {98u, 99u, 100u, 300u, 70000u})
        LogWrite("%s", std::string(length, 'x').c_str());
    LogClose();
    std::vector<std::size_t> lengths;
    for (const std::string& line : LinesOf(registry.ContentsBelow(kFile)))
        lengths.push_back(line.size());
    EXPECT_EQ(lengths, (std::vector<std::size_t>{124, 124, 124, 124, 124}));

    LogOpen(registry.Folder(), 1, 0, 2);
    LogWrite("%s", std::string(97, 'x').c_str());
    LogClose();
    EXPECT_EQ(registry.ContentsBelow("SOLogFile2.txt").size(), 26u + 97u + 2u);
}

TEST(ServiceLog, LevelChoosesTheDebugger)
{
    const TempRegistry registry;
    static std::string captured;
    captured.clear();
    platform::CaptureDebugOutput([](std::string_view text) {
        captured += text;
        // A debugger's reader may itself log or close the log: no lock is held while it is told.
        if (captured.size() < 200) LogClose();
    });
    LogOpen(registry.Drive(), 1, 2, 1);
    LogWrite("[A] one");
    LogOpen(registry.Drive(), 0, 2, 1);
    LogWrite("[A] two");
    platform::CaptureDebugOutput(nullptr);
    EXPECT_EQ(MessagesOf(captured), Messages{"[A] one"});
    EXPECT_FALSE(platform::FileExists(registry.Drive() + "\\SOLogFile1.txt"));
}

TEST(ServiceLog, AFolderThatIsMissingLosesTheLinesOnly)
{
    const TempRegistry registry;
    LogOpen(registry.Drive() + "\\missing", 1, 0, 1);
    LogWrite("[A] lost");
    LogOpen(registry.Drive(), 1, 0, 1);
    LogWrite("[A] kept");
    LogClose();
    EXPECT_EQ(LinesOf(registry.ContentsBelow(kFile)).size(), 1u);
}

TEST(ServiceLog, BeginsAnewAtItsLimit)
{
    constexpr std::size_t kMegabyte = 1 << 20;
    const TempRegistry registry;
    const std::string file = registry.Folder() + "/SOLogFile1.txt";
    const auto fill = [&file](std::size_t bytes) { std::ofstream(file, std::ios::binary) << std::string(bytes, '='); };
    std::ofstream(file + ".1") << "older";
    fill(kMegabyte - 1);
    LogOpen(registry.Folder(), 1, 0, 1, 1);
    LogWrite("[A] one");
    LogWrite("[A] two");
    EXPECT_TRUE(registry.ContentsBelow("SOLogFile1.txt.1").ends_with("[A] one\r\n"));
    LogWrite("[A] three");
    LogClose();
    EXPECT_EQ(MessagesOf(registry.ContentsBelow("SOLogFile1.txt")), (Messages{"[A] two", "[A] three"}));

    // Where it cannot have its other name it goes on, and tries again in time.
    std::filesystem::remove(file + ".1");
    std::filesystem::create_directory(file + ".1");
    fill(kMegabyte);
    LogOpen(registry.Folder(), 1, 0, 1, 1);
    LogWrite("[A] four");
    LogWrite("[A] five");
    EXPECT_TRUE(registry.ContentsBelow("SOLogFile1.txt").ends_with("[A] five\r\n"));
    EXPECT_GT(std::filesystem::file_size(file), kMegabyte);
    std::filesystem::remove(file + ".1");
    for (int i = 0; i < 1000 && !std::filesystem::exists(file + ".1"); ++i)
        LogWrite("%s", std::string(98, 'x').c_str());
    LogClose();
    EXPECT_NE(registry.ContentsBelow("SOLogFile1.txt.1").find("[A] four"), std::string::npos);
    EXPECT_LT(std::filesystem::file_size(file), 1000U);
}

// A spool thread that logs while the application closes the device must neither write into a closed file nor tear a
// line.
TEST(ServiceLog, ThreadsWriteWhileItIsSwitched)
{
    const TempRegistry registry;
    constexpr int kThreads = 4;
    constexpr int kLines = 500;
    LogOpen(registry.Drive(), 1, 0, 1);
    std::vector<std::thread> threads;
    std::atomic<int> running = kThreads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([t, &running] {
            for (int i = 0; i < kLines; ++i)
                LogWrite("[T%d] %s", t, std::string(60, static_cast<char>('a' + t)).c_str());
            --running;
        });
    }
    do {
        LogClose();
        LogOpen(registry.Drive(), 1, 0, 1);
        LogWrite("[T0] %s", std::string(60, 'a').c_str());
    } while (running > 0);
    for (std::thread& thread : threads)
        thread.join();
    LogWrite("[last]");
    LogClose();

    const std::vector<std::string> lines = LinesOf(registry.ContentsBelow(kFile));
    for (std::size_t i = 0; i + 1 < lines.size(); ++i) {
        const std::string& line = lines[i];
        ASSERT_EQ(line.size(), 26u + 5u + 60u) << line;
        const char letter = static_cast<char>('a' + (line[28] - '0'));
        ASSERT_EQ(line.substr(31), std::string(60, letter));
    }
    EXPECT_TRUE(lines.back().ends_with("[last]"));
    EXPECT_GT(lines.size(), 1u);
}

}  // namespace
}  // namespace marbex::support
