#include "comm/usb_transport.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "comm/scripted_usb.h"
#include "comm/test_clock.h"
#include "comm/transport_log.h"

namespace marbex::comm {
namespace {

using platform::UsbStatus;
using platform::UsbTransfer;
using tests::ScriptedUsb;

constexpr const char* kNotOpen = "Usb device not opened: imposible to perform operation";

class UsbTransport : public testing::Test {
protected:
    void Open()
    {
        ASSERT_EQ(transport.InitPrinter("Talis"), 0U);
        ASSERT_EQ(transport.SetTimeout(3000, 2000), 0U);
        ASSERT_EQ(transport.SetPacketUsb(1024, 64), 0U);
        ASSERT_EQ(transport.OpenUsb(), 0U);
        log.Forget();
    }

    uint32_t Write(std::string_view text)
    {
        return transport.WriteUsb(reinterpret_cast<const uint8_t*>(text.data()), static_cast<uint32_t>(text.size()));
    }

    uint32_t Read(uint32_t room = 16)
    {
        buffer.assign(room, 0);
        return transport.ReadUsb(buffer.data(), room, &count);
    }

    void AnswerWrites(UsbStatus status, std::size_t bytes = 0)
    {
        usb.write = [=](int, std::size_t) { return UsbTransfer{status, bytes}; };
    }
    void AnswerReads(UsbStatus status, std::size_t bytes = 0)
    {
        usb.read = [=](int, std::size_t) { return UsbTransfer{status, bytes}; };
    }

    tests::TransportLog log;
    ScriptedUsb usb;
    tests::TestClock clock;
    platform::StopSignal stop;
    CNuComUsb transport{log.log, usb, clock, stop};
    std::vector<uint8_t> buffer;
    uint32_t count = 0;
};

TEST_F(UsbTransport, FollowsTheNameToTheDevice)
{
    usb.Install("Other", "Vid_1234&Pid_0001", "1&2&3", "7&OTHER");
    EXPECT_EQ(transport.InitPrinter("Talis"), 0U);
    EXPECT_EQ(log.Text(),
              "CNuComUsb::InitPrinter -  Try to init USB printer with name Talis \n"
              "CNuComUsb::InitPrinter -  Try to init printer Talis\n"
              "CNuComUsb::InitPrinter -  VID=f055 , PID=0101 , ParentPrefixID= 6&1A2B3C&0 for printer Talis\n");
    // Prefixes compare without regard to case.
    usb.texts[std::string(ScriptedUsb::kEnumeration) + "Vid_f055&Pid_0101\\5&77&0&1\\|ParentIdPrefix"] = "6&1a2b3c&0";
    EXPECT_EQ(transport.InitPrinter("Talis"), 0U);
}

TEST_F(UsbTransport, EachBrokenStepOfTheWayHasItsCode)
{
    const std::string printers = ScriptedUsb::kPrinters, enumeration = ScriptedUsb::kEnumeration;
    const std::string device = enumeration + "Vid_f055&Pid_0101\\";
    const auto fails = [&](const char* name, uint32_t code, const std::string& text) {
        EXPECT_EQ(transport.InitPrinter(name), code);
        EXPECT_EQ(log.Last(), "CNuComUsb::InitPrinter -  " + text);
        EXPECT_EQ(transport.OpenUsb(), 304U);
        EXPECT_EQ(log.Last(), "CNuComUsb::OpenUsb -  USB device not initialized");
    };
    fails("talis", 302, "A printer with the name talis has not found in the registry " + printers + " ");
    for (const std::string& key : {printers, enumeration, device}) {
        usb.unreadable = {key};
        fails("Talis", 1, "Error opening registry key: " + key + " ");
    }
    usb.unreadable = {printers + "Talis\\PnPData"};
    fails("Talis", 325, "Error extracting ParentPrefixID from DeviceInstanceID ");
    EXPECT_TRUE(
        log.Has("CNuComUsb::ExtractParentPrefixID -  Error opening registry key: " + printers + "Talis\\PnPData "));
    usb.unreadable.clear();
    std::string& instanceId = usb.texts.at(printers + "Talis\\PnPData|DeviceInstanceId");
    instanceId = "USBPRINT\\Marbex\\6&SOMETHING&ELSE&USB001";
    fails("Talis", 303, "Impossible to associate a VID and a PID to ParentPrefixID 6&SOMETHING&ELSE");
    usb.texts.erase(printers + "Talis\\PnPData|DeviceInstanceId");
    fails("Talis", 325, "Error extracting ParentPrefixID from DeviceInstanceID ");
    EXPECT_TRUE(log.Has("CNuComUsb::ExtractParentPrefixID -  Error reading registry value"));
    usb.Install("Foreign", "Vid_04b8&Pid_0202", "1", "6&FOREIGN");
    fails("Foreign", 303, "VID 04b8 not valid");
    usb.Install("Short", "Vid_f055&Pid_01", "1", "6&SHORT");
    fails("Short", 303, "Impossible to extract VID and PID from registry name Vid_f055&Pid_01 ");
}

TEST_F(UsbTransport, OpensThePipesOfThePresentInterface)
{
    ASSERT_EQ(transport.InitPrinter("Talis"), 0U);
    const std::string path = usb.interfaces[0];
    // Before it: one that is no path, one of another model, a twin on another socket, one that cannot be opened.
    usb.Install("Twin", "Vid_f055&Pid_0101", "5&99&0&2", "6&TWIN");
    usb.interfaces = {"\\\\?\\", "\\\\?\\usb#vid_f055&pid_0202#x#{}", usb.interfaces[1],
                      "\\\\?\\usb#vid_f055&pid_0101#unusable#{}", path};
    usb.unusable = {usb.interfaces[3]};
    log.Forget();
    EXPECT_EQ(transport.OpenUsb(), 0U);
    EXPECT_EQ(usb.openedPaths, (std::vector<std::string>{path + "\\PIPE01\\", path + "\\PIPE00\\"}));
    EXPECT_EQ(log.Text(), "CNuComUsb::OpenUsb -  Open on interface type: 1\n");
    EXPECT_EQ(transport.OpenUsb(), 305U);
    EXPECT_EQ(log.Last(), "CNuComUsb::OpenUsb -  USB device is already opened");
    EXPECT_EQ(transport.InitPrinter("Talis"), 301U);
    EXPECT_EQ(log.Last(), "CNuComUsb::InitPrinter -  Init failed: USB device already opened");
    EXPECT_EQ(transport.CloseUsb(), 0U);
    EXPECT_EQ(log.Last(), "CNuComUsb::CloseUsb -  Close handle : success");
    EXPECT_EQ(usb.opened, 0);
    EXPECT_EQ(transport.CloseUsb(), 309U);
    EXPECT_EQ(log.Last(), std::string("CNuComUsb::CloseUsb -  ") + kNotOpen);
}

TEST_F(UsbTransport, DeviceThatIsNotThereOrWillNotOpen)
{
    ASSERT_EQ(transport.InitPrinter("Talis"), 0U);
    const std::string notFound =
        "CNuComUsb::OpenUsb -  Impossible to find and open a USB plugged device with VID=f055, PID=0101, "
        "PrefixID=6&1A2B3C&0";
    const auto interfaces = usb.interfaces;
    usb.interfaces.clear();
    EXPECT_EQ(transport.OpenUsb(), 315U);
    EXPECT_EQ(log.Last(), notFound);
    usb.interfaces = interfaces;
    const std::string instance = std::string(ScriptedUsb::kEnumeration) + "Vid_f055&Pid_0101\\5&77&0&1\\";
    usb.unreadable = {instance};
    EXPECT_EQ(transport.OpenUsb(), 315U);
    EXPECT_TRUE(log.Has("CNuComUsb::FindSymbolicLinkFromName -  Error opening registry key: " + instance + " "));
    usb.unreadable.clear();
    const std::string prefix = std::exchange(usb.texts[instance + "|ParentIdPrefix"], "");
    usb.texts.erase(instance + "|ParentIdPrefix");
    EXPECT_EQ(transport.OpenUsb(), 315U);
    EXPECT_TRUE(log.Has("CNuComUsb::FindSymbolicLinkFromName -  Error reading registry value"));
    usb.texts[instance + "|ParentIdPrefix"] = prefix;

    for (bool* can : {&usb.canOpenWrite, &usb.canOpenRead}) {
        *can = false;
        EXPECT_EQ(transport.OpenUsb(), 308U);
        EXPECT_EQ(log.Last(), "CNuComUsb::OpenUsb -  Invalid handle returned opening the USB device");
        EXPECT_EQ(transport.LastSystemError(), 5U);
        EXPECT_EQ(usb.opened, 0);
        *can = true;
    }
    // Only the first 128 interfaces are looked at.
    usb.interfaces.insert(usb.interfaces.begin(), 127, "\\\\?\\usb#vid_0000&pid_0000#x#{}");
    EXPECT_EQ(transport.OpenUsb(), 0U);
    transport.CloseUsb();
    usb.interfaces.insert(usb.interfaces.begin(), "\\\\?\\usb#vid_0000&pid_0000#x#{}");
    EXPECT_EQ(transport.OpenUsb(), 315U);
}

TEST_F(UsbTransport, RefusesZeroes)
{
    EXPECT_EQ(transport.SetTimeout(0, 1), 310U);
    EXPECT_EQ(transport.SetTimeout(1, 0), 310U);
    EXPECT_EQ(log.Last(), "CNuComUsb::SetTimeout -  Timeout values can not be=0");
    EXPECT_EQ(transport.SetPacketUsb(0, 1), 9U);
    EXPECT_EQ(transport.SetPacketUsb(1, 0), 9U);
    EXPECT_EQ(log.Last(), "CNuComUsb::SetPacketUsb -  Packet size can't be = 0");
    EXPECT_EQ(transport.SetTimeout(0x80000000, 7), 0U);
    EXPECT_EQ(log.Last(),
              "CNuComUsb::SetTimeout Timeout values for USB communication setted to: [send timeout, receive timeout] "
              "= [2147483647 , 7 ]");
}

TEST_F(UsbTransport, WritesInPacketsEachWithItsTimeLimit)
{
    EXPECT_EQ(Write("x"), 309U);
    EXPECT_EQ(log.Last(), std::string("CNuComUsb::WriteUsb -  ") + kNotOpen);
    Open();
    EXPECT_EQ(Write(""), 0U);
    log.log.SetMode(kLogToFile, 12);
    log.Forget();
    EXPECT_EQ(Write(std::string(2100, 'x')), 0U);
    EXPECT_EQ(usb.writes, (std::vector<std::size_t>{1024, 1024, 52}));
    EXPECT_EQ(usb.timeouts, (std::vector<uint32_t>{3000, 3000, 3000}));
    EXPECT_EQ(transport.Use().BytesWritten(), 2100U);
    EXPECT_EQ(log.Text(),
              "CNuComUsb::WriteUsb -  Bytes to send: 2100, packet byte used:1024\n"
              "CNuComUsb::WriteUsb -  2100 bytes to write:\n");
    // A short transfer leaves a gap, is warned of and counted.
    log.log.SetMode(kLogToFile, 13);
    AnswerWrites(UsbStatus::kDone, 1);
    EXPECT_EQ(Write("ab"), 0U);
    EXPECT_EQ(transport.Use().BytesWritten(), 1U);
    EXPECT_TRUE(log.Has("CNuComUsb::WriteUsb -  SendBuffer[0x00]=0x61 "));
    EXPECT_FALSE(log.Has("CNuComUsb::WriteUsb -  SendBuffer[0x01]=0x62 "));
    EXPECT_EQ(log.Last(), "CNuComUsb::WriteUsb -  Warning: USB write not completed,not all bytes were written");
    EXPECT_EQ(usb.cancels, std::vector<std::string>{"write"});
}

TEST_F(UsbTransport, FailuresOfATransferHaveTheirCodesAndAreCancelled)
{
    Open();
    struct Row {
        UsbStatus status;
        uint32_t writeCode, readCode;
        const char *writeText, *readText;
    };
    for (const Row& row : {Row{UsbStatus::kTimedOut, 313, 323, "USB write error timeout", "USB read timeout"},
                           Row{UsbStatus::kWaitFailed, 311, 322, "USB write generic error ", "USB read generic error "},
                           Row{UsbStatus::kNoResult, 314, 324, "USB write overlap error", "USB read overlap error"},
                           Row{UsbStatus::kDone, 312, 0, "USB write success, but 0 bytes send", ""}}) {
        usb.writes.clear();
        usb.write = [&](int call, std::size_t size) {
            return call == 2 ? UsbTransfer{row.status, 0} : UsbTransfer{UsbStatus::kDone, size};
        };
        usb.cancels.clear();
        EXPECT_EQ(Write(std::string(3000, 'x')), row.writeCode);
        EXPECT_TRUE(log.Has(std::string("CNuComUsb::WriteUsb -  ") + row.writeText));
        EXPECT_EQ(usb.writes.size(), 2U);
        EXPECT_EQ(usb.cancels.front(), "write");
        usb.cancels.clear();
        AnswerReads(row.status);
        EXPECT_EQ(Read(), row.readCode);
        EXPECT_EQ(count, 0U);
        if (row.readCode == 0) continue;
        EXPECT_EQ(log.Last(), std::string("CNuComUsb::ReadUsb -  ") + row.readText);
        EXPECT_EQ(usb.cancels, std::vector<std::string>{"read"});
    }
    EXPECT_EQ(usb.opened, 2);  // still open
}

TEST_F(UsbTransport, PrinterGivenUpWhileClosingIsNotWaitedForAgain)
{
    Open();
    AnswerWrites(UsbStatus::kTimedOut);
    EXPECT_EQ(Write("receipt"), 313U);
    EXPECT_EQ(Write("receipt"), 313U);
    EXPECT_EQ(usb.writes.size(), 2U);
    stop.Set(true);
    EXPECT_EQ(Write("receipt"), 313U);
    EXPECT_EQ(Write("receipt"), 313U);
    EXPECT_EQ(usb.writes.size(), 3U);
    // A printer that never stops sending is not listened to either.
    AnswerReads(UsbStatus::kDone, 4);
    EXPECT_EQ(transport.CleanUsb(false, true), 0U);
    EXPECT_EQ(usb.reads.size(), 1U);
    stop.Set(false);
    EXPECT_EQ(Write("receipt"), 313U);
    EXPECT_EQ(usb.writes.size(), 4U);
}

TEST_F(UsbTransport, ReadsAtMostAPacket)
{
    EXPECT_EQ(Read(), 309U);
    Open();
    AnswerReads(UsbStatus::kDone, 2);
    EXPECT_EQ(Read(500), 0U);
    EXPECT_EQ(usb.reads, std::vector<std::size_t>{64});
    EXPECT_EQ(usb.timeouts, std::vector<uint32_t>{2000});
    EXPECT_EQ(log.Text(),
              "CNuComUsb::ReadUsb -  Receive buffer size: 500, packet size setted:64, packet used for read:64 \n"
              "CNuComUsb::ReadUsb -  ReceiveBuffer[0x00]=0x2a \n"
              "CNuComUsb::ReadUsb -  ReceiveBuffer[0x01]=0x2a \n");
    log.log.SetMode(kLogToFile, 2);
    log.Forget();
    EXPECT_EQ(Read(), 0U);
    EXPECT_EQ(log.Text(),
              "CNuComUsb::ReadUsb -  START\nCNuComUsb::ReadUsb -  2 bytes read:\nCNuComUsb::ReadUsb -  END\n");
}

// Some printers answer every asking, with nothing, until they have something to say.
TEST_F(UsbTransport, ReadWithALimitGoesOnThroughEmptyTransfers)
{
    Open();
    buffer.assign(16, 0);
    usb.read = [](int call, std::size_t) { return UsbTransfer{UsbStatus::kDone, call < 4 ? 0U : 6U}; };
    EXPECT_EQ(transport.ReadUsbWithin(buffer.data(), 16, 500, &count), LinkRead::kArrived);
    EXPECT_EQ(count, 6U);
    EXPECT_EQ(usb.timeouts, (std::vector<uint32_t>{500, 490, 480, 470}));
    AnswerReads(UsbStatus::kDone);
    EXPECT_EQ(transport.ReadUsbWithin(buffer.data(), 16, 500, &count), LinkRead::kNothing);
    EXPECT_EQ(usb.timeouts.back(), 0U);
}

TEST_F(UsbTransport, CleansItsPipes)
{
    EXPECT_EQ(transport.CleanUsb(true, true), 309U);
    Open();
    // A printer that had three chunks to say, and then was silent.
    usb.read = [](int call, std::size_t size) {
        return call <= 3 ? UsbTransfer{UsbStatus::kDone, size} : UsbTransfer{UsbStatus::kTimedOut, 0};
    };
    EXPECT_EQ(transport.CleanUsb(true, true), 0U);
    EXPECT_EQ(log.Text(),
              "CNuComUsb::CleanUsb -  USB write channel cleaned\nCNuComUsb::CleanUsb -  USB read channel cleaned\n");
    EXPECT_EQ(usb.reads, (std::vector<std::size_t>{256, 256, 256, 256}));
    EXPECT_EQ(usb.timeouts, (std::vector<uint32_t>{50, 50, 50, 50}));
    EXPECT_EQ(usb.cancels, (std::vector<std::string>{"write", "read"}));
    EXPECT_EQ(transport.CleanUsb(false, false), 0U);
    AnswerReads(UsbStatus::kDone, 0);
    EXPECT_EQ(transport.CleanUsb(false, true), 0U);
    const auto fails = [&](bool output, bool input) {
        EXPECT_EQ(transport.CleanUsb(output, input), 321U);
        EXPECT_EQ(log.Last(), "CNuComUsb::CleanUsb -  Error cleaning USB channels");
    };
    usb.canCancelRead = false;
    fails(false, true);
    AnswerReads(UsbStatus::kWaitFailed);
    fails(false, true);
    usb.canCancelWrite = false;
    fails(true, false);
}

// A printer with a fault sent its status without end; whoever cleaned its input never came back.
TEST_F(UsbTransport, DrainingEndsWithTheReceiveTimeOut)
{
    Open();
    usb.read = [this](int, std::size_t) {
        clock.Sleep(40);
        return UsbTransfer{UsbStatus::kDone, 1};
    };
    EXPECT_EQ(transport.CleanUsb(false, true), 0U);
    EXPECT_EQ(usb.reads.size(), 50U);
}

TEST_F(UsbTransport, FailedCloseTellsWhichPipe)
{
    Open();
    usb.canCloseWrite = false;
    EXPECT_EQ(transport.CloseUsb(), 317U);
    EXPECT_EQ(log.Last(), "CNuComUsb::CloseUsb -  Error closing write handle for USB");
    usb.canCloseWrite = true;
    usb.canCloseRead = false;
    EXPECT_EQ(transport.CloseUsb(), 318U);
    EXPECT_EQ(log.Last(), "CNuComUsb::CloseUsb -  Error closing read handle for USB");
    usb.canCloseRead = true;
    EXPECT_EQ(transport.CloseUsb(), 0U);
}

TEST_F(UsbTransport, UnpluggedDuringAWriteAndPluggedInAgain)
{
    Open();
    log.log.SetMode(kLogToFile, 12);
    usb.write = [](int call, std::size_t size) {
        return call == 2 ? UsbTransfer{UsbStatus::kGone, 0} : UsbTransfer{UsbStatus::kDone, size};
    };
    const auto interfaces = usb.interfaces;
    usb.interfaces.clear();
    EXPECT_EQ(Write(std::string(2000, 'x')), 330U);
    EXPECT_EQ(log.Text(),
              "CNuComUsb::WriteUsb -  Bytes to send: 2000, packet byte used:1024\n"
              "CNuComUsb::WriteUsb -  2000 bytes to write:\n"
              "CNuComUsb::WriteUsb -  Device is no longer available: handle will be closed\n"
              "CNuComUsb::CloseUsb -  Close handle : success\n");
    EXPECT_EQ(usb.opened, 0);
    EXPECT_EQ(usb.cancels, std::vector<std::string>{"write"});
    EXPECT_EQ(Read(), 309U);
    usb.interfaces = interfaces;
    EXPECT_EQ(Write("x"), 309U);  // too soon for another try
    EXPECT_EQ(transport.CleanUsb(true, true), 309U);
    clock.Sleep(2000);
    EXPECT_EQ(Write("x"), 0U);
    EXPECT_EQ(usb.opened, 2);
}

TEST_F(UsbTransport, UnpluggedDuringAReadAndGivenUpByItsUser)
{
    Open();
    AnswerReads(UsbStatus::kGone);
    usb.canCloseWrite = false;  // nor can what is gone be closed
    EXPECT_EQ(Read(), 330U);
    EXPECT_TRUE(log.Has("CNuComUsb::ReadUsb -  Device is no longer available: handle will be closed"));
    EXPECT_EQ(usb.opened, 0);
    EXPECT_EQ(usb.cancels, std::vector<std::string>{"read"});
    EXPECT_EQ(transport.CloseUsb(), 309U);
    EXPECT_EQ(Write("x"), 309U);
    EXPECT_EQ(usb.opened, 0);
}

}  // namespace
}  // namespace marbex::comm
