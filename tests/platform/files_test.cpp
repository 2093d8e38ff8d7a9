#include "platform/files.h"

#include <gtest/gtest.h>

#include "platform/clock.h"
#include "temp_registry.h"

namespace marbex::platform {
namespace {

using tests::TempRegistry;

TEST(Files, AppendKeepsWhatIsThere)
{
    const TempRegistry registry;
    const std::string path = registry.Drive() + "\\a.log";
    ASSERT_TRUE(OpenForAppend(path, OtherWriters::kRefused)->Append("one\n"));
    {
        const auto file = OpenForAppend(path, OtherWriters::kRefused);
        ASSERT_TRUE(file);
        EXPECT_TRUE(file->Append("two\n"));
        EXPECT_EQ(ReadWholeFile(path, 8), "one\ntwo\n") << "read while it is open";
        EXPECT_TRUE(file->Append("three\n"));
    }
    EXPECT_EQ(registry.ContentsBelow("drive_c/a.log"), "one\ntwo\nthree\n");
    EXPECT_EQ(ReadWholeFile(path, 14), "one\ntwo\nthree\n");
    EXPECT_FALSE(ReadWholeFile(path, 13));
    EXPECT_TRUE(FileExists(path));
    EXPECT_TRUE(CreateEmptyFile(path));
    EXPECT_EQ(ReadWholeFile(path, 14), "");
}

TEST(Files, FolderAndMissingFile)
{
    const TempRegistry registry;
    const std::string drive = registry.Drive();
    EXPECT_EQ(OpenForAppend(drive + "\\missing\\a.log", OtherWriters::kRefused), nullptr);
    EXPECT_FALSE(FileExists(drive));
    EXPECT_FALSE(FileExists(drive + "\\a"));
    EXPECT_FALSE(ReadWholeFile(drive, 100));
    EXPECT_FALSE(CreateEmptyFile(drive + "\\missing\\a"));
    EXPECT_FALSE(AppendExclusively(drive + "\\missing\\a", "x"));
}

TEST(Clock, SleepsAtLeastAsLongAsTold)
{
    const uint64_t start = SystemClock().Milliseconds();
    SystemClock().Sleep(20);
    EXPECT_GE(SystemClock().Milliseconds() - start, 19U);
}

}  // namespace
}  // namespace marbex::platform
