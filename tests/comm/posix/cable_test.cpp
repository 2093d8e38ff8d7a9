// Printers on cables: the port object of a device over a pseudo-terminal, over a socket in the place of a USB cable,
// and over a network whose other end is restarted.

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "comm/comm_log_file.h"
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

constexpr const char* kHeader = " =====================Log file succesfully created=====================\n";
constexpr const char* kSelected = "SetCommunicationPort -  Communication ID will be setted to 1 \n";

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
    const std::string selected = kSelected;
    EXPECT_EQ(Log(), kHeader +
                         std::string("InitSerialPort -  Calling function in serial class\n"
                                     "CNuComSerial::EnumPorts -  Searching for serial ports in registry key: "
                                     "Hardware\\Devicemap\\Serialcomm\\ \n"
                                     "CNuComSerial::EnumPorts -  Serial ports found: COM1|COM5 \n"
                                     "CNuComSerial::InitParameters-  BaudRate setted to 38400 \n"
                                     "CNuComSerial::InitPort -  Parity setted to Even \n"
                                     "CNuComSerial::InitPort -  Byte Size setted to 7 \n"
                                     "CNuComSerial::InitPort -  Stop Byte setted to 1 \n"
                                     "CNuComSerial::InitPort -  Flux Control setted to Hardware \n"
                                     "SetSerialTimeout -  Calling function in serial class\n"
                                     "CNuComSerial::SetTimeout -  Timeout values setted to: [read interval, read "
                                     "constant, read multiplier, constant, write multiplier] = [10 5000 10 5000 100]\n"
                                     "SetPacketSize -  Calling function in serial class\n"
                                     "CNuComSerial::SetPacketSerial -  Packets size setted; WRITE = 1024 bytes, READ = "
                                     "256 bytes \n"
                                     "Open -  Calling function in serial class\n"
                                     "CNuComSerial::OpenSerial -  System version: 8298\n"
                                     "CNuComSerial::OpenSerial -  Serial link: \\\\.\\LinkToSerial1\n"
                                     "CNuComSerial::OpenSerial -  Com port succesfully opened\n") +
                         selected + "AdvSetSerialDTR -  Calling function in serial class\n" + selected +
                         "AdvSetSerialRTS -  Calling function in serial class\n" + selected +
                         "Write -  Calling function in serial class\n"
                         "CNuComSerial::WriteSerial -  Bytes to send: 1, packet byte used:1\n"
                         "CNuComSerial::WriteSerial -  1 bytes to write:\n"
                         "CNuComSerial::WriteSerial -  SendBuffer[0x00]=0x41 \n" +
                         selected +
                         "Read -  Calling function in serial class\n"
                         "CNuComSerial::ReadSerial -  Receive buffer size: 1, packet size setted:256, packet used for "
                         "read:1 \n"
                         "CNuComSerial::ReadSerial -  1 bytes read:\n"
                         "CNuComSerial::ReadSerial -  ReceiveBuffer[0x00]=0x16 \n" +
                         selected + "Clean -  Calling function in serial class\n" + selected +
                         "Clean -  Calling function in serial class\n" + selected +
                         "Close -  Calling function in serial class\n"
                         "CNuComSerial::CloseSerial -  Close handle : success\n");
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
    const std::string selected = kSelected;
    EXPECT_EQ(
        Log(),
        kHeader +
            std::string("InitUsbPrinter -  Calling function in usb class\n"
                        "CNuComUsb::InitPrinter -  Try to init USB printer with name Receipt Printer \n"
                        "CNuComUsb::InitPrinter -  Try to init printer Receipt Printer\n"
                        "CNuComUsb::InitPrinter -  VID=F055 , PID=0101 , ParentPrefixID= 6&1a2b3c&0 for printer "
                        "Receipt Printer\n"
                        "SetUsbTimeout -  Calling function in usb class\n"
                        "CNuComUsb::SetTimeout Timeout values for USB communication setted to: [send timeout, "
                        "receive timeout] = [5000 , 5000 ]\n"
                        "SetPacketSize -  Calling function in usb class\n"
                        "CNuComUsb::SetPacketUsb -  Packets size setted; WRITE = 1024 bytes, READ = 64 bytes \n"
                        "Open -  Calling function in usb class\n"
                        "CNuComUsb::OpenUsb -  Open on interface type: 1\n") +
            selected + "AdvSetSerialDTR -  Serial function failed: a different com type has been setted\n" + selected +
            "AdvSetSerialRTS -  Serial function failed: a different com type has been setted\n" + selected +
            "Write -  Calling function in usb class\n"
            "CNuComUsb::WriteUsb -  Bytes to send: 1, packet byte used:1\n"
            "CNuComUsb::WriteUsb -  1 bytes to write:\n" +
            selected +
            "Read -  Calling function in usb class\n"
            "CNuComUsb::ReadUsb -  Receive buffer size: 1, packet size setted:64, packet used for read:1 \n" +
            selected + "Clean -  Calling function in usb class\nCNuComUsb::CleanUsb -  USB write channel cleaned\n" +
            selected + "Clean -  Calling function in usb class\nCNuComUsb::CleanUsb -  USB read channel cleaned\n" +
            selected +
            "Read -  Calling function in usb class\n"
            "CNuComUsb::ReadUsb -  Receive buffer size: 6, packet size setted:64, packet used for read:6 \n" +
            selected + "Close -  Calling function in usb class\nCNuComUsb::CloseUsb -  Close handle : success\n");
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
