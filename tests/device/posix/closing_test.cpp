// Closing while the printer takes nothing, says nothing or is not there, on every link. The time-outs of the profile
// are a minute, and none of that minute is spent.

#include "device/posix/device_bench.h"
#include "device/posix/simple_talis.h"
#include "loopback_server.h"
#include "opos/line_display.h"
#include "platform/posix/local_printer.h"
#include "platform/posix/pseudo_terminal.h"
#include "platform/tcp.h"

namespace marbex::test {
namespace {

using namespace opos;
using namespace virtual_printer;
using tests::PseudoTerminal;

constexpr const char* kMinutes = "\"TimeoutRX\"=dword:0000ea60\n\"TimeoutTX\"=dword:0000ea60\n";

class ClosingTest : public DeviceBench {
protected:
    using DeviceBench::DeviceBench;

    void Print(std::size_t bytes, int jobs = 3)
    {
        Async(true);
        for (int i = 0; i < jobs; ++i)
            EXPECT_EQ(device->PrintNormal(PTR_S_RECEIPT, std::string(bytes, 'x') + "\n"), 0);
        EXPECT_TRUE(RunUntil([this] { return Number(PIDX_State) == OPOS_S_BUSY; }));
    }

    // Ten seconds are promised; this leaves room for a busy machine.
    void CloseInTime()
    {
        const auto begun = std::chrono::steady_clock::now();
        device->CloseService();
        const auto took = std::chrono::steady_clock::now() - begun;
        EXPECT_GT(took, std::chrono::milliseconds(1500)) << "nothing was in the way";
        EXPECT_LT(took, std::chrono::seconds(8));
        EXPECT_EQ(Number(PIDX_State), OPOS_S_CLOSED);
    }

    static std::string SerialProfile(const std::string& lines)
    {
        return std::string(kMinutes) + "\"PortType\"=dword:0\n\"Handshake\"=dword:2\n" +
               "[HKEY_LOCAL_MACHINE\\HARDWARE\\DEVICEMAP\\SERIALCOMM]\n" + lines;
    }
};

class HeldSerialLine : public ClosingTest, public testing::WithParamInterface<std::size_t> {};

TEST_P(HeldSerialLine, IsGivenUpAndItsOutputDropped)
{
    SerialTalis printer;
    Ready(SerialProfile("\"" + printer.terminal.Path() + "\"=\"COM1\"\n"));
    printer.Hold();
    Print(GetParam());
    CloseInTime();
    EXPECT_FALSE(printer.terminal.HasInput()) << "the line was not held";
}

INSTANTIATE_TEST_SUITE_P(Bytes, HeldSerialLine, testing::Values(300, 3000));

class HeldSecondLine : public ClosingTest {
protected:
    HeldSecondLine() : ClosingTest("ARGO PC TURBO") {}
};

TEST_F(HeldSecondLine, IsGivenUpLikeTheFirst)
{
    LinkOptions serial;
    serial.kind = LinkOptions::Kind::kSerial;
    const PrinterServer printer("ARGO PC TURBO", serial);
    const PseudoTerminal display;
    Ready(SerialProfile("\"" + printer.SerialPath() + "\"=\"COM1\"\n\"" + display.Path() + "\"=\"COM5\"\n"));
    HoldWithXoff(display);
    Async(true);
    EXPECT_EQ(device->External_LineDisplay_DisplayText("Thank you", DISP_DT_NORMAL), 0);
    EXPECT_TRUE(RunUntil([this] { return Number(PIDX_State) == OPOS_S_BUSY; }));
    CloseInTime();
    EXPECT_FALSE(display.HasInput()) << "the line was not held";
}

TEST_F(ClosingTest, TcpPrinterThatStopsTakingIsGivenUp)
{
    Ready(kMinutes);
    server.SetCover(true);
    Print(500000);
    CloseInTime();
}

TEST_F(ClosingTest, ConnectionThatNobodyAnswersIsGivenUp)
{
    Ready(kMinutes);
    server.Refuse(true);
    tests::LoopbackServer full(server.Port(), 0);
    std::vector<std::unique_ptr<platform::TcpSocket>> waiting;
    do {
        waiting.push_back(platform::NewTcpSocket());
        ASSERT_TRUE(waiting.back()->Create());
    } while (waiting.back()->Connect(tests::kLoopback, server.Port(), 200));
    server.Drop();
    Print(10);
    CloseInTime();
}

TEST_F(ClosingTest, UsbPrinterThatSaysNothingIsGivenUp)
{
    LinkOptions usb;
    usb.kind = LinkOptions::Kind::kUsb;
    usb.socketPath = registry.Folder() + "/printer";
    PrinterServer printer("TALIS", usb);
    Ready(std::string(kMinutes) + "\"PortType\"=dword:2\n\"PrinterName\"=\"Receipt Printer\"\n" +
          tests::UsbPrinterLines(usb.socketPath));
    printer.SetMute(true);
    const std::size_t asked = printer.All<StatusQuery>().size();
    ASSERT_TRUE(printer.WaitFor([&](const VirtualPrinter& seen) { return seen.All<StatusQuery>().size() > asked; }));
    CloseInTime();
}

}  // namespace
}  // namespace marbex::test
