// How a serial port is found, checked and opened.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "comm/serial_fixture.h"

namespace marbex::comm {
namespace {

using platform::LineControl;
using platform::SystemVersion;
using tests::ScriptedSerial;

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

}  // namespace
}  // namespace marbex::comm
