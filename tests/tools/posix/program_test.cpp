// The program as a shell sees it: what it prints, where, and its exit status.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <fstream>

#include "tools/posix/printer_and_till.h"

namespace marbex::tools {
namespace {

struct Finished {
    int status = -1;
    std::string output;  // standard output and error
};

class ProgramTest : public ::testing::Test {
protected:
    Finished Run(const std::string& arguments, const std::string& input = "")
    {
        const std::string inputFile = registry_.Folder() + "/input";
        std::ofstream(inputFile, std::ios::binary) << input;
        const std::string command = "'" MARBEX_PROGRAM_FILE "' " + arguments + " --registry '" + registry_.File() +
                                    "' 2>&1 <'" + inputFile + "'";
        Finished finished;
        FILE* pipe = popen(command.c_str(), "r");
        std::array<char, 4096> buffer;
        for (std::size_t got = 0; (got = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) {
            finished.output.append(buffer.data(), got);
        }
        finished.status = WEXITSTATUS(pclose(pipe));
        return finished;
    }
    void AddTill(uint16_t port)
    {
        const Finished added =
            Run("devices add Till1 'PrinterModel=TALIS ETHERNET' IPAddress=127.0.0.1 LogPath=" + registry_.Folder() +
                " Port=" + std::to_string(port));
        ASSERT_EQ(added.status, 0) << added.output;
    }

    tests::TempRegistry registry_;
};

TEST_F(ProgramTest, RunsAScriptAndTellsByItsStatusWhetherAllWasUnderstood)
{
    virtual_printer::TcpPrinterServer printer("TALIS ETHERNET");
    AddTill(printer.Port());
    const Finished good =
        Run("console --echo", "POSPrinter.OpenService(\"POSPrinter\", \"Till1\")\n# done\n\nquit\nnonsense");
    EXPECT_EQ(good.output, "> POSPrinter.OpenService(\"POSPrinter\", \"Till1\")\n= 0\n> quit\n");
    EXPECT_EQ(good.status, 0);
    const Finished bad = Run("console", "POSPrinter.Open()\nwait 0");
    EXPECT_EQ(bad.output, "? line 1: no method Open\n=\n");
    EXPECT_EQ(bad.status, 2);
    EXPECT_EQ(Run("console /nowhere").status, 1);
}

TEST_F(ProgramTest, RegistersAndUnregistersTheServer)
{
    ASSERT_EQ(Run("register").status, 0);
    EXPECT_NE(registry_.Contents().find("libmarbexopos.so"), std::string::npos);
    EXPECT_NE(registry_.Contents().find("{B637B615-C43B-40B8-B9D8-B6E29E80AA6D}"), std::string::npos);
    ASSERT_EQ(Run("unregister").status, 0);
    EXPECT_EQ(registry_.Contents().find("libmarbexopos.so"), std::string::npos);

    // The ProgIDs have gone with another server, the classes are still there.
    ASSERT_EQ(Run("register").status, 0);
    for (const char* name : {"Prn", "CashDrawer", "LineDisplay"})
        ASSERT_TRUE(platform::SystemRegistry().DeleteKey("SOFTWARE\\Classes\\Service.MarbexOpos" + std::string(name) +
                                                         "Driver"));
    EXPECT_EQ(Run("unregister").output, "nothing is registered\n");
    EXPECT_EQ(registry_.Contents().find("libmarbexopos.so"), std::string::npos);
}

TEST_F(ProgramTest, PrintsAFileAndReportsHealth)
{
    virtual_printer::TcpPrinterServer printer("TALIS ETHERNET");
    AddTill(printer.Port());
    const Finished healthy = Run("health Till1");
    EXPECT_EQ(healthy.status, 0) << healthy.output;
    EXPECT_NE(healthy.output.find("health       0 (OPOS_SUCCESS)"), std::string::npos) << healthy.output;

    const std::string file = registry_.Folder() + "/receipt.txt";
    std::ofstream(file) << "\x1B|cAHello\n";
    const Finished printed = Run("print Till1 " + file + " --cut");
    EXPECT_EQ(printed.status, 0) << printed.output;
    EXPECT_TRUE(printer.WaitFor([](const auto& one) { return one.template All<virtual_printer::Cut>().size() == 1; }));
    EXPECT_EQ(printer.Lines().front(), "Hello");

    printer.SetCover(true);
    const Finished open = Run("health Till1");
    EXPECT_NE(open.output.find("cover open   yes"), std::string::npos) << open.output;
    printer.Refuse(true);
    const Finished gone = Run("print Till1 " + file);
    EXPECT_EQ(gone.status, 1);
    EXPECT_NE(gone.output.find("OpenService: 111 (OPOS_E_FAILURE)"), std::string::npos) << gone.output;
    EXPECT_EQ(Run("health Nobody").output, "marbex-opos: Nobody: there is no such device\n");
    EXPECT_EQ(Run("print Till1 /nowhere").status, 1);
}

TEST_F(ProgramTest, SaysOnceWhereTheRegistryIsBroken)
{
    registry_.WriteRaw("Windows Registry Editor Version 5.00\n\nrubbish\n");
    const Finished listed = Run("devices list");
    EXPECT_EQ(listed.status, 1);
    EXPECT_TRUE(listed.output.starts_with("marbex-opos: " + registry_.File() + ":3: ")) << listed.output;
    EXPECT_EQ(std::count(listed.output.begin(), listed.output.end(), '\n'), 1) << listed.output;
    EXPECT_EQ(Run("models").status, 64) << "models takes no registry";
}

}  // namespace
}  // namespace marbex::tools
