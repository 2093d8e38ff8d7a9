// Several tills of one machine that write one communication log.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <map>

#include "comm/com_layer_log.h"
#include "comm/comm_log_file.h"
#include "common/wait_until.h"
#include "other_processes.h"

namespace marbex::comm {
namespace {

constexpr const char* kTill = "MARBEX_TEST_TILL";  // of such a process: its log, a blank, its number
constexpr int kTills = 3;
constexpr int kLines = 200;
constexpr std::uintmax_t kLimit = 1 << 20;

// A till: it waits for the others and writes.
void WriteAsTill(const std::string& path, const std::string& number)
{
    CComLayerLog log;
    log.SetMode(kLogToFile, kLogProgress);
    log.SetLimit(1);
    ASSERT_EQ(log.SetPath(path.c_str()), 1);
    std::ofstream(path + ".till" + number).close();
    for (int other = 0; other < kTills; ++other) {
        test::WaitUntil([&] { return std::filesystem::exists(path + ".till" + std::to_string(other)); },
                        std::chrono::seconds(60));
    }
    for (int i = 0; i < kLines; ++i)
        log.Write("Till " + number, std::to_string(i) + "\n", kLogProgress);
}

// The log is full while they all write, so that each of them would set it aside.
TEST(SharedLog, NoLineIsLostWhenItBeginsAnew)
{
    if (const char* till = std::getenv(kTill)) {
        const std::string which = till;
        WriteAsTill(which.substr(0, which.rfind(' ')), which.substr(which.rfind(' ') + 1));
        return;
    }
    constexpr std::size_t kLineSize = 27 + 6 + 1 + 4;
    for (int round = 0; round < 3; ++round) {
        const tests::TemporaryFolder folder;
        const std::string path = folder.File("comm.log");
        // Full when half of the lines are written.
        const std::string before(kLimit - kTills * kLines * kLineSize / 2, '=');
        std::ofstream(path, std::ios::binary) << before << '\n';
        std::vector<std::string> tills;
        for (int i = 0; i < kTills; ++i)
            tills.push_back(path + " " + std::to_string(i));
        ASSERT_TRUE(tests::RunInOtherProcesses("SharedLog.NoLineIsLostWhenItBeginsAnew", kTill, tills));

        EXPECT_GE(std::filesystem::file_size(path + ".1"), kLimit);
        std::map<std::string, int> times;
        for (const std::string& file : {path + ".1", path}) {
            for (const std::string& line : tests::ReadLogLines(file))
                ++times[line];
        }
        EXPECT_EQ(times.size(), 1U + kTills * kLines);
        for (int till = 0; till < kTills; ++till) {
            for (int i = 0; i < kLines; ++i)
                ASSERT_EQ(times["Till " + std::to_string(till) + " " + std::to_string(i)], 1) << till << ", " << i;
        }
    }
}

TEST(SharedLog, ReplacesAnOlderOneAndGoesOnWhereItCannot)
{
    const tests::TemporaryFolder folder;
    const std::string path = folder.File("comm.log");
    const std::string full(kLimit, '=');
    std::ofstream(path, std::ios::binary) << full << '\n';
    std::ofstream(path + ".1") << "older";
    CComLayerLog log;
    log.SetMode(kLogToFile, kLogProgress);
    ASSERT_EQ(log.SetPath(path.c_str()), 1);
    log.Write("", "no limit\n", kLogProgress);
    log.SetLimit(1);
    log.Write("", "anew\n", kLogProgress);
    log.Write("", "on\n", kLogProgress);
    EXPECT_EQ(tests::ReadLog(path), " anew\n on\n") << "and nothing in front of it";
    EXPECT_EQ(tests::ReadLogLines(path + ".1").back(), " no limit");

    std::filesystem::remove(path + ".1");
    std::filesystem::create_directory(path + ".1");
    std::ofstream(path, std::ios::binary) << full << '\n';
    log.Write("", "on and on\n", kLogProgress);
    EXPECT_EQ(tests::ReadLogLines(path).back(), " on and on");
    EXPECT_GT(std::filesystem::file_size(path), kLimit);
}

}  // namespace
}  // namespace marbex::comm
