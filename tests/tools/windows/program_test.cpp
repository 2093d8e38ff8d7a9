// The program as a command prompt sees it: what it prints, byte for byte, and its exit status.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "marbex_opos/session/registered_server.h"
#include "platform/registry.h"
#include "platform/windows/wide_text.h"
#include "temp_folder.h"
#include "tools/windows/child.h"

namespace marbex::tools {
namespace {

Finished RunProgram(const std::vector<std::string>& words, const std::string& input = {})
{
    Child child(MARBEX_PROGRAM_FILE, words);
    child.Write(input);
    return child.Finish();
}

TEST(Program, PrintsTheSameBytesAsElsewhere)
{
    const Finished scripted = RunProgram(
        {"console", "--server", FAKE_SERVER_PATH, "--echo"},
        "\xEF\xBB\xBFPOSPrinter.OpenService(\"POSPrinter\", \"Till1\")\r\nPOSPrinter.DirectIO(7, 16, \"A\")\n"
        "# nothing\nexpect any 5000\nPOSPrinter.Nonsense()\n");
    EXPECT_EQ(scripted.output,
              "> POSPrinter.OpenService(\"POSPrinter\", \"Till1\")\n= 0\n"
              "> POSPrinter.DirectIO(7, 16, \"A\")\n= 0 &17 &\"A\\x1B\\\"\\\\\xC3\xA9\\x85\"\n"
              "> expect any 5000\n! DirectIOEvent POSPrinter 0 3 \"A\\x1B\\\"\\\\\xC3\xA9\\x85\"\n= 0\n"
              "> POSPrinter.Nonsense()\n? line 5: no method Nonsense\n");
    EXPECT_EQ(scripted.status, 2U);
    EXPECT_EQ(RunProgram({"console", "--server", FAKE_SERVER_PATH}, "wait 0\nquit\nnonsense").status, 0U);
    EXPECT_EQ(RunProgram({"models"}).output.find('\r'), std::string::npos);
}

TEST(Program, TakesWordsAndPathsInEveryScript)
{
    const std::string folder = tests::MakeTemporaryFolder();
    const std::string script = folder + "\\\xD1\x81\xD0\xBA\xD1\x80\xD0\xB8\xD0\xBF\xD1\x82 \xE6\x97\xA5.txt";
    std::ofstream(std::filesystem::path(platform::WideFromUtf8(script))) << "wait 0\n";
    EXPECT_EQ(RunProgram({"console", script}).output, "=\n");
    const std::string missing = folder + "\\\xE2\x82\xAC (1).txt";
    const Finished refused = RunProgram({"console", missing});
    EXPECT_EQ(refused.output, "marbex-opos: cannot open " + missing + "\n");
    EXPECT_EQ(refused.status, 1U);
    EXPECT_EQ(RunProgram({"console", "--registry", "till.reg"}).output,
              "marbex-opos: the registry of this system cannot be replaced by a file\n");
    EXPECT_EQ(RunProgram({"nonsense"}).status, 64U);
    std::filesystem::remove_all(platform::WideFromUtf8(folder));
}

TEST(Program, DeliversEventsWhileItWaitsForTheNextLine)
{
    Child console(MARBEX_PROGRAM_FILE, {"console", "--server", FAKE_SERVER_PATH});
    console.Write("POSPrinter.OpenService(\"POSPrinter\", \"Till1\")\nPOSPrinter.PrintNormal(11, \"a\")\n");
    EXPECT_EQ(console.ReadLine(), "= 0\n");
    EXPECT_EQ(console.ReadLine(), "= 0\n");
    EXPECT_EQ(console.ReadLine(), "! StatusUpdateEvent POSPrinter 11\n") << "with nothing more to read";
    console.Write("POSPrinter.State");
    EXPECT_EQ(console.Finish().output, "= 9\n");
}

TEST(Program, LoadsNothingThatIsNotTheServer)
{
    const Finished other = RunProgram({"console", "--server", "C:\\windows\\system32\\version.dll"},
                                      "POSPrinter.OpenService(\"a\", \"b\")\n");
    EXPECT_EQ(other.output,
              "? line 1: POSPrinter cannot be created: C:\\windows\\system32\\version.dll is not the server: "
              "it has no DllGetClassObject\n");
}

// In the registry of this machine: only where it may be written, and as it was afterwards.
TEST(Program, RegistersTheServerBesideIt)
{
    const platform::Registry& registry = platform::SystemRegistry();
    const std::string progId = "Service.MarbexOposPrnDriver";
    if (RegisteredServerPath(registry, progId)) GTEST_SKIP() << "a server is registered on this machine";
    const Finished registered = RunProgram({"register"});
    if (registered.status != 0) {
        EXPECT_NE(registered.output.find("run it as administrator"), std::string::npos) << registered.output;
        GTEST_SKIP() << "not administrator";
    }
    const std::string server = RegisteredServerPath(registry, progId).value_or("none");
    EXPECT_TRUE(std::filesystem::equivalent(platform::WideFromUtf8(server), MARBEX_SERVER_FILE)) << server;
    EXPECT_EQ(RunProgram({"console"}, "POSPrinter.ClaimDevice(0)\n").output, "= 106\n") << "the registered one answers";
    EXPECT_EQ(RunProgram({"unregister"}).output, "unregistered\n");
    EXPECT_EQ(RegisteredServerPath(registry, progId), std::nullopt);
    EXPECT_EQ(RunProgram({"unregister"}).output, "nothing is registered\n");
}

}  // namespace
}  // namespace marbex::tools
