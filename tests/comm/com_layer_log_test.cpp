#include "comm/com_layer_log.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "comm/comm_log_file.h"
#include "platform/files.h"

namespace marbex::comm {
namespace {

using tests::ReadLog;
using tests::ReadLogLines;
using tests::TemporaryFolder;

constexpr const char* kHeader = " =====================Log file succesfully created=====================\n";

TEST(ComLayerLog, WritesStampPrefixAndMessageAsTheyAre)
{
    const TemporaryFolder folder;
    const std::string path = folder.File("comm.log");
    CComLayerLog log;
    log.SetMode(kLogToFile, 12);
    ASSERT_EQ(log.SetPath(path.c_str()), 1);
    log.Write("Prefix %d - ", "100% \"%s%n\"\n", kLogErrors);
    EXPECT_EQ(ReadLog(path), std::string(kHeader) + "Prefix %d -  100% \"%s%n\"\n");
}

TEST(ComLayerLog, MaskChoosesTheLevels)
{
    const TemporaryFolder folder;
    for (const uint32_t mask : {0U, 12U, 13U, 15U}) {
        const std::string path = folder.File("mask" + std::to_string(mask));
        std::ofstream(path).close();
        CComLayerLog log;
        log.SetMode(kLogToFile, mask);
        log.SetPath(path.c_str());
        std::string expected;
        for (const uint32_t level : {1U, 2U, 4U, 8U}) {
            log.Write("", std::to_string(level) + "\n", level);
            if ((mask & level) != 0) expected += " " + std::to_string(level) + "\n";
        }
        EXPECT_EQ(ReadLog(path), expected) << mask;
    }
}

TEST(ComLayerLog, MakesTheFileOnceAndKeepsWhatIsThere)
{
    const TemporaryFolder folder;
    const std::string path = folder.File("comm.log");
    for (int device = 0; device < 2; ++device) {
        CComLayerLog log;
        log.SetMode(kLogToFile, 12);
        EXPECT_EQ(log.SetPath(path.c_str()), 1);
        log.Write("D - ", std::to_string(device) + "\n", kLogProgress);
    }
    EXPECT_EQ(ReadLog(path), std::string(kHeader) + "D -  0\nD -  1\n");
}

TEST(ComLayerLog, RefusesPathsThatCannotBeAndKeepsTheFormerOne)
{
    const TemporaryFolder folder;
    const std::string path = folder.File("comm.log");
    CComLayerLog log;
    log.SetMode(kLogToFile, 12);
    ASSERT_EQ(log.SetPath(path.c_str()), 1);
    EXPECT_EQ(log.SetPath(nullptr), 0);
    EXPECT_EQ(log.SetPath(""), 0);
    const std::string longest = folder.Path() + "/" + std::string(199 - folder.Path().size() - 1, 'p');
    EXPECT_EQ(log.SetPath((longest + "p").c_str()), 0);
    log.Write("", "kept\n", kLogErrors);
    EXPECT_EQ(ReadLogLines(path).back(), " kept");
    EXPECT_EQ(log.SetPath(longest.c_str()), 1);
    EXPECT_TRUE(std::filesystem::exists(longest));
    EXPECT_EQ(log.SetPath(folder.File("no/such/folder.log").c_str()), 0);
    log.Write("", "lost without notice\n", kLogErrors);
}

std::string debuggerOutput;

TEST(ComLayerLog, DebuggerDestinationTouchesNoFile)
{
    const TemporaryFolder folder;
    const std::string path = folder.File("comm.log");
    debuggerOutput.clear();
    platform::CaptureDebugOutput([](std::string_view text) { debuggerOutput += text; });
    CComLayerLog log;
    log.SetMode(kLogToDebugger, 12);
    EXPECT_EQ(log.SetPath(path.c_str()), 1);
    log.Write("P - ", "seen\n", kLogProgress);
    log.SetMode(kLogToNothing, 15);
    EXPECT_EQ(log.SetPath(path.c_str()), 1);
    log.Write("P - ", "unseen\n", kLogProgress);
    platform::CaptureDebugOutput(nullptr);
    ASSERT_TRUE(tests::HasStamp(debuggerOutput)) << debuggerOutput;
    EXPECT_EQ(debuggerOutput.substr(27), "P -  seen\n");
    EXPECT_FALSE(std::filesystem::exists(path));
}

// Two devices share a file; a line without its end used to swallow the next one.
TEST(ComLayerLog, EveryLineEnds)
{
    const TemporaryFolder folder;
    const std::string path = folder.File("comm.log");
    std::ofstream(path).close();
    CComLayerLog log;
    log.SetMode(kLogToFile, 12);
    log.SetPath(path.c_str());
    // Stamp 26, two blanks, prefix 3, message with its line feed.
    log.Write("P -", std::string(267, 'm') + "\n", kLogErrors);
    log.Write("P -", std::string(268, 'n') + "\n", kLogErrors);
    log.Write("P -", std::string(267, 'o'), kLogErrors);
    log.Write("P -", std::string(268, 'p'), kLogErrors);
    log.Write("P -", "short", kLogErrors);
    std::ifstream file(path);
    std::string ends;
    for (std::string line; std::getline(file, line);)
        ends += line.back() + std::to_string(line.size()) + " ";
    EXPECT_EQ(ends, "m298 n298 o298 p298 t36 ");
    EXPECT_EQ(std::filesystem::file_size(path), 4U * 299 + 37);
}

}  // namespace
}  // namespace marbex::comm
