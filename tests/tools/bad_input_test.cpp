// What a shop can get wrong: every case ends in bounded time with a result that says what is the matter.

#include <gtest/gtest.h>

#include <string_view>
#include <thread>

#include "loopback_server.h"
#include "tools/opened.h"

namespace marbex::tools {
namespace {

// Opening a till whose printer answers every byte like this.
std::string OpenedAt(std::string_view reply)
{
    tests::LoopbackServer server;
    std::thread peer([&server, reply] {
        tests::LoopbackPeer printer = server.Accept();
        while (!printer.Read(1).empty())
            printer.Send(reply);
    });
    std::string answer = Opened(Till::EthernetProfile(server.Port()) + Till::Number("TimeoutRX", 300));
    peer.join();
    return answer;
}

TEST(BadInput, OpeningWhatIsNotThere)
{
    const std::string nobody = Opened("", "POSPrinter.OpenService(\"POSPrinter\", \"Nobody\")");
    EXPECT_TRUE(nobody == "= 111" || nobody == "= 107") << nobody << " from the default profile's COM1";
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
        const tests::LoopbackServer gone;
        port = gone.Port();
    }
    EXPECT_EQ(Opened(Till::EthernetProfile(port)), "= 111");
}

TEST(BadInput, APrinterThatSaysNothing)
{
    EXPECT_EQ(OpenedAt(""), "= 107");
}

TEST(BadInput, APrinterThatAnswersRubbish)
{
    EXPECT_EQ(OpenedAt("\xFF\x01rubbish"), "= 107");
}

}  // namespace
}  // namespace marbex::tools
