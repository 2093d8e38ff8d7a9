// Profiles with values that cannot be used, on a printer that prints all the same.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tools/opened.h"
#include "tools/posix/printer_and_till.h"

namespace marbex::tools {
namespace {

using virtual_printer::TcpPrinterServer;

TEST(OddProfile, ValuesThatDoNotFitAreMissing)
{
    TcpPrinterServer printer("TALIS ETHERNET");
    const std::string longText(300, 'x');
    const std::string odd = "\"PrinterSubModel\"=\"" + longText + "\"\n\"PrinterName\"=\"" + longText +
                            "\"\n\"TimeoutRX\"=\"soon\"\n\"TimeoutTX\"=hex(b):01,02,03,04,05,06,07,08\n"
                            "\"Settings\"=hex:01,00,00,00,00,00\n\"Format\"=dword:00000008\n\"Fonts\"=hex:ff,00,02\n";
    Till till(Till::EthernetProfile(printer.Port()) + odd);
    till.OpenClaimEnable();
    EXPECT_EQ(till.Answer("POSPrinter.CharacterSetList"), "= \"437,850,999\"") << "the sets that are there count";
    EXPECT_EQ(till.Answer("POSPrinter.PrintNormal(2, \"still prints\\n\")"), "= 0");
    EXPECT_TRUE(printer.WaitFor([](const auto& one) { return one.Lines() == Lines{"still prints"}; }));
    EXPECT_EQ(Opened("\"PrinterModel\"=\"" + longText + "\"\n"), "= 111") << "the default model on COM1";
}

TEST(OddProfile, ALogFolderThatCannotBeWritten)
{
    TcpPrinterServer printer("TALIS ETHERNET");
    Till till(Till::EthernetProfile(printer.Port()) + "\"LogPath\"=\"/proc/nobody\"\n");
    till.OpenClaimEnable();
    EXPECT_EQ(till.Answer("POSPrinter.PrintNormal(2, \"x\\n\")"), "= 0");
    EXPECT_EQ(till.Answer("POSPrinter.ReleaseDevice()"), "= 0");
    EXPECT_EQ(till.Answer("POSPrinter.CloseService()"), "= 0");
}

TEST(OddProfile, BothLogsBeginAnewAtTheLimit)
{
    TcpPrinterServer printer("TALIS ETHERNET");
    const tests::TempRegistry folder;
    const std::string logs[] = {folder.Folder() + "/SOLogFile1.txt", folder.Folder() + "/COposComm1.log"};
    for (const std::string& log : logs)
        std::ofstream(log) << std::string(1 << 20, '=') << "\n";
    Till till(Till::EthernetProfile(printer.Port()) + "\"LogPath\"=\"" + folder.Folder() + "\"\n" +
              Till::Number("LogLimit", 1));
    till.OpenClaimEnable();
    for (const std::string& log : logs) {
        EXPECT_GT(std::filesystem::file_size(log + ".1"), 1U << 20) << log;
        EXPECT_LT(std::filesystem::file_size(log), 1U << 20) << log;
    }
}

}  // namespace
}  // namespace marbex::tools
