// The registry as a file: what befalls it and who shares it.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <thread>

#include "platform/files.h"
#include "platform/registry.h"
#include "temp_registry.h"

namespace marbex::platform {
namespace {

using tests::TempRegistry;

RegistryValue Text(std::string name, std::string text)
{
    return {std::move(name), RegistryType::kSz, std::move(text)};
}

std::string debugOutput;

// In a folder that others may change: none of what they put there is waited for or written to.
TEST(SystemRegistry, NothingBesideTheFileIsTrusted)
{
    const TempRegistry file("[HKEY_LOCAL_MACHINE\\A]\n");
    const std::string lock = file.File() + ".lock";
    const std::string victim = file.Folder() + "/victim";
    std::ofstream(victim) << "mine";
    ASSERT_EQ(symlink(victim.c_str(), lock.c_str()), 0);
    Registry& registry = SystemRegistry();
    EXPECT_FALSE(registry.CreateKey("B"));
    EXPECT_TRUE(registry.LastProblem().starts_with(lock + ": cannot be created: ")) << registry.LastProblem();
    unlink(lock.c_str());
    ASSERT_EQ(mkfifo(lock.c_str(), 0444), 0);
    EXPECT_TRUE(registry.CreateKey("B"));
    EXPECT_EQ(ReadWholeFile(victim, 10), "mine");
}

TEST(SystemRegistry, BrokenFileIsReportedAndNeverOverwritten)
{
    const TempRegistry file;
    const std::string broken = "Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\A]\n\"Port\"=9100\n";
    file.WriteRaw(broken);
    debugOutput.clear();
    CaptureDebugOutput([](std::string_view text) { debugOutput += text; });
    Registry& registry = SystemRegistry();
    EXPECT_FALSE(registry.KeyExists("A"));
    EXPECT_FALSE(registry.Values(""));
    EXPECT_TRUE(registry.LastProblem().starts_with(file.File() + ":4: ")) << registry.LastProblem();
    EXPECT_FALSE(registry.CreateKey("B"));
    EXPECT_TRUE(registry.LastProblem().starts_with(file.File() + ":4: ")) << registry.LastProblem();
    EXPECT_FALSE(registry.DeleteKey("A"));
    EXPECT_EQ(file.Contents(), broken);
    CaptureDebugOutput(nullptr);
    // Told once, not at every call, to who watches the debugger's output.
    EXPECT_EQ(debugOutput.find(file.File() + ":4: "), debugOutput.rfind(file.File() + ":4: ")) << debugOutput;
    EXPECT_NE(debugOutput.find(":4: "), std::string::npos);

    file.Write("[HKEY_LOCAL_MACHINE\\A]\n");
    EXPECT_TRUE(registry.KeyExists("A"));
    EXPECT_EQ(registry.LastProblem(), "");
}

TEST(SystemRegistry, SeesEveryChangeMadeByHand)
{
    const TempRegistry file;
    Registry& registry = SystemRegistry();
    // Files of one size, written in place one after the other within one step of the file system's clock.
    for (int i = 100; i < 200; ++i) {
        file.Write("[HKEY_LOCAL_MACHINE\\A]\n\"v\"=\"" + std::to_string(i) + "\"\n");
        ASSERT_EQ(registry.Value("A", "v")->data, std::to_string(i));
    }
}

TEST(SystemRegistry, KeepsPermissionsLinksAndOtherHives)
{
    const TempRegistry file("[HKEY_CURRENT_USER\\Mine]\n\"x\"=hex(2):25,00,00,00\n\n[HKEY_LOCAL_MACHINE\\A]\n");
    const std::string real = file.Folder() + "/real.reg";
    ASSERT_EQ(rename(file.File().c_str(), real.c_str()), 0);
    ASSERT_EQ(symlink(real.c_str(), file.File().c_str()), 0);
    ASSERT_EQ(chmod(real.c_str(), 0640), 0);
    ASSERT_TRUE(SystemRegistry().SetValue("A", Text("n", "1"))) << SystemRegistry().LastProblem();

    struct stat status {};
    ASSERT_EQ(lstat(file.File().c_str(), &status), 0);
    EXPECT_TRUE(S_ISLNK(status.st_mode));
    ASSERT_EQ(stat(real.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640u);
    EXPECT_NE(file.Contents().find("[HKEY_CURRENT_USER\\Mine]\n\"x\"=hex(2):25,00,00,00\n"), std::string::npos);
}

TEST(SystemRegistry, WritersOfTwoProcessesLoseNothing)
{
    const TempRegistry file("[HKEY_LOCAL_MACHINE\\A]\n");
    constexpr int kEach = 25;
    const auto writeAll = [](const char* prefix) {
        for (int i = 0; i < kEach; ++i) {
            if (!SystemRegistry().SetValue("A", Text(prefix + std::to_string(i), "x"))) return false;
            if (!SystemRegistry().CreateKey("A\\" + std::string(prefix) + std::to_string(i))) return false;
        }
        return true;
    };
    const pid_t child = fork();
    if (child == 0) _exit(writeAll("child") ? 0 : 1);
    ASSERT_GT(child, 0);
    bool other = false;
    std::thread thread([&] { other = writeAll("thread"); });
    EXPECT_TRUE(writeAll("parent")) << SystemRegistry().LastProblem();
    thread.join();
    EXPECT_TRUE(other);
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);

    EXPECT_EQ(SystemRegistry().Values("A")->size(), 3u * kEach);
    EXPECT_EQ(SystemRegistry().Subkeys("A")->size(), 3u * kEach);
}

TEST(SystemRegistry, ReadsWhileOthersWriteSeeWholeFiles)
{
    const TempRegistry file("[HKEY_LOCAL_MACHINE\\A]\n\"n\"=\"0\"\n");
    std::atomic<bool> done = false;
    std::thread reader([&] {
        while (!done) {
            const auto value = SystemRegistry().Value("A", "n");
            ASSERT_TRUE(value) << SystemRegistry().LastProblem();
        }
    });
    for (std::size_t i = 1; i <= 50; ++i)
        ASSERT_TRUE(SystemRegistry().SetValue("A", Text("n", std::string(i * 100, 'x'))));
    done = true;
    reader.join();
}

TEST(SystemRegistry, FirstWriteMakesFolderAndFile)
{
    const TempRegistry file;
    const std::string deep = file.Folder() + "/not/there/registry.reg";
    setenv("MARBEX_OPOS_REGISTRY", deep.c_str(), 1);
    ASSERT_TRUE(SystemRegistry().CreateKey("SOFTWARE")) << SystemRegistry().LastProblem();
    EXPECT_EQ(file.ContentsBelow("not/there/registry.reg"),
              "Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\SOFTWARE]\n");
}

TEST(SystemRegistry, NamesThatAFileCannotHoldAreRefused)
{
    const TempRegistry file("[HKEY_LOCAL_MACHINE\\A]\n");
    EXPECT_FALSE(SystemRegistry().CreateKey("A\\a\nb"));
    EXPECT_FALSE(SystemRegistry().SetValue("A", Text("a\nb", "x")));
}

}  // namespace
}  // namespace marbex::platform
