// What a shop can get wrong: every case ends in bounded time with a result that says what is the matter.

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "platform/loopback_server.h"
#include "tools/till.h"

namespace marbex::tools {
namespace {

using namespace std::chrono_literals;
using virtual_printer::TcpPrinterServer;

constexpr const char* kOpen = "POSPrinter.OpenService(\"POSPrinter\", \"Till1\")";

// The result of opening a till with this profile, and that it came soon.
std::string Opened(const std::string& profile, const std::string& statement = kOpen)
{
    Till till(profile);
    const auto begun = std::chrono::steady_clock::now();
    const std::string answer = till.Answer(statement);
    EXPECT_LT(std::chrono::steady_clock::now() - begun, 15s);
    if (answer != "= 0") {
        EXPECT_EQ(till.Answer("POSPrinter.ClaimDevice(0)"), answer == "= 106" ? "= 106" : "= 112");
        EXPECT_EQ(till.Answer("POSPrinter.CloseService()"), answer == "= 106" ? "= 106" : "= 0");
    }
    return answer;
}

TEST(BadInput, OpeningWhatIsNotThere)
{
    EXPECT_EQ(Opened("", "POSPrinter.OpenService(\"POSPrinter\", \"Nobody\")"), "= 111")
        << "the default profile's COM1";
    EXPECT_EQ(Opened("", "POSPrinter.OpenService(\"Scale\", \"Till1\")"), "= 106");
    EXPECT_EQ(Opened("\"PrinterModel\"=\"TALIS ETHERNET \"\n"), "= 106") << "a blank at the end is another name";
    EXPECT_EQ(Opened("\"PrinterModel\"=\"TALLIS\"\n"), "= 106");
    EXPECT_EQ(Opened("\"PortType\"=dword:00000007\n"), "= 111");
    EXPECT_EQ(Opened("\"PrinterModel\"=\"TALIS\"\n\"PortType\"=dword:00000002\n\"PrinterName\"=\"Nobody\"\n"), "= 111");
}

TEST(BadInput, APortThatRefuses)
{
    uint16_t port = 0;
    {
        const TcpPrinterServer gone("TALIS ETHERNET");
        port = gone.Port();
    }
    EXPECT_EQ(Opened(Till::EthernetProfile(port)), "= 111");
}

TEST(BadInput, APrinterThatSaysNothing)
{
    TcpPrinterServer printer("TALIS ETHERNET");
    printer.SetMute(true);
    EXPECT_EQ(Opened(Till::EthernetProfile(printer.Port()) + Till::Number("TimeoutRX", 300)), "= 107");
}

TEST(BadInput, APrinterThatAnswersRubbish)
{
    tests::LoopbackServer server;
    std::thread peer([&server] {
        tests::LoopbackPeer printer = server.Accept();
        while (!printer.Read(1).empty())
            printer.Send("\xFF\x01rubbish");
    });
    EXPECT_EQ(Opened(Till::EthernetProfile(server.Port()) + Till::Number("TimeoutRX", 300)), "= 107");
    peer.join();
}

TEST(BadInput, ProfileValuesThatDoNotFitAreMissing)
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

TEST(BadInput, ALogFolderThatCannotBeWritten)
{
    TcpPrinterServer printer("TALIS ETHERNET");
    Till till(Till::EthernetProfile(printer.Port()) + "\"LogPath\"=\"/proc/nobody\"\n");
    till.OpenClaimEnable();
    EXPECT_EQ(till.Answer("POSPrinter.PrintNormal(2, \"x\\n\")"), "= 0");
    EXPECT_EQ(till.Answer("POSPrinter.ReleaseDevice()"), "= 0");
    EXPECT_EQ(till.Answer("POSPrinter.CloseService()"), "= 0");
}

}  // namespace
}  // namespace marbex::tools
