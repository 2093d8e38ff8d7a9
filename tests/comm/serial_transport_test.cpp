#include "comm/serial_transport.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "comm/scripted_serial.h"
#include "comm/test_clock.h"
#include "comm/transport_log.h"

namespace marbex::comm {
namespace {

using platform::LineControl;
using platform::SerialTransfer;
using platform::SystemVersion;
using tests::ScriptedSerial;

constexpr const char* kNotOpen = "Impossibile to perform the operation: device is not open";

class SerialTransport : public testing::Test {
protected:
    uint32_t Init(uint32_t flowControl = 0) { return transport.InitPort("COM1", 9600, 0, 8, 0, flowControl); }

    void Open(uint32_t flowControl = 0)
    {
        ASSERT_EQ(Init(flowControl), 0U);
        ASSERT_EQ(transport.OpenSerial(), 0U);
        log.Forget();
    }

    uint32_t Write(std::string_view text)
    {
        return transport.WriteSerial(reinterpret_cast<const uint8_t*>(text.data()), static_cast<uint32_t>(text.size()));
    }

    uint32_t Read(uint32_t room = 16)
    {
        buffer.assign(room, 0);
        return transport.ReadSerial(buffer.data(), room, &count);
    }

    tests::TransportLog log;
    ScriptedSerial serial;
    tests::TestClock clock;
    CNuComSerial transport{log.log, serial, clock};
    std::vector<uint8_t> buffer;
    uint32_t count = 0;
};

TEST_F(SerialTransport, InitTellsEachRejectedParameter)
{
    EXPECT_EQ(transport.InitPort("COM1", 14400, 0, 8, 0, 0), 1U);
    EXPECT_TRUE(log.Has("CNuComSerial::InitPort -  BaudRate not setted, wrong parameter"));
    EXPECT_EQ(transport.OpenSerial(), 101U);
    EXPECT_EQ(log.Last(), "CNuComSerial::OpenSerial -  Open failed: serial device has not been initalized");
    EXPECT_EQ(transport.InitPort("COM1", 9600, 3, 6, 0, 0), 6U);
    EXPECT_EQ(transport.InitPort("COM1", 9600, 0, 8, 1, 0), 8U);
    log.Forget();
    EXPECT_EQ(transport.InitPort("COM1", 0, 3, 9, 3, 3), 31U);
    const std::string prefix = "CNuComSerial::InitPort -  ";
    EXPECT_NE(log.Text().find(
                  prefix + "BaudRate not setted, wrong parameter\n" + prefix + "Parity not setted, wrong parameter\n" +
                  prefix + "Byte Size not setted, wrong parameter\n" + prefix +
                  "Stop Byte not setted, wrong parameter\n" + prefix + "Flux Control not setted, wrong parameter\n"),
              std::string::npos);
}

TEST_F(SerialTransport, InitNamesWhatItSets)
{
    EXPECT_EQ(transport.InitPort("COM1", 115200, 2, 7, 2, 1), 0U);
    EXPECT_EQ(
        log.Text(),
        "CNuComSerial::EnumPorts -  Searching for serial ports in registry key: Hardware\\Devicemap\\Serialcomm\\ \n"
        "CNuComSerial::EnumPorts -  Serial ports found: COM1 \n"
        "CNuComSerial::InitParameters-  BaudRate setted to 115200 \n"
        "CNuComSerial::InitPort -  Parity setted to Even \n"
        "CNuComSerial::InitPort -  Byte Size setted to 7 \n"
        "CNuComSerial::InitPort -  Stop Byte setted to 2 \n"
        "CNuComSerial::InitPort -  Flux Control setted to Xon/Xoff \n");
    for (const uint32_t rate : {1200U, 2400U, 4800U, 9600U, 19200U, 38400U, 57600U})
        EXPECT_EQ(transport.InitPort("COM1", rate, 1, 8, 0, 2), 0U) << rate;
}

TEST_F(SerialTransport, PortsAreMatchedWholeAndWithCase)
{
    serial.ports = {{"a", "COM10"}, {"b", "COM1"}, {"c", "COM1234567890123456"}, {"d", "COM12345678901234567"}};
    EXPECT_EQ(transport.CheckCom("COM1"), 1);
    EXPECT_EQ(transport.CheckCom("COM10"), 1);
    EXPECT_EQ(transport.CheckCom("COM1234567890123456"), 1);   // 19 characters
    EXPECT_EQ(transport.CheckCom("COM12345678901234567"), 0);  // 20
    for (const char* name : {"com1", "COM", "COM100", "", "COM10|COM1"})
        EXPECT_EQ(transport.CheckCom(name), 0) << name;

    std::vector<char> list(100);
    EXPECT_EQ(transport.EnumPorts(list), 0U);
    EXPECT_STREQ(list.data(), "COM10|COM1|COM1234567890123456|COM12345678901234567");
    serial.ports.resize(2);
    list.resize(10);
    EXPECT_EQ(transport.EnumPorts(list), 3U);
    EXPECT_EQ(log.Last(), "CNuComSerial::EnumPorts -  Buffer size parameter can not contain the result");
    list.resize(11);
    EXPECT_EQ(transport.EnumPorts(list), 0U);

    EXPECT_EQ(transport.InitPort("COM2", 9600, 0, 8, 0, 0), 256U);
    EXPECT_EQ(log.Last(), "CNuComSerial::InitPort -  Init failed: comm port COM2 not found");
    serial.mapReadable = false;
    EXPECT_EQ(transport.EnumPorts(list), 1U);
    EXPECT_EQ(log.Last(), "CNuComSerial::EnumPorts -  Error opening registry key: Hardware\\Devicemap\\Serialcomm\\ ");
    EXPECT_EQ(Init(), 256U);
    serial.ports.clear();
    EXPECT_EQ(transport.EnumPorts(list), 0U);
    EXPECT_STREQ(list.data(), "");
    EXPECT_EQ(log.Last(), "CNuComSerial::EnumPorts -  No serial ports");
    EXPECT_EQ(transport.OpenSerial(), 101U);  // a missing port takes an earlier init away
}

TEST_F(SerialTransport, OpensThroughALinkOfItsOwn)
{
    serial.ports = {{"\\Device\\Serial2", "COM3"}};
    ASSERT_EQ(transport.InitPort("COM3", 9600, 0, 8, 0, 0), 0U);
    log.Forget();
    EXPECT_EQ(transport.OpenSerial(), 0U);
    EXPECT_EQ(log.Text(),
              "CNuComSerial::OpenSerial -  System version: 8298\n"
              "CNuComSerial::OpenSerial -  Serial link: \\\\.\\LinkToSerial3\n"
              "CNuComSerial::OpenSerial -  Com port succesfully opened\n");
    EXPECT_EQ(serial.openedPath, "\\\\.\\LinkToSerial3");
    EXPECT_EQ(transport.OpenSerial(), 102U);
    EXPECT_EQ(log.Last(), "CNuComSerial::OpenSerial -  Serial device already opened");
    EXPECT_EQ(transport.InitPort("COM3", 9600, 0, 8, 0, 0), 1024U);
    EXPECT_EQ(log.Last(), "CNuComSerial::InitPort -  Init failed: serial device already opened");
    EXPECT_EQ(transport.CloseSerial(), 0U);
    EXPECT_EQ(log.Last(), "CNuComSerial::CloseSerial -  Close handle : success");
    EXPECT_EQ(serial.links, (std::vector<std::string>{"+LinkToSerial3=\\Device\\Serial2", "-LinkToSerial3"}));
    EXPECT_EQ(serial.opened, 0);
    EXPECT_EQ(transport.CloseSerial(), 103U);

    // A link that was there before stays there.
    serial.links.clear();
    serial.link = ScriptedSerial::LinkState::kPresent;
    EXPECT_EQ(transport.OpenSerial(), 0U);
    EXPECT_EQ(transport.CloseSerial(), 0U);
    EXPECT_TRUE(serial.links.empty());
}

TEST_F(SerialTransport, SystemVersionsHaveTheirCodes)
{
    using Family = SystemVersion::Family;
    struct Row {
        SystemVersion version;
        uint32_t code;
    };
    for (const Row& row : {Row{{Family::kWindows9x, 4, 0}, 95}, Row{{Family::kWindows9x, 4, 10}, 95},
                           Row{{Family::kWindows9x, 4, 90}, 19781}, Row{{Family::kWindows9x, 5, 0}, 0},
                           Row{{Family::kWindowsNt, 4, 0}, 5133312}, Row{{Family::kWindowsNt, 5, 0}, 512000},
                           Row{{Family::kWindowsNt, 5, 1}, 5787648}, Row{{Family::kWindowsNt, 5, 2}, 4726784},
                           Row{{Family::kWindowsNt, 5, 3}, 8298}, Row{{Family::kWindowsNt, 6, 0}, 1010},
                           Row{{Family::kWindowsNt, 6, 1}, 4790}, Row{{Family::kWindowsNt, 6, 2}, 8298},
                           Row{{Family::kWindowsNt, 10, 0}, 8298}, Row{{Family::kOther, 6, 1}, 0}}) {
        serial.version = row.version;
        uint32_t code = 1, error = 0;
        EXPECT_EQ(transport.GetSystemVersion(code, error), 1);
        EXPECT_EQ(code, row.code);
    }
    // The oldest device maps hold bare names.
    serial.ports = {{"Serial0", "COM1"}};
    serial.version = SystemVersion{Family::kWindowsNt, 4, 0};
    Open();
    EXPECT_EQ(serial.links[0], "+LinkToSerial1=\\Device\\Serial0");
}

TEST_F(SerialTransport, FailedOpensHaveTheirCodesAndHoldNothing)
{
    ASSERT_EQ(Init(), 0U);
    const auto fails = [&](uint32_t code, const std::string& text) {
        EXPECT_EQ(transport.OpenSerial(), code);
        EXPECT_EQ(log.Last(), "CNuComSerial::OpenSerial -  " + text);
        EXPECT_EQ(transport.LastSystemError(), 5U);
        EXPECT_EQ(serial.opened, 0);
    };
    const auto version = serial.version;
    serial.version.reset();
    fails(104, "Impossibile to identify the system");
    serial.version = SystemVersion{SystemVersion::Family::kWindows9x, 4, 0};
    serial.canOpen = false;  // there is no path for such a system
    fails(106, "Open failed: invalid handle returned");
    EXPECT_EQ(serial.openedPath, "");
    serial.version = version;
    serial.canDefine = false;
    fails(105, "Error during creation of symbolic link");
    EXPECT_TRUE(log.Has("CNuComSerial::CreateComPortLink -  Symbolic link not exists: error creating it"));
    serial.canDefine = true;
    serial.link = ScriptedSerial::LinkState::kError;
    fails(105, "Error during creation of symbolic link");
    EXPECT_TRUE(
        log.Has("CNuComSerial::CreateComPortLink -  Error querying dos device: link not found and can not create it"));
    serial.link = ScriptedSerial::LinkState::kMissing;
    serial.mapReadable = false;
    fails(105, "Error during creation of symbolic link");
    EXPECT_TRUE(
        log.Has("CNuComSerial::GetTheLinkPathName -  Error opening registry key: Hardware\\Devicemap\\Serialcomm\\ "));
    serial.mapReadable = true;
    serial.ports[0].port = "COM2";
    fails(105, "Error during creation of symbolic link");
    EXPECT_TRUE(log.Has("CNuComSerial::GetTheLinkPathName -  Link device not found in registry for port COM1 "));
    serial.ports[0].port = "COM1";

    serial.links.clear();
    fails(106, "Open failed: invalid handle returned");
    serial.canOpen = true;
    serial.canApply = false;
    fails(108, "Open failed: error during SetCommState ");
    serial.canApply = true;
    serial.canSetTimeouts = false;
    fails(107, "Open failed: error during SetCommTimeouts ");
    const std::vector<std::string> madeAndRemoved{"+LinkToSerial1=\\Device\\Serial0", "-LinkToSerial1"};
    for (std::size_t i = 0; i < 6; ++i)
        EXPECT_EQ(serial.links.at(i), madeAndRemoved[i % 2]);
    serial.canSetTimeouts = true;
    EXPECT_EQ(transport.OpenSerial(), 0U);
}

TEST_F(SerialTransport, FlowControlDecidesTheLineSettings)
{
    serial.settings.parityCheck = true;
    ASSERT_EQ(transport.InitPort("COM1", 19200, 1, 7, 2, 0), 0U);
    ASSERT_EQ(transport.OpenSerial(), 0U);
    const platform::LineSettings& line = serial.settings;
    EXPECT_EQ(line.baudRate, 19200U);
    EXPECT_EQ(line.byteSize, 7);
    EXPECT_EQ(line.parity, platform::LineParity::kOdd);
    EXPECT_EQ(line.stopBits, platform::StopBits::kTwo);
    EXPECT_TRUE(line.parityCheck);  // as the port had it
    EXPECT_TRUE(line.ctsOutputFlow);
    EXPECT_FALSE(line.xonXoffOutput || line.xonXoffInput || line.dsrOutputFlow);
    EXPECT_EQ(line.dtr, LineControl::kHandshake);
    EXPECT_EQ(line.rts, LineControl::kHandshake);
    EXPECT_EQ(line.xonCharacter, 0);
    EXPECT_EQ(line.xonLimit, 2048);
    EXPECT_EQ(line.xoffLimit, 512);
    EXPECT_EQ(line.eventCharacter, 0x0A);
    EXPECT_TRUE(line.binary && line.continueAfterXoff);

    transport.CloseSerial();
    Open(1);
    EXPECT_TRUE(line.ctsOutputFlow && line.xonXoffOutput && line.xonXoffInput);
    EXPECT_EQ(line.dtr, LineControl::kEnabled);
    EXPECT_EQ(line.xonCharacter, 0x11);
    EXPECT_EQ(line.xoffCharacter, 0x13);

    transport.CloseSerial();
    Open(2);
    EXPECT_FALSE(line.ctsOutputFlow || line.xonXoffOutput || line.xonXoffInput);
    EXPECT_EQ(line.dtr, LineControl::kDisabled);
    EXPECT_EQ(line.rts, LineControl::kDisabled);
}

TEST_F(SerialTransport, ModemLinesLeaveHandshakeModeWhenTheyAreSet)
{
    EXPECT_EQ(transport.SetDTR(true), 103U);
    EXPECT_EQ(transport.SetRTS(true), 103U);
    Open();
    EXPECT_EQ(transport.SetDTR(true), 0U);
    EXPECT_EQ(serial.settings.dtr, LineControl::kEnabled);
    EXPECT_EQ(serial.settings.rts, LineControl::kHandshake);
    EXPECT_EQ(transport.SetRTS(false), 0U);
    EXPECT_EQ(serial.settings.rts, LineControl::kEnabled);
    EXPECT_EQ(serial.lines, (std::vector<std::string>{"DTR+", "RTS-"}));

    serial.canSetLines = false;
    EXPECT_EQ(transport.SetDTR(true), 118U);
    EXPECT_EQ(log.Last(), "CNuComSerial::SetDTR -  EscapeCommFunctions() error, SetDTR has failed");
    EXPECT_EQ(transport.SetRTS(true), 119U);
    EXPECT_EQ(log.Last(), "CNuComSerial::SetRTS -  EscapeCommFunctions() error, SetRTS has failed");
    serial.canApply = false;
    EXPECT_EQ(transport.SetDTR(true), 108U);
    EXPECT_EQ(transport.SetRTS(true), 108U);
    EXPECT_EQ(log.Last(), "CNuComSerial::SetRTS -  Open failed: error during SetCommState ");
    serial.canGet = false;
    EXPECT_EQ(transport.SetDTR(true), 115U);
    EXPECT_EQ(transport.SetRTS(true), 115U);
    EXPECT_EQ(log.Last(), "CNuComSerial::SetRTS -  Impossible to get parameters: GetCommState has failed");
}

TEST_F(SerialTransport, DisabledModemLinesCannotBeSet)
{
    Open(2);
    EXPECT_EQ(transport.SetDTR(true), 120U);
    EXPECT_EQ(log.Last(), "CNuComSerial::SetDTR -  Impossibile to set/reset DTR: DTR control disabled");
    EXPECT_EQ(transport.SetRTS(true), 121U);
    EXPECT_EQ(log.Last(), "CNuComSerial::SetRTS -  Impossibile to set/reset DTR: RTS control disabled");
    EXPECT_TRUE(serial.lines.empty());
}

TEST_F(SerialTransport, TimeoutsComeConstantsFirst)
{
    EXPECT_EQ(transport.SetTimeout(1, 2, 3, 4, 0xFFFFFFFF), 0U);
    EXPECT_EQ(log.Last(),
              "CNuComSerial::SetTimeout -  Timeout values setted to: [read interval, read constant, read multiplier, "
              "constant, write multiplier] = [1 2 3 4 2147483647]");
    Open();
    EXPECT_EQ(serial.timeouts.readInterval, 1U);
    EXPECT_EQ(serial.timeouts.readConstant, 2U);
    EXPECT_EQ(serial.timeouts.readMultiplier, 3U);
    EXPECT_EQ(serial.timeouts.writeConstant, 4U);
    EXPECT_EQ(transport.SetTimeout(0, 0, 10, 0, 100), 0U);
    EXPECT_EQ(serial.timeouts.readMultiplier, 10U);
    serial.canSetTimeouts = false;
    EXPECT_EQ(transport.SetTimeout(1, 1, 1, 1, 1), 107U);
    EXPECT_EQ(log.Last(), "CNuComSerial::SetTimeout -  Open failed: error during SetCommTimeouts ");
    EXPECT_EQ(transport.SetPacketSerial(0, 1), 9U);
    EXPECT_EQ(transport.SetPacketSerial(1, 0), 9U);
    EXPECT_EQ(log.Last(), "CNuComSerial::SetPacketSerial -  Packet size can't be = 0");
}

TEST_F(SerialTransport, WritesInPackets)
{
    EXPECT_EQ(Write("x"), 103U);
    EXPECT_EQ(log.Last(), std::string("CNuComSerial::WriteSerial -  ") + kNotOpen);
    Open();
    log.log.SetMode(kLogToFile, 12);
    EXPECT_EQ(Write(std::string(2500, 'x')), 0U);
    EXPECT_EQ(serial.writes, (std::vector<std::size_t>{1024, 1024, 452}));
    EXPECT_EQ(transport.BytesWritten(), 2500U);
    EXPECT_TRUE(serial.purges.empty());
    EXPECT_EQ(log.Text(),
              "CNuComSerial::WriteSerial -  Bytes to send: 2500, packet byte used:1024\n"
              "CNuComSerial::WriteSerial -  2500 bytes to write:\n");
    EXPECT_EQ(transport.WriteSerial(nullptr, 5), 0U);
    EXPECT_EQ(Write(""), 0U);
    EXPECT_EQ(serial.writes.size(), 3U);
}

TEST_F(SerialTransport, FailedAndShortWritesArePurged)
{
    Open();
    serial.write = [](int call, std::size_t size) { return SerialTransfer{call != 2, call == 2 ? 0 : size}; };
    EXPECT_EQ(Write(std::string(3000, 'x')), 111U);
    EXPECT_TRUE(log.Has("CNuComSerial::WriteSerial -  Write failed: error system occurred during Write()"));
    EXPECT_EQ(log.Last(), "CNuComSerial::WriteSerial -  Purge communication ports");
    EXPECT_EQ(serial.writes.size(), 2U);
    EXPECT_EQ(transport.BytesWritten(), 1024U);
    EXPECT_EQ(transport.LastSystemError(), 5U);

    serial.write = [](int, std::size_t) { return SerialTransfer{true, 0}; };
    EXPECT_EQ(Write("x"), 112U);
    EXPECT_TRUE(log.Has("CNuComSerial::WriteSerial -  Write failed: no bytes send during writing operation "));

    serial.write = [](int, std::size_t size) { return SerialTransfer{true, size - 1}; };
    log.Forget();
    EXPECT_EQ(Write("abc"), 0U);
    EXPECT_EQ(transport.BytesWritten(), 2U);
    EXPECT_EQ(log.Text(),
              "CNuComSerial::WriteSerial -  Bytes to send: 3, packet byte used:3\n"
              "CNuComSerial::WriteSerial -  3 bytes to write:\n"
              "CNuComSerial::WriteSerial -  SendBuffer[0x00]=0x61 \n"
              "CNuComSerial::WriteSerial -  SendBuffer[0x01]=0x62 \n"
              "CNuComSerial::WriteSerial -  Purge communication ports\n");
    EXPECT_EQ(serial.purges, (std::vector<std::string>{"outin", "outin", "outin"}));
}

TEST_F(SerialTransport, ReadsOnceAndTellsSilenceFromFailure)
{
    EXPECT_EQ(Read(), 103U);
    Open();
    serial.read = {true, 2};
    EXPECT_EQ(Read(2000), 0U);
    EXPECT_EQ(count, 2U);
    EXPECT_EQ(log.Text(),
              "CNuComSerial::ReadSerial -  Receive buffer size: 2000, packet size setted:1024, packet used for "
              "read:1024 \n"
              "CNuComSerial::ReadSerial -  2 bytes read:\n"
              "CNuComSerial::ReadSerial -  ReceiveBuffer[0x00]=0x2a \n"
              "CNuComSerial::ReadSerial -  ReceiveBuffer[0x01]=0x2a \n");
    serial.read = {true, 0};
    EXPECT_EQ(Read(), 114U);
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(log.Last(), "CNuComSerial::ReadSerial -  Read failed: no bytes read during reading operation ");
    serial.read = {false, 0};
    EXPECT_EQ(Read(), 113U);
    EXPECT_EQ(log.Last(), "CNuComSerial::ReadSerial -  Read failed: error system occurred during Read()");
    EXPECT_EQ(transport.ReadSerial(nullptr, 4, &count), 0U);
}

TEST_F(SerialTransport, CleansWhatIsAskedFor)
{
    EXPECT_EQ(transport.CleanSerial(true, true), 103U);
    Open();
    EXPECT_EQ(transport.CleanSerial(false, false), 0U);
    EXPECT_TRUE(serial.purges.empty());
    EXPECT_EQ(transport.CleanSerial(true, true), 0U);
    EXPECT_EQ(transport.CleanSerial(true, false), 0U);
    EXPECT_EQ(transport.CleanSerial(false, true), 0U);
    EXPECT_EQ(serial.purges, (std::vector<std::string>{"outin", "out", "in"}));
    serial.canPurge = false;
    EXPECT_EQ(transport.CleanSerial(true, false), 117U);
    EXPECT_EQ(log.Last(), "CNuComSerial::CleanSerial -  Purge error: clean has failed");
}

TEST_F(SerialTransport, FailedCloseLeavesThePortOpen)
{
    Open();
    serial.canClose = false;
    EXPECT_EQ(transport.CloseSerial(), 110U);
    EXPECT_EQ(log.Last(), "CNuComSerial::CloseSerial -  CloseHandle() failed, impossible to close handle ");
    EXPECT_EQ(Write("x"), 0U);
    serial.canClose = true;
    EXPECT_EQ(transport.CloseSerial(), 0U);
}

// An adapter that is pulled out and put back is a new device under the old name, if only nobody holds the old one.
TEST_F(SerialTransport, UnpluggedAdapterIsLetGoAndOpenedAgain)
{
    Open();
    ASSERT_EQ(transport.SetDTR(true), 0U);
    ASSERT_EQ(transport.SetRTS(true), 0U);
    serial.gone = true;
    serial.canOpen = false;
    serial.write = [](int, std::size_t) { return SerialTransfer{}; };
    EXPECT_EQ(Write("x"), 111U);
    EXPECT_EQ(serial.opened, 0);
    EXPECT_EQ(serial.links.back(), "-LinkToSerial1");
    EXPECT_EQ(Write("x"), 111U);  // tried, in vain
    serial.canOpen = true;
    serial.gone = false;
    serial.write = [](int, std::size_t size) { return SerialTransfer{true, size}; };
    EXPECT_EQ(Read(), 113U);  // too soon for another try
    EXPECT_EQ(transport.CleanSerial(true, true), 117U);
    EXPECT_EQ(transport.SetDTR(true), 115U);
    clock.Sleep(2000);
    serial.lines.clear();
    EXPECT_EQ(Write("x"), 0U);
    EXPECT_EQ(serial.lines, (std::vector<std::string>{"DTR+", "RTS+"}));
    EXPECT_EQ(serial.timeouts.writeMultiplier, 100U);

    serial.gone = true;
    serial.read = {false, 0};
    EXPECT_EQ(Read(), 113U);
    EXPECT_EQ(transport.CloseSerial(), 109U);
    EXPECT_EQ(log.Last(), "CNuComSerial::CloseSerial -  Close failed: invalid handle to close");
    EXPECT_EQ(Write("x"), 111U);  // its user gave it up
    EXPECT_EQ(serial.opened, 0);
}

}  // namespace
}  // namespace marbex::comm
