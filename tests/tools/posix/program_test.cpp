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

TEST_F(ProgramTest, PrintsTextPicturesAndATestPage)
{
    using namespace virtual_printer;
    TcpPrinterServer printer("TALIS ETHERNET");
    AddTill(printer.Port());
    const std::string file = registry_.Folder() + "/receipt.txt";
    std::ofstream(file) << "\x1B|cAHello\n";
    const Finished printed = Run("print Till1 " + file + " --cut");
    EXPECT_EQ(printed.output, "Till1: printed 10 bytes of " + file + "\n");
    EXPECT_EQ(printed.status, 0);
    EXPECT_TRUE(printer.WaitFor([](const auto& one) { return one.template All<Cut>().size() == 1; }));
    EXPECT_EQ(printer.Lines(), (std::vector<std::string>{"Hello", "", "", "", "", "", ""})) << "fed once";

    printer.SetPaper(PaperState::kLow);
    EXPECT_EQ(Run("print Till1 --test-page").output, "Till1: printed the test page\nTill1: the paper is running out\n");
    EXPECT_TRUE(printer.WaitFor([](const auto& one) { return one.template All<Cut>().size() == 2; }));
    EXPECT_EQ(printer.All<Barcode>().size(), 9U);
    EXPECT_EQ(printer.Lines().at(11), "----+----1----+----2----+----3----+----4----+----5");
    const std::vector<std::string> lines = printer.Lines();
    const auto table = std::ranges::find(lines, "19 PC858 - Euro");
    ASSERT_NE(table, lines.end());
    EXPECT_EQ(*(table + 1), "ÇüéâäàåçêëèïîìÄÅÉæÆôöòûùÿÖÜø£Ø×ƒ");
    EXPECT_EQ(Run("print Till1 " MARBEX_SOURCE_FOLDER "/examples/receipt/logo.png").status, 0);
    EXPECT_TRUE(printer.WaitFor([](const auto& one) { return one.template All<RasterImage>().size() == 2; }));
    EXPECT_TRUE(printer.All<Unknown>().empty());

    EXPECT_EQ(Run("print Till1 /nowhere").output, "marbex-opos: /nowhere: cannot be read: No such file or directory\n");
    EXPECT_EQ(Run("print Till1").status, 64);
    std::ofstream(file) << "GIF89a and no more";
    EXPECT_EQ(Run("print Till1 " + file).output, "marbex-opos: " + file + ": a picture that is damaged, or none\n");
}

// What a person is told is what the paper says.
TEST_F(ProgramTest, SaysPrintedOnlyOfWhatThePrinterConfirms)
{
    using namespace virtual_printer;
    TcpPrinterServer printer("TALIS ETHERNET");
    AddTill(printer.Port());
    ASSERT_EQ(Run("devices set Till1 TimeoutRX=700").status, 0);
    const std::string file = registry_.Folder() + "/receipt.txt";
    std::ofstream(file) << "Hello\n";

    printer.SetCover(true);
    const Finished open = Run("print Till1 " + file);
    EXPECT_EQ(open.output, "marbex-opos: Till1: not printed: the cover is open; close it and print again\n");
    EXPECT_EQ(open.status, 1);
    EXPECT_EQ(Run("health Till1").status, 1);
    printer.SetCover(false);
    printer.SetPaper(PaperState::kOut);
    EXPECT_EQ(Run("print Till1 " + file).output,
              "marbex-opos: Till1: not printed: there is no paper; put a roll in and print again\n");
    printer.SetPaper(PaperState::kOk);
    EXPECT_TRUE(printer.Lines().empty()) << "nothing was left in the printer";
    EXPECT_EQ(Run("health Till1").status, 0);

    // The cable is pulled, and the cover opened, when a good part of a long text is on paper.
    std::string text;
    for (int line = 0; line < 400; ++line)
        text += "A line of thirty-two characters\n";
    std::ofstream(file) << text;
    const auto at8000 = [&printer](const std::function<void()>& action) {
        uint64_t received = 0;
        printer.With([&](VirtualPrinter& one) { received = one.Received(); });
        printer.At(received + 8000, action);
    };
    at8000([&printer] {
        printer.Drop();
        printer.Refuse(true);
    });
    const Finished pulled = Run("print Till1 " + file);
    EXPECT_EQ(pulled.status, 1);
    EXPECT_NE(pulled.output.find("sent, but the printer did not confirm it: 107 (OPOS_E_NOHARDWARE) ("),
              std::string::npos)
        << pulled.output;
    printer.Refuse(false);
    at8000([&printer] { printer.SetCover(true); });
    const Finished stopped = Run("print Till1 " + file);
    EXPECT_EQ(stopped.status, 1);
    EXPECT_NE(
        stopped.output.find("stopped: the cover is open; what the printer has it prints when the cover is closed ("),
        std::string::npos)
        << stopped.output;
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

TEST_F(ProgramTest, NamesACommandThatItDoesNotHave)
{
    const Finished unknown = Run("helth Till1");
    EXPECT_EQ(unknown.output, "marbex-opos: there is no command helth; did you mean health? (marbex-opos --help)\n");
    EXPECT_EQ(unknown.status, 64);
    EXPECT_EQ(Run("devices sohw Till1").output,
              "marbex-opos: there is no command sohw; did you mean show? (marbex-opos --help)\n");
    EXPECT_EQ(Run("frobnicate").output, "marbex-opos: there is no command frobnicate (marbex-opos --help)\n");
    EXPECT_EQ(Run("--version").output, "marbex-opos 1.0.0\n");
    const Finished absent = Run("devices list");
    EXPECT_EQ(absent.output, "marbex-opos: " + registry_.File() + ": No such file or directory\n");
    EXPECT_EQ(absent.status, 1);
}

}  // namespace
}  // namespace marbex::tools
