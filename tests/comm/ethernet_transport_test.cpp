#include "comm/ethernet_transport.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <optional>
#include <string>
#include <vector>

#include "comm/ethernet_fixture.h"

namespace marbex::comm {
namespace {

using platform::TcpStatus;
using platform::TcpTransfer;

constexpr TcpTransfer kBroken{TcpStatus::kFailed, 0};

TEST_F(EthernetTransport, RefusesWhatCannotBe)
{
    for (const char* address : {"192.168.0.300", "", "printer", "192.168.000.0000001", "1.2.3.4.5"}) {
        EXPECT_EQ(transport.InitTCPIp(address, 9100), 205U) << address;
        EXPECT_EQ(log.Last(), "CNuComEth::InitTCPIp -  Init failed: IP format not correct ");
    }
    EXPECT_EQ(transport.OpenEth(), 201U);
    EXPECT_EQ(log.Last(), "CNuComEth::OpenEth -  Open ethernet failed: no init was done");
    for (const auto& [send, receive] : {std::pair{0U, 5000U}, std::pair{5000U, 0U}}) {
        EXPECT_EQ(transport.SetTimeoutEth(send, receive), 204U);
        EXPECT_EQ(log.Last(), "CNuComEth::SetTimeoutEth -  Ethernet timeout values cannot be =0 ");
        EXPECT_EQ(transport.SetPacketEth(send, receive), 9U);
        EXPECT_EQ(log.Last(), "CNuComEth::SetPacketEth -  Packet size can't be = 0");
    }
    EXPECT_EQ(transport.InitTCPIp("255.255.255.255", 9100), 0U);
    EXPECT_EQ(transport.InitTCPIp("1.2.3.400", 9100), 205U);
    EXPECT_EQ(transport.OpenEth(), 201U);  // a failed init takes the earlier one away
}

TEST_F(EthernetTransport, NothingMovesWithoutAConnection)
{
    ASSERT_EQ(transport.InitTCPIp("127.0.0.1", server.Port()), 0U);
    const std::string text = "Impossible to perform the operation: socket and connections are not opened";
    std::string reply;
    EXPECT_EQ(Write("x"), 206U);
    EXPECT_EQ(log.Last(), "CNuComEth::WriteEth -  " + text);
    EXPECT_EQ(Read(reply), 206U);
    EXPECT_EQ(reply, "");
    EXPECT_EQ(log.Last(), "CNuComEth::ReadEth -  " + text);
    EXPECT_EQ(transport.CloseEth(), 206U);
    EXPECT_EQ(log.Last(), "CNuComEth::CloseEth -  " + text);
    EXPECT_EQ(script.connects, 0);
}

TEST_F(EthernetTransport, OpensOnceAndClosesOnce)
{
    Open();
    EXPECT_EQ(script.connectTimeout, 10000U);
    EXPECT_EQ(transport.OpenEth(), 202U);
    EXPECT_EQ(log.Last(), "CNuComEth::OpenEth -  Open ethernet failed: a connection is already active");
    EXPECT_EQ(transport.InitTCPIp("127.0.0.1", 9100), 200U);
    EXPECT_EQ(log.Last(), "CNuComEth::InitTCPIp -  Init failed: a TCP connection is already active");
    EXPECT_EQ(transport.CloseEth(), 0U);
    EXPECT_EQ(peer.Read(1), "");
    EXPECT_EQ(transport.CloseEth(), 206U);
    EXPECT_EQ(transport.OpenEth(), 0U);
    server.Accept();
}

TEST_F(EthernetTransport, FailedOpenSaysWhyAndHoldsNothing)
{
    server.Stop();
    ASSERT_EQ(transport.InitTCPIp("127.0.0.1", server.Port()), 0U);
    EXPECT_EQ(transport.OpenEth(), 215U);
    EXPECT_EQ(log.Last(), "CNuComEth::OpenEth -  Open TCP has failed: impossibile to connect the socket ");
    EXPECT_EQ(transport.LastSystemError(), tests::kRefusedError);
    EXPECT_EQ(script.closes, 1);
    script.create = [] { return false; };
    script.lastError = EMFILE;
    EXPECT_EQ(transport.OpenEth(), 207U);
    EXPECT_EQ(log.Last(), "CNuComEth::OpenEth -  Socket creation is failed ");
    EXPECT_EQ(transport.LastSystemError(), static_cast<uint32_t>(EMFILE));
}

TEST_F(EthernetTransport, FailedCloseLeavesTheConnection)
{
    Open();
    script.close = [](int call) { return call > 1; };
    EXPECT_EQ(transport.CloseEth(), 206U);
    EXPECT_EQ(log.Last(),
              "CNuComEth::CloseEth -  Impossible to perform the operation: socket and connections are not opened");
    EXPECT_EQ(Write("still"), 0U);
    EXPECT_EQ(peer.Read(5), "still");
    EXPECT_EQ(transport.CloseEth(), 0U);
}

TEST_F(EthernetTransport, WritesInPacketsAndReadsWhatComes)
{
    Open();
    std::string data(3000, '\0');
    for (std::size_t i = 0; i < data.size(); ++i)
        data[i] = static_cast<char>(i * 7);
    EXPECT_EQ(Write(data), 0U);
    EXPECT_EQ(script.sendSizes, (std::vector<std::size_t>{1024, 1024, 952}));
    EXPECT_EQ(peer.Read(3000), data);
    EXPECT_EQ(transport.Use().BytesWritten(), 3000U);
    EXPECT_EQ(script.sendTimeout, 5000U);

    peer.Send(std::string(300, 'r'));
    std::string reply, rest;
    EXPECT_EQ(Read(reply, 1000), 0U);  // at most a read packet
    EXPECT_LE(reply.size(), 256U);
    while (reply.size() < 300 && Read(rest, 1000) == 0)
        reply += rest;
    EXPECT_EQ(reply, std::string(300, 'r'));
    EXPECT_EQ(script.receiveTimeout, 5000U);
}

TEST_F(EthernetTransport, LogsEachStepAndEachByte)
{
    Open();
    EXPECT_EQ(Write(std::string("\x10\x04\x01", 3)), 0U);
    peer.Send("\x16\xFF");
    std::string reply;
    EXPECT_EQ(Read(reply, 6), 0U);
    EXPECT_EQ(log.Text(),
              "CNuComEth::WriteTCP -  Bytes to send: 3, packet byte used:3\n"
              "CNuComEth::WriteTCP -  3 bytes to write:\n"
              "CNuComEth::WriteTCP -  SendBuffer[0x00]=0x10 \n"
              "CNuComEth::WriteTCP -  SendBuffer[0x01]=0x04 \n"
              "CNuComEth::WriteTCP -  SendBuffer[0x02]=0x01 \n"
              "CNuComEth::ReadTCP -  Receive buffer size: 6, packet size setted:256, packet used for read:6 \n"
              "CNuComEth::ReadTCP -  2 bytes read:\n"
              "CNuComEth::ReadTCP -  ReceiveBuffer[0x00]=0x16 \n"
              "CNuComEth::ReadTCP -  ReceiveBuffer[0x01]=0xff \n");
}

TEST_F(EthernetTransport, LogsStartAndEndOfEveryOperation)
{
    log.log.SetMode(kLogToFile, 2);
    Open();
    EXPECT_EQ(Write("x"), 0U);
    EXPECT_EQ(transport.CloseEth(), 0U);
    EXPECT_EQ(transport.OpenEth(), 0U);
    EXPECT_EQ(transport.OpenEth(), 202U);
    EXPECT_EQ(log.Text(),
              "CNuComEth::WriteEth -  START\nCNuComEth::WriteTCP -  START\n"
              "CNuComEth::WriteTCP -  END\nCNuComEth::WriteEth -  END\n"
              "CNuComEth::CloseEth -  START\nCNuComEth::CloseEth -  END\n"
              "CNuComEth::OpenEth -  START\nCNuComEth::OpenEth -  END\n"
              "CNuComEth::OpenEth -  START\n");
}

TEST_F(EthernetTransport, NoBufferOrNoLengthMovesNothing)
{
    Open();
    uint32_t count = 9;
    uint8_t byte = 0;
    EXPECT_EQ(transport.WriteEth(nullptr, 5), 0U);
    EXPECT_EQ(transport.WriteEth(&byte, 0), 0U);
    EXPECT_EQ(transport.ReadEth(nullptr, 5, &count), 0U);
    EXPECT_EQ(transport.ReadEth(&byte, 0, &count), 0U);
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(script.sends + script.receives, 0);
}

TEST_F(EthernetTransport, FailuresOfASendHaveTheirCodes)
{
    Open();
    script.send = [](int) { return TcpTransfer{TcpStatus::kOk, 0}; };
    EXPECT_EQ(Write("x"), 211U);
    EXPECT_EQ(log.Last(), "CNuComEth::WriteTCP -  Warning: write not completed,not all bytes were written");
    EXPECT_NE(log.Text().find("CNuComEth::WriteTCP -  Write failed: no bytes send during writing operation \n"),
              std::string::npos);

    // A printer that takes nothing more: the second packet runs into its time-out, the third is not tried.
    script.sends = 0;
    script.lastError = EAGAIN;
    script.send = [](int call) { return call == 2 ? std::optional(kBroken) : std::nullopt; };
    EXPECT_EQ(Write(std::string(3000, 'x')), 212U);
    EXPECT_EQ(script.sends, 2);
    EXPECT_EQ(transport.Use().BytesWritten(), 1024U);
    EXPECT_EQ(transport.LastSystemError(), static_cast<uint32_t>(EAGAIN));
    EXPECT_NE(log.Text().find("CNuComEth::WriteTCP -  Write failed: error system occurred during Write()\n"),
              std::string::npos);
    EXPECT_EQ(script.connects, 1);  // no reconnection for anything but an abort

    script.setTimeout = [](int) { return false; };
    EXPECT_EQ(Write("x"), 208U);
    EXPECT_EQ(log.Last(), "CNuComEth::WriteEth -  Error socket: setsockoption() failed");
    std::string reply;
    EXPECT_EQ(Read(reply), 208U);
    EXPECT_EQ(log.Last(), "CNuComEth::ReadEth -  Error socket: setsockoption() failed");
}

TEST_F(EthernetTransport, FailuresOfAReadHaveTheirCodes)
{
    Open();
    ASSERT_EQ(transport.SetTimeoutEth(5000, 20), 0U);
    EXPECT_EQ(log.Last(),
              "CNuComEth::SetTimeoutEth Timeout values for ethernet communication setted to: "
              "[send timeout, receive timeout] = [5000 , 20 ]");
    std::string reply;
    EXPECT_EQ(Read(reply), 214U);
    EXPECT_EQ(log.Last(), "CNuComEth::ReadTCP -  Read failed: error system occurred during Read()");
    EXPECT_EQ(Write("still open"), 0U);
    ASSERT_EQ(transport.SetTimeoutEth(5000, 5000), 0U);
    EXPECT_EQ(peer.Read(10), "still open");
    peer.Finish();
    EXPECT_EQ(Read(reply), 213U);
    EXPECT_EQ(log.Last(), "CNuComEth::ReadTCP -  Read failed: no bytes read during reading operation ");
}

// A short send leaves a gap: the next packet starts a full packet further on. The count tells the caller.
TEST_F(EthernetTransport, ShortSendIsWarnedOfAndCounted)
{
    Open();
    log.log.SetMode(kLogToFile, 12);
    script.send = [](int call) { return call == 2 ? std::optional(TcpTransfer{TcpStatus::kOk, 24}) : std::nullopt; };
    EXPECT_EQ(Write(std::string(1024, 'a') + std::string(1024, 'b') + std::string(10, 'c')), 0U);
    EXPECT_EQ(transport.Use().BytesWritten(), 1058U);
    EXPECT_EQ(peer.Read(1058), std::string(1024, 'a') + std::string(24, 'b') + std::string(10, 'c'));
    EXPECT_EQ(log.Last(), "CNuComEth::WriteTCP -  Warning: write not completed,not all bytes were written");
}

TEST_F(EthernetTransport, DiscardedInputDoesNotShiftLaterReplies)
{
    transport.DiscardInput();
    Open();
    peer.Send("late");
    std::string reply;
    ASSERT_EQ(Read(reply, 1), 0U);
    transport.DiscardInput();
    peer.Send("R");
    EXPECT_EQ(Read(reply), 0U);
    EXPECT_EQ(reply, "R");
}

}  // namespace
}  // namespace marbex::comm
