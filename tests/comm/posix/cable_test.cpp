// Printers on cables: the port object of a device over a pseudo-terminal, over a socket in the place of a USB cable,
// and over a network whose other end is restarted.

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "comm/comm_log_file.h"
#include "comm/expected_log.h"
#include "comm/printer_port.h"
#include "comm/read_within.h"
#include "comm/test_clock.h"
#include "platform/posix/local_printer.h"
#include "platform/posix/pseudo_terminal.h"
#include "temp_registry.h"

namespace marbex::comm {
namespace {

using tests::LocalPrinter;
using tests::LoopbackPeer;
using tests::PseudoTerminal;

class Cable : public testing::Test {
protected:
    explicit Cable(uint32_t portType)
    {
        port.SetPortType(portType);
        port.SetTimeouts(5000, 5000);
    }

    int32_t Read(std::string& text, uint16_t room)
    {
        text.assign(room, '\0');
        const int32_t result = port.Read(reinterpret_cast<uint8_t*>(text.data()), &room);
        text.resize(result < 0 ? 0 : room);
        return result;
    }

    std::string Log() const { return tests::ReadLog(registry.Folder() + "/COposComm1.log"); }

    tests::TempRegistry registry;
    tests::TestClock clock;
    PortTable table{{.clock = &clock}};
    CPrinterPort port{table};
    std::string reply;
};

class SerialCable : public Cable {
protected:
    SerialCable() : Cable(kSerial) { PlugIn(); }

    void PlugIn()
    {
        terminal = std::make_unique<PseudoTerminal>();
        registry.Write("[HKEY_LOCAL_MACHINE\\HARDWARE\\DEVICEMAP\\SERIALCOMM]\n\"" + terminal->Path() +
                       "\"=\"COM1\"\n\"" + display.Path() + "\"=\"COM5\"\n");
    }

    // Its entry goes with it: another process may get a terminal of the same name.
    void Unplug()
    {
        registry.Write("[HKEY_LOCAL_MACHINE\\HARDWARE\\DEVICEMAP\\SERIALCOMM]\n\"" + display.Path() + "\"=\"COM5\"\n");
        terminal->Unplug();
    }

    PseudoTerminal display;
    std::unique_ptr<PseudoTerminal> terminal;
};

TEST_F(SerialCable, ShortExchangeInTheLog)
{
    port.SetLog(3, 0, registry.Folder(), 1);
    port.SetComPort(1, 38400);
    port.SetFormat("7e1");
    ASSERT_EQ(port.Open(), 0);
    EXPECT_EQ(port.WriteText("A"), 0);
    EXPECT_EQ(terminal->Read(1), "A");
    terminal->Send("\x16");
    EXPECT_EQ(Read(reply, 1), 1);
    EXPECT_EQ(reply, "\x16");
    EXPECT_EQ(port.CleanBoth(), 0);
    port.DiscardInput();
    EXPECT_EQ(port.Close(), 0);
    EXPECT_EQ(Log(), tests::ExpectedLog("Serial"));
}

TEST_F(SerialCable, ProfileSettingsReachTheLine)
{
    port.SetHandshake(2);
    port.SetComPort(1, 57600);
    ASSERT_EQ(port.Open(), 0);
    termios line = terminal->Settings();
    EXPECT_EQ(cfgetospeed(&line), static_cast<speed_t>(B57600));
    EXPECT_NE(line.c_iflag & IXON, 0U);
    EXPECT_EQ(line.c_cc[VSTOP], 0x13);
    port.Close();
    for (const uint32_t code : {0U, 1U, 3U}) {
        port.SetHandshake(code);
        port.SetComPort(1, 0);  // no speed of its own: the connection's
        ASSERT_EQ(port.Open(), 0);
        line = terminal->Settings();
        EXPECT_EQ(cfgetospeed(&line), static_cast<speed_t>(B38400));
        EXPECT_EQ(line.c_iflag & IXON, 0U);
        EXPECT_NE(line.c_cflag & CRTSCTS, 0U);
        port.Close();
    }
    port.SetComPort(2, 9600);
    EXPECT_EQ(port.Open(), -1);
    port.SetComPort(1, 14400);
    EXPECT_EQ(port.Open(), -1);
}

TEST_F(SerialCable, SecondConnectionLeadsToItsOwnPort)
{
    ASSERT_EQ(port.Open(), 0);
    const auto* text = reinterpret_cast<const uint8_t*>("Thank you");
    EXPECT_EQ(port.WriteSecondary(text, 9), 1);
    EXPECT_EQ(port.OpenSecondary(4), -1);
    EXPECT_EQ(port.OpenSecondary(5), 0);
    EXPECT_EQ(port.OpenSecondary(5), -1);
    EXPECT_EQ(port.WriteSecondary(text, 9), 0);
    EXPECT_EQ(display.Read(9), "Thank you");
    EXPECT_FALSE(terminal->HasInput());
    EXPECT_EQ(port.WriteText("R"), 0);
    EXPECT_EQ(terminal->Read(1), "R");
    EXPECT_EQ(port.Close(), 0);
    EXPECT_EQ(port.OpenSecondary(5), 0);
    EXPECT_EQ(port.WriteSecondary(text, 9), -1);  // the primary one is closed
    EXPECT_EQ(port.Close(), -1);
}

TEST_F(SerialCable, TimeoutsOfZeroStillEnd)
{
    port.SetTimeouts(0, 0);
    ASSERT_EQ(port.Open(), 0);
    EXPECT_EQ(port.WriteText("x"), 0);
    EXPECT_EQ(Read(reply, 1), -1);
}

TEST_F(SerialCable, UnpluggedAdapterComesBackWithoutReopening)
{
    port.SetHandshake(2);
    port.SetComPort(1, 57600);
    ASSERT_EQ(port.Open(), 0);
    Unplug();
    EXPECT_EQ(port.WriteText("lost"), 1);
    EXPECT_TRUE(port.IsOpen());
    EXPECT_EQ(Read(reply, 1), -1);  // the adapter is still out
    PlugIn();
    EXPECT_EQ(port.WriteText("soon"), 1);
    clock.Sleep(2000);
    EXPECT_EQ(port.WriteText("back"), 0);
    EXPECT_EQ(terminal->Read(4), "back");
    const termios line = terminal->Settings();
    EXPECT_EQ(cfgetospeed(&line), static_cast<speed_t>(B57600));
    EXPECT_NE(line.c_iflag & IXON, 0U);
    Unplug();
    EXPECT_EQ(Read(reply, 1), -1);
    PlugIn();
    EXPECT_EQ(port.WriteText("again"), 0);
    EXPECT_EQ(terminal->Read(5), "again");
    EXPECT_EQ(port.Openings(), 3U);
}

TEST_F(SerialCable, ReadsWithATimeLimitOfItsOwn)
{
    port.SetComPort(1, 0);
    port.SetTimeouts(10000, 10000);
    ASSERT_EQ(port.Open(), 0);
    EXPECT_EQ(port.BaudRate(), 38400U);
    tests::CheckReadsWithin(port, [this](std::string_view bytes) { terminal->Send(bytes); });
    Unplug();
    EXPECT_EQ(tests::ReadWithin(port, 60000), "(failed)");
    EXPECT_EQ(tests::ReadWithin(port, 60000), "(failed)");
}

class UsbCable : public Cable {
protected:
    UsbCable() : Cable(kUsb)
    {
        registry.Write(tests::UsbPrinterLines(printer.Path()));
        port.SetPrinterName("Receipt Printer");
    }

    void Open()
    {
        ASSERT_EQ(port.Open(), 0);
        peer = printer.Accept();
    }

    LocalPrinter printer{registry.Folder() + "/printer"};
    LoopbackPeer peer;
};

TEST_F(UsbCable, ShortExchangeInTheLog)
{
    port.SetLog(2, 0, registry.Folder(), 1);
    Open();
    EXPECT_EQ(port.WriteText("A"), 0);
    EXPECT_EQ(peer.Read(1), "A");
    peer.Send("\x16\x17");
    EXPECT_EQ(Read(reply, 1), 1);
    EXPECT_EQ(reply, "\x16");
    EXPECT_EQ(port.CleanBoth(), 0);
    port.DiscardInput();
    peer.Send("\x18");
    EXPECT_EQ(Read(reply, 6), 1);
    EXPECT_EQ(reply, "\x18");
    EXPECT_EQ(port.Close(), 0);
    EXPECT_EQ(Log(), tests::ExpectedLog("Usb"));
}

TEST_F(UsbCable, UnknownOrUnpluggedPrinterDoesNotOpen)
{
    port.SetPrinterName("receipt printer");
    EXPECT_EQ(port.Open(), -1);
    port.SetPrinterName("Receipt Printer");
    port.SetTimeouts(1000, 0);
    EXPECT_EQ(port.Open(), -1);
    port.SetTimeouts(1000, 1000);
    printer.Unplug();
    EXPECT_EQ(port.Open(), -1);
    registry.Write("");
    EXPECT_EQ(port.Open(), -1);
    registry.Write(tests::UsbPrinterLines(printer.Path(), "Receipt Printer", "04B8"));
    printer.PlugIn();
    EXPECT_EQ(port.Open(), -1);
}

TEST_F(UsbCable, UnpluggedBetweenJobsAndDuringAReadComesBack)
{
    Open();
    peer.Finish();
    printer.Unplug();
    EXPECT_EQ(port.WriteText("lost"), 1);
    EXPECT_TRUE(port.IsOpen());
    EXPECT_EQ(port.WriteText("out"), 1);
    printer.PlugIn();
    EXPECT_EQ(port.WriteText("soon"), 1);
    clock.Sleep(2000);
    EXPECT_EQ(port.WriteText("back"), 0);
    peer = printer.Accept();
    EXPECT_EQ(peer.Read(4), "back");
    peer.Finish();
    EXPECT_EQ(Read(reply, 1), -1);
    EXPECT_EQ(port.WriteText("again"), 0);
    EXPECT_EQ(printer.Accept().Read(5), "again");
    EXPECT_EQ(port.Openings(), 3U);
}

TEST_F(UsbCable, ReadsWithATimeLimitOfItsOwn)
{
    port.SetTimeouts(10000, 10000);
    Open();
    EXPECT_EQ(port.BaudRate(), 0U);
    tests::CheckReadsWithin(port, [this](std::string_view bytes) { peer.Send(bytes); });
    peer.Finish();
    EXPECT_EQ(tests::ReadWithin(port, 60000), "(failed)");
}

TEST_F(UsbCable, SilentPrinterLeavesThePortOpen)
{
    port.SetTimeouts(5000, 20);
    Open();
    EXPECT_EQ(Read(reply, 6), -1);
    EXPECT_EQ(port.WriteText("still"), 0);
    EXPECT_EQ(peer.Read(5), "still");
}

// A printer that is restarted, quickly or slowly: whoever goes on calling has it back two seconds later at the
// latest.
TEST(NetworkCable, PrinterThatIsRestartedIsBackWithinTwoSeconds)
{
    using Clock = std::chrono::steady_clock;
    const auto restart = [](std::chrono::milliseconds away) {
        tests::LoopbackServer server;
        PortTable table;
        CPrinterPort port(table);
        port.SetPortType(kEthernet);
        port.SetIpAddress("127.0.0.1");
        port.SetTcpPort(server.Port());
        ASSERT_EQ(port.Open(), 0);
        server.Accept().Reset();
        server.Stop();
        const auto start = Clock::now();
        std::unique_ptr<tests::LoopbackServer> restarted;
        while (port.WriteText("x") != 0 && Clock::now() - start < away + std::chrono::seconds(10)) {
            if (restarted == nullptr && Clock::now() - start >= away)
                restarted = std::make_unique<tests::LoopbackServer>(server.Port());
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        EXPECT_LT(Clock::now() - start, away + std::chrono::milliseconds(3500)) << away.count();
        EXPECT_EQ(port.Openings(), 2U);
        ASSERT_NE(restarted, nullptr) << away.count();
        EXPECT_EQ(restarted->Accept().Read(1), "x");
    };
    std::vector<std::jthread> restarts;
    for (const int away : {50, 300, 3000})
        restarts.emplace_back([&restart, away] { restart(std::chrono::milliseconds(away)); });
}

}  // namespace
}  // namespace marbex::comm
