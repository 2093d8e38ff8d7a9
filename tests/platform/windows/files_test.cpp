#include "platform/files.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <ctime>

#include "platform/clock.h"
#include "platform/text.h"
#include "platform/version.h"
#include "platform/windows/unique_handle.h"
#include "platform/windows/wide_text.h"
#include "temp_registry.h"

namespace marbex::platform {
namespace {

using tests::TempRegistry;

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

UniqueHandle OpenToRead(const std::wstring& path)
{
    return UniqueHandle(CreateFileW(path.c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr));
}

TEST(Files, AreSharedForReadingOnlyWhileOneWriterAppends)
{
    const TempRegistry registry;
    const std::string path = registry.Drive() + "\\a.log";
    auto file = OpenForAppend(path, OtherWriters::kRefused);
    ASSERT_TRUE(file);
    EXPECT_TRUE(OpenToRead(WideFromUtf8(path)));
    EXPECT_EQ(OpenForAppend(path, OtherWriters::kRefused), nullptr);
    file.reset();
    EXPECT_TRUE(OpenForAppend(path, OtherWriters::kRefused));
}

TEST(Files, SeveralWritersAppendWholeLinesWhenAdmitted)
{
    const TempRegistry registry;
    const std::string path = registry.Drive() + "\\a.log";
    const auto one = OpenForAppend(path, OtherWriters::kAdmitted);
    const auto other = OpenForAppend(path, OtherWriters::kAdmitted);
    ASSERT_TRUE(one && other);
    EXPECT_FALSE(CreateNewFile(path));
    EXPECT_TRUE(one->Append("1\r\n"));
    EXPECT_TRUE(other->Append("2\r\n"));
    EXPECT_TRUE(one->Append("3\r\n"));
    EXPECT_EQ(registry.ContentsBelow("drive_c/a.log"), "1\r\n2\r\n3\r\n");
}

TEST(Files, AppendExclusivelyGivesWayToAReader)
{
    const TempRegistry registry;
    const std::string path = registry.Drive() + "\\events";
    ASSERT_TRUE(AppendExclusively(path, "A1\r\n"));
    {
        const UniqueHandle reader = OpenToRead(WideFromUtf8(path));
        ASSERT_TRUE(reader);
        EXPECT_FALSE(AppendExclusively(path, "B2\r\n"));
    }
    EXPECT_TRUE(AppendExclusively(path, "C3\r\n"));
    EXPECT_EQ(registry.ContentsBelow("drive_c/events"), "A1\r\nC3\r\n");
}

TEST(Files, PathsAreUtf8OrElseAnsi)
{
    const TempRegistry registry;
    const std::wstring folder = WideFromUtf8(registry.Drive()) + L"\\";
    ASSERT_TRUE(AppendExclusively(registry.Drive() + "\\K\xC3\xA4se\xE2\x82\xAC", "1"));
    EXPECT_TRUE(OpenToRead(folder + L"K\u00E4se\u20AC"));

    const std::string narrow = NarrowAnsi(u"K\u00E4se");
    if (narrow == "K?se" || AnsiCodePage() == 65001) GTEST_SKIP() << "the ANSI code page has no such file name";
    ASSERT_TRUE(AppendExclusively(registry.Drive() + "\\" + narrow, "1"));
    EXPECT_TRUE(OpenToRead(folder + L"K\u00E4se"));
}

// A pipe nobody reads must not hold up whoever is told to write into it.
TEST(Files, PipesAreLeftAlone)
{
    const std::string path = "\\\\.\\pipe\\marbex-files-test-" + std::to_string(GetCurrentProcessId());
    const UniqueHandle pipe(CreateNamedPipeA(path.c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE, PIPE_UNLIMITED_INSTANCES,
                                             16, 16, 0, nullptr));
    ASSERT_TRUE(pipe);
    EXPECT_EQ(OpenForAppend(path, OtherWriters::kRefused), nullptr);
    EXPECT_FALSE(FileExists(path));
    EXPECT_FALSE(AppendExclusively(path, "longer than the pipe would take"));
    EXPECT_FALSE(ReadWholeFile(path, 100));
}

TEST(Clock, StampsAreLocalTime)
{
    const time_t before = time(nullptr);
    const LocalTime now = Now();
    const time_t after = time(nullptr);
    tm fields{};
    fields.tm_year = now.year - 1900;
    fields.tm_mon = now.month - 1;
    fields.tm_mday = now.day;
    fields.tm_hour = now.hour;
    fields.tm_min = now.minute;
    fields.tm_sec = now.second;
    fields.tm_isdst = -1;
    const time_t stamped = mktime(&fields);
    EXPECT_LE(before, stamped);
    EXPECT_LE(stamped, after);
    EXPECT_GE(now.millisecond, 0);
    EXPECT_LE(now.millisecond, 999);
}

TEST(Version, ModuleSaysWhoItIs)
{
    EXPECT_EQ(ModuleFileVersion(), "7, 8, 9, 10");
    EXPECT_TRUE(ModulePath().substr(1).starts_with(":\\") && ModulePath().ends_with("\\platform_test.exe"))
        << ModulePath();
}

}  // namespace
}  // namespace marbex::platform
