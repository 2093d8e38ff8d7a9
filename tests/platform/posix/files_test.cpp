#include "platform/files.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "platform/clock.h"
#include "platform/log_file.h"
#include "platform/posix/unique_fd.h"
#include "platform/registry.h"
#include "platform/text.h"
#include "platform/version.h"
#include "temp_registry.h"

namespace marbex::platform {
namespace {

using tests::TempRegistry;

TEST(NativePath, DrivesLieBesideTheRegistryFile)
{
    const TempRegistry registry;
    const std::string drive = registry.Folder() + "/drive_c";
    EXPECT_EQ(NativePath("C:"), drive);
    EXPECT_EQ(NativePath("c:\\logs\\a.txt"), drive + "/logs/a.txt");
    EXPECT_EQ(NativePath("C:\\\\a.txt"), drive + "/a.txt");
    EXPECT_TRUE(std::filesystem::is_directory(drive)) << "a drive is always there";
    EXPECT_EQ(NativePath("D:x"), registry.Folder() + "/drive_d/x");
    EXPECT_EQ(NativePath("/var/log\\SOLogFile1.txt"), "/var/log/SOLogFile1.txt");
    EXPECT_EQ(NativePath("/var/log/\\SOLogFile1.txt"), "/var/log/SOLogFile1.txt");
    EXPECT_EQ(NativePath("logo.bmp"), "logo.bmp");
}

TEST(Files, TwoOfOneProcessAppendToOneFile)
{
    const TempRegistry registry;
    const auto one = OpenForAppend("C:\\a.log", OtherWriters::kRefused);
    const auto other = OpenForAppend("C:\\a.log", OtherWriters::kRefused);
    ASSERT_TRUE(one && other);
    EXPECT_TRUE(one->Append("two\n") && other->Append("three\n") && one->Append("four\n"));
    EXPECT_EQ(registry.ContentsBelow("drive_c/a.log"), "two\nthree\nfour\n");
}

// A pipe nobody reads must not hold up whoever is told to write into it.
TEST(Files, PipesAreLeftAlone)
{
    const TempRegistry registry;
    ASSERT_EQ(mkfifo(NativePath("C:\\pipe").c_str(), 0600), 0);
    EXPECT_EQ(OpenForAppend("C:\\pipe", OtherWriters::kRefused), nullptr);
    EXPECT_FALSE(AppendExclusively("C:\\pipe", "x"));
    EXPECT_FALSE(ReadWholeFile("C:\\pipe", 100));
    const UniqueFd reader(open(NativePath("C:\\pipe").c_str(), O_RDONLY | O_NONBLOCK));
    EXPECT_EQ(OpenForAppend("C:\\pipe", OtherWriters::kAdmitted), nullptr) << "its reader may go at any time";
}

// A folder that others may change, and a file that the till must not be led to.
class SharedFolder : public testing::TestWithParam<mode_t> {
protected:
    void SetUp() override
    {
        ASSERT_EQ(mkdir(folder_.c_str(), 0755), 0);
        ASSERT_EQ(chmod(folder_.c_str(), GetParam()), 0);
        std::ofstream(victim_) << "mine";
    }
    std::string Victim() const { return ReadWholeFile(victim_, 100).value_or("gone"); }
    void ExpectRefused(const std::string& path) const
    {
        EXPECT_EQ(OpenForAppend(path, OtherWriters::kRefused), nullptr);
        EXPECT_FALSE(AppendExclusively(path, "log"));
        EXPECT_FALSE(AppendShared(path, "log", 0));
        EXPECT_FALSE(AppendShared(path, "log", 1));
        EXPECT_FALSE(CreateEmptyFile(path));
        EXPECT_FALSE(CreateNewFile(path));
        EXPECT_EQ(Victim(), "mine");
    }

    const TempRegistry registry_;
    const std::string folder_ = registry_.Folder() + "/shared";
    const std::string victim_ = registry_.Folder() + "/victim";
};

TEST_P(SharedFolder, LinksInItLeadNowhere)
{
    ASSERT_EQ(symlink(victim_.c_str(), (folder_ + "/soft").c_str()), 0);
    ASSERT_EQ(link(victim_.c_str(), (folder_ + "/hard").c_str()), 0);
    ASSERT_EQ(symlink((registry_.Folder() + "/made").c_str(), (folder_ + "/open").c_str()), 0);
    ASSERT_EQ(mkfifo((folder_ + "/pipe").c_str(), 0666), 0);
    for (const char* name : {"/soft", "/hard", "/open", "/pipe"})
        ExpectRefused(folder_ + name);
    EXPECT_FALSE(FileExists(registry_.Folder() + "/made"));

    ASSERT_EQ(chmod(folder_.c_str(), 0755), 0);
    EXPECT_TRUE(AppendShared(folder_ + "/soft", " and the log's", 0)) << "where only the till's own links can be";
    EXPECT_TRUE(AppendShared(folder_ + "/open", "x", 0));
    EXPECT_EQ(Victim(), "mine and the log's");
    EXPECT_TRUE(FileExists(registry_.Folder() + "/made"));
}

TEST_P(SharedFolder, KeepsAndSharesPlainFiles)
{
    const std::string path = folder_ + "/a.log";
    ASSERT_TRUE(AppendShared(path, "one\n", 0));
    EXPECT_TRUE(OpenForAppend(path, OtherWriters::kRefused)->Append("two\n"));
    EXPECT_TRUE(AppendExclusively(path, "three\n"));
    EXPECT_EQ(ReadWholeFile(path, 100), "one\ntwo\nthree\n");
    struct stat status {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ((status.st_mode & S_IWGRP) != 0, (GetParam() & S_ISGID) != 0);
    EXPECT_TRUE(CreateEmptyFile(path));
    EXPECT_EQ(ReadWholeFile(path, 100), "");

    if (geteuid() != 0) GTEST_SKIP() << "only the superuser can give files away";
    ASSERT_EQ(chown(path.c_str(), 1, 1), 0);
    const bool anybody = (GetParam() & S_IWOTH) != 0;
    EXPECT_EQ(AppendShared(path, "log", 0), !anybody) << "a file of somebody who was faster";
    ASSERT_EQ(chown(folder_.c_str(), 1, 1), 0);
    EXPECT_TRUE(AppendShared(path, "log", 0)) << "the folder's owner may have what he likes in it";
}

INSTANTIATE_TEST_SUITE_P(Files, SharedFolder, testing::Values(01777, 0777, 0775, 02775));

// Standard error of a till that was started with a pipe in its place.
TEST(DebugOutput, WaitsForNoReaderAndOutlivesHim)
{
    int ends[2] = {};
    ASSERT_EQ(pipe(ends), 0);
    UniqueFd reader(ends[0]);
    UniqueFd writer(ends[1]);
    const UniqueFd former(dup(STDERR_FILENO));
    ASSERT_EQ(dup2(writer.Get(), STDERR_FILENO), STDERR_FILENO);
    const std::string line(99, 'x');
    for (int i = 0; i < 2000; ++i)  // three times what the pipe holds
        WriteDebugOutput(line + "\n");
    reader.Reset();
    WriteDebugOutput("nobody is there\n");
    dup2(former.Get(), STDERR_FILENO);
}

TEST(Files, AppendExclusivelyGivesWayToAReader)
{
    const TempRegistry registry;
    ASSERT_TRUE(AppendExclusively("C:\\events", "A1\r\n"));
    {
        const UniqueFd reader(open(NativePath("C:\\events").c_str(), O_RDONLY));
        ASSERT_EQ(flock(reader.Get(), LOCK_EX | LOCK_NB), 0);
        EXPECT_FALSE(AppendExclusively("C:\\events", "B2\r\n"));
    }
    EXPECT_TRUE(AppendExclusively("C:\\events", "C3\r\n"));
    EXPECT_EQ(registry.ContentsBelow("drive_c/events"), "A1\r\nC3\r\n");
}

// What a full disk cut short must not stay in front of the next record.
TEST(Files, AppendExclusivelyWritesAllOrNothing)
{
    const TempRegistry registry;
    ASSERT_TRUE(AppendExclusively("C:\\events", "C\t1|"));
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit tight{6, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &tight), 0);
    EXPECT_FALSE(AppendExclusively("C:\\events", "C\t2|"));
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(registry.ContentsBelow("drive_c/events"), "C\t1|");
}

TEST(LogFile, IsNotSetAsideUnderAWriterAndWaitsForNobodyElse)
{
    const TempRegistry registry;
    ASSERT_TRUE(AppendShared("C:\\a.log", "one\n", 0));
    const UniqueFd other(open(NativePath("C:\\a.log").c_str(), O_RDONLY));
    ASSERT_EQ(flock(other.Get(), LOCK_SH), 0);
    EXPECT_FALSE(SetAside("C:\\a.log", 1));
    EXPECT_TRUE(AppendShared("C:\\a.log", "two\n", 1)) << "it goes on growing";
    ASSERT_EQ(flock(other.Get(), LOCK_EX), 0);
    EXPECT_TRUE(AppendShared("C:\\a.log", "three\n", 0));
    EXPECT_EQ(registry.ContentsBelow("drive_c/a.log"), "one\ntwo\nthree\n");
    ASSERT_EQ(flock(other.Get(), LOCK_UN), 0);
    EXPECT_TRUE(SetAside("C:\\a.log", 14));
    EXPECT_TRUE(SetAside("C:\\a.log", 14)) << "it has begun anew";
    EXPECT_EQ(registry.ContentsBelow("drive_c/a.log.1"), "one\ntwo\nthree\n");
}

// By chmod, as for tills of several users.
TEST(LogFile, IsMadeAnewForTheSameUsers)
{
    const TempRegistry registry;
    ASSERT_TRUE(AppendShared("C:\\a.log", "one\n", 0));
    const std::string native = NativePath("C:\\a.log");
    ASSERT_EQ(chmod(native.c_str(), 0660), 0);
    ASSERT_TRUE(SetAside("C:\\a.log", 1));
    struct stat status {};
    ASSERT_EQ(stat(native.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0660U);
    EXPECT_EQ(status.st_size, 0);
}

TEST(Files, NamesMayBeTextOfTheAnsiCodePage)
{
    const TempRegistry registry;
    LoadAnsiCodePage(SystemRegistry());  // 1252, as this registry says nothing else
    ASSERT_TRUE(
        CreateEmptyFile("C:\\Gr\xF6\xDF"
                        "e.bmp"));
    EXPECT_TRUE(std::filesystem::exists(registry.Folder() + "/drive_c/Größe.bmp"));
    EXPECT_TRUE(FileExists("C:\\Gr\xF6\xDF"
                           "e.bmp") &&
                FileExists("C:\\Größe.bmp"));
    // A file of an old disk whose name is in those very bytes.
    std::ofstream(registry.Folder() + "/drive_c/Ma\xDF.bmp") << "old";
    EXPECT_EQ(ReadWholeFile("C:\\Ma\xDF.bmp", 9), "old");
}

TEST(Clock, StampsAreLocalTime)
{
    setenv("TZ", "XYZ-5:30", 1);
    tzset();
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
    const time_t asUtc = timegm(&fields) - (5 * 60 + 30) * 60;
    EXPECT_LE(before, asUtc);
    EXPECT_LE(asUtc, after);
    EXPECT_GE(now.millisecond, 0);
    EXPECT_LE(now.millisecond, 999);
    unsetenv("TZ");
    tzset();
}

TEST(Version, ModuleSaysWhoItIs)
{
    EXPECT_EQ(ModuleFileVersion(), "1, 0, 0, 0");
    EXPECT_TRUE(ModulePath().starts_with('/') && ModulePath().ends_with("platform_test")) << ModulePath();
}

}  // namespace
}  // namespace marbex::platform
