// The program as a shell sees it: what it prints, where, and its exit status.

#include "tools/posix/program.h"

#include <nlohmann/json.hpp>

#include "tools/posix/printer_and_till.h"

namespace marbex::tools {
namespace {

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

TEST_F(ProgramTest, ChecksATill)
{
    using namespace virtual_printer;
    TcpPrinterServer printer("TALIS ETHERNET");
    EXPECT_EQ(Run("check").output, "this machine\n  wrong    registry      " + registry_.File() +
                                       ": No such file or directory\n" + std::string(25, ' ') +
                                       "next: marbex-opos devices add Till1 PrinterModel=MODEL --registry " +
                                       registry_.File() + "\n");
    ASSERT_EQ(Run("register").status, 0);
    AddTill(printer.Port());
    const Finished fine = Run("check");
    EXPECT_EQ(fine.status, 0) << fine.output;
    EXPECT_NE(fine.output.find("\n  fine     cover         closed\n"), std::string::npos) << fine.output;
    printer.SetPaper(PaperState::kLow);
    EXPECT_EQ(Run("check Till1").status, 2);

    ASSERT_EQ(Run("devices add Till2 PrinterModel=CORVO Com=77").status, 0);
    const Finished both = Run("check --all --json");
    EXPECT_EQ(both.status, 1);
    const auto json = nlohmann::json::parse(both.output, nullptr, false);
    ASSERT_TRUE(json.is_object()) << both.output;
    EXPECT_EQ(json["state"], "wrong");
    EXPECT_EQ(json["devices"][0]["device"], "Till1");
    EXPECT_EQ(json["devices"][0]["state"], "warning");
    EXPECT_EQ(json["devices"][1]["steps"].back()["step"], "port");

    // What is to be typed next can be typed: it says in which registry.
    EXPECT_NE(Run("check Til1").output.find("next: marbex-opos check Till1 --registry " + registry_.File() + "\n"),
              std::string::npos);
    ASSERT_EQ(Run("devices set Till1 PrinterModel=DORIN PortType=ethernet").status, 0);
    const Finished health = Run("health Till1");
    EXPECT_EQ(health.status, 1);
    EXPECT_NE(
        health.output.find("107 (OPOS_E_NOHARDWARE)\nmodel: the printer is a TALIS ETHERNET, and PrinterModel is "
                           "DORIN\nnext: marbex-opos devices set Till1 \"PrinterModel=TALIS ETHERNET\" --registry "),
        std::string::npos)
        << health.output;
    registry_.WriteRaw("Windows Registry Editor Version 5.00\n\nrubbish\n");
    EXPECT_NE(Run("check").output.find("next: mend that line with an editor"), std::string::npos);
}

TEST_F(ProgramTest, ShowsTheLogsOfATill)
{
    virtual_printer::TcpPrinterServer printer("TALIS ETHERNET");
    AddTill(printer.Port());
    EXPECT_EQ(Run("log").output,
              "Till1 writes no log now; for one with every byte: marbex-opos devices set Till1 "
              "LogEnabled=3 --registry " +
                  registry_.File() + "\nmarbex-opos: there is no log in " + registry_.Folder() + "\n");
    ASSERT_EQ(Run("devices set Till1 LogEnabled=3").status, 0);
    const std::string file = registry_.Folder() + "/receipt.txt";
    std::ofstream(file) << "Hello\n";
    ASSERT_EQ(Run("print Till1 " + file).status, 0);
    const Finished log = Run("log Till1");
    EXPECT_EQ(log.status, 0);
    EXPECT_NE(log.output.find(" -> text  \"Hello\"\n"), std::string::npos) << log.output;
    EXPECT_NE(log.output.find(" <- 65  identity: TALIS ETHERNET\n"), std::string::npos) << log.output;
    EXPECT_EQ(Run("log Till1 --errors").output, "") << "of a print that went well";
    printer.SetCover(true);
    ASSERT_EQ(Run("print Till1 " + file).status, 1);
    EXPECT_NE(Run("log --errors").output.find("(114 (OPOS_E_EXTENDED), 201 (OPOS_EPTR_COVER_OPEN))"),
              std::string::npos);
}

// As bash asks: the words of the line, of which the last one is being typed; those it offers, in one line.
TEST_F(ProgramTest, IsCompletedByBash)
{
    AddTill(9100);
    ASSERT_EQ(Run("devices add 'Front desk' PrinterModel=TALIS").status, 0);
    setenv("PROGRAM", MARBEX_PROGRAM_FILE, 1);
    const auto bash = [this](const std::string& script) {
        std::ofstream(registry_.Folder() + "/script") << script;
        return Finish("bash '" + registry_.Folder() + "/script' 2>&1").output;
    };
    const auto offered = [&bash](const std::string& words) {
        return bash("source '" MARBEX_SOURCE_FOLDER
                    "/packaging/bash-completion/marbex-opos'\nCOMP_WORDS=(\"$PROGRAM\" " +
                    words + ")\nCOMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n_marbex_opos\necho -n \" ${COMPREPLY[*]} \"");
    };
    // Every command that there is, each with every option.
    for (const std::string level : {"", "devices "}) {
        std::istringstream commands(
            bash("\"$PROGRAM\" " + level + "--help | sed '1,/^Subcommands/d' | grep -o '^  [a-z]*'"));
        for (std::string command; commands >> command;) {
            EXPECT_NE(offered(level + "''").find(" " + command + " "), std::string::npos) << command;
            if (command == "devices") continue;
            std::istringstream options(
                bash("\"$PROGRAM\" " + level + command + " --help | grep -o -- '^  -.*' | grep -oE -- '--[a-z-]+'"));
            for (std::string option; options >> option;)
                EXPECT_NE(offered(level + command + " --").find(" " + option + " "), std::string::npos)
                    << command << option;
        }
    }
    EXPECT_EQ(offered("check ''"), " Till1 Front\\ desk ");
    EXPECT_EQ(offered("check --registry '" + registry_.File() + "' f"), " Front\\ desk ");
    EXPECT_EQ(offered("devices set Till1 time"), " TimeoutRX= TimeoutTX= ");
    EXPECT_EQ(offered("devices set Till1 PrinterModel = TAL"), " TALIS TALIS\\ ETHERNET ");
    EXPECT_EQ(offered("devices set Till1 PortType ="), " serial ethernet usb ");
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
    const std::string version = Run("--version").output;
    EXPECT_TRUE(version.starts_with("marbex-opos 1.")) << version;
    EXPECT_TRUE(version.ends_with(", service objects 1.0.0\n")) << version;
    const Finished absent = Run("devices list");
    EXPECT_EQ(absent.output, "marbex-opos: " + registry_.File() + ": No such file or directory\n");
    EXPECT_EQ(absent.status, 1);
}

}  // namespace
}  // namespace marbex::tools
