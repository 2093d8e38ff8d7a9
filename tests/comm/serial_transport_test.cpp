#include "comm/serial_transport.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "comm/serial_fixture.h"

namespace marbex::comm {
namespace {

using platform::LineControl;
using platform::SerialTransfer;

constexpr const char* kNotOpen = "Impossibile to perform the operation: device is not open";

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
    EXPECT_EQ(transport.Use().BytesWritten(), 2500U);
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
    EXPECT_EQ(transport.Use().BytesWritten(), 1024U);
    EXPECT_EQ(transport.LastSystemError(), 5U);

    serial.write = [](int, std::size_t) { return SerialTransfer{true, 0}; };
    EXPECT_EQ(Write("x"), 112U);
    EXPECT_TRUE(log.Has("CNuComSerial::WriteSerial -  Write failed: no bytes send during writing operation "));

    serial.write = [](int, std::size_t size) { return SerialTransfer{true, size - 1}; };
    log.Forget();
    EXPECT_EQ(Write("abc"), 0U);
    EXPECT_EQ(transport.Use().BytesWritten(), 2U);
    EXPECT_EQ(log.Text(),
              "CNuComSerial::WriteSerial -  Bytes to send: 3, packet byte used:3\n"
              "CNuComSerial::WriteSerial -  3 bytes to write:\n"
              "CNuComSerial::WriteSerial -  SendBuffer[0x00]=0x61 \n"
              "CNuComSerial::WriteSerial -  SendBuffer[0x01]=0x62 \n"
              "CNuComSerial::WriteSerial -  Purge communication ports\n");
    EXPECT_EQ(serial.purges, (std::vector<std::string>{"outin", "outin", "outin"}));
}

TEST_F(SerialTransport, PrinterGivenUpWhileClosingIsNotWaitedForAgain)
{
    Open();
    serial.write = [](int, std::size_t) { return SerialTransfer{true, 0}; };
    EXPECT_EQ(Write("receipt"), 112U);
    stop.Set(true);
    EXPECT_EQ(Write("receipt"), 112U);
    EXPECT_EQ(Write("receipt"), 112U);
    EXPECT_EQ(serial.writes.size(), 2U);
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
