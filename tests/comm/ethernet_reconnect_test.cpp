// What happens when the printer drops the connection.

#include <gtest/gtest.h>

#include <future>
#include <optional>
#include <string>

#include "comm/ethernet_fixture.h"

namespace marbex::comm {
namespace {

using platform::TcpStatus;
using platform::TcpTransfer;
using tests::LoopbackPeer;
using tests::LoopbackServer;
using tests::SocketScript;

constexpr TcpTransfer kAbort{TcpStatus::kAborted, 0};

TEST_F(EthernetTransport, AbortedPacketIsSentAgainOnANewConnection)
{
    Open();
    log.log.SetMode(kLogToFile, 12);
    script.send = [&](int call) -> SocketScript::Transfer {
        if (call != 2) return std::nullopt;
        peer.Reset();
        return kAbort;
    };
    auto lines = std::async(std::launch::async, [&] { return server.Accept(); });
    EXPECT_EQ(Write(std::string(1024, 'a') + std::string(1024, 'b') + std::string(952, 'c')), 0U);
    LoopbackPeer second = lines.get();
    EXPECT_EQ(second.Read(1976), std::string(1024, 'b') + std::string(952, 'c'));
    EXPECT_EQ(script.timeouts, 2);  // the new socket has the send time-out too
    EXPECT_EQ(log.Text(),
              "CNuComEth::WriteTCP -  Bytes to send: 3000, packet byte used:1024\n"
              "CNuComEth::WriteTCP -  3000 bytes to write:\n"
              "CNuComEth::WriteTCP -  Socket connection aborted for inactivity: try to connect 3 times\n"
              "CNuComEth::WriteTCP -  Iteration #1 \n"
              "CNuComEth::OpenEth -  TCP connect successful with 127.0.0.1 \n");
}

// Printers drop idle connections. The first bytes after that used to vanish without any error.
TEST_F(EthernetTransport, WriteAfterThePrinterEndedTheConnectionReachesANewOne)
{
    Open();
    peer.Finish();
    std::string reply;
    ASSERT_EQ(Read(reply), 213U);
    EXPECT_EQ(Write("receipt"), 0U);
    EXPECT_EQ(server.Accept().Read(7), "receipt");
}

TEST_F(EthernetTransport, AbortedReadGoesOnOnANewConnection)
{
    Open();
    log.log.SetMode(kLogToFile, 12);
    auto printer = std::async(std::launch::async, [&] {
        peer.Reset();
        LoopbackPeer second = server.Accept();
        second.Send("\x12");
        return second;
    });
    std::string reply;
    EXPECT_EQ(Read(reply, 1), 0U);
    EXPECT_EQ(reply, "\x12");
    printer.get();
    EXPECT_EQ(log.Text(),
              "CNuComEth::ReadTCP -  Receive buffer size: 1, packet size setted:256, packet used for read:1 \n"
              "CNuComEth::ReadTCP -  Socket connection aborted for inactivity: try to connect 3 times\n"
              "CNuComEth::WriteTCP -  Iteration #1 \n"
              "CNuComEth::OpenEth -  TCP connect successful with 127.0.0.1 \n"
              "CNuComEth::ReadTCP -  Receive buffer size: 1, packet size setted:256, packet used for read:1 \n"
              "CNuComEth::ReadTCP -  1 bytes read:\n");
}

TEST_F(EthernetTransport, ReconnectionWithoutTimeoutsIsRefused)
{
    Open();
    script.send = [](int) { return std::optional(kAbort); };
    script.receive = [](int) { return std::optional(kAbort); };
    script.setTimeout = [](int call) { return call % 2 == 1; };
    EXPECT_EQ(Write("x"), 208U);
    std::string reply;
    EXPECT_EQ(Read(reply), 208U);
    EXPECT_EQ(log.Last(), "CNuComEth::ReadTCP -  Error socket: setsockoption() failed");
}

class LostEthernetLink : public EthernetTransport {
protected:
    void Lose()
    {
        Open();
        log.log.SetMode(kLogToFile, 12);
        server.Stop();
        script.send = [](int call) { return call == 1 ? std::optional(kAbort) : std::nullopt; };
        ASSERT_EQ(Write("x"), 216U);
        ASSERT_EQ(script.connects, 4);
    }
};

TEST_F(LostEthernetLink, ThreeTriesAreMadeAndToldOf)
{
    Lose();
    const std::string failed = "CNuComEth::OpenEth -  Open TCP has failed: impossibile to connect the socket \n";
    EXPECT_EQ(log.Text().substr(log.Text().find("CNuComEth::WriteTCP -  Socket")),
              "CNuComEth::WriteTCP -  Socket connection aborted for inactivity: try to connect 3 times\n"
              "CNuComEth::WriteTCP -  Iteration #1 \n" +
                  failed + "CNuComEth::WriteTCP -  Iteration #2 \n" + failed +
                  "CNuComEth::WriteTCP -  Iteration #3 \n" + failed +
                  "CNuComEth::WriteTCP -  Socket connection aborted. impossibile to restablish connection\n"
                  "CNuComEth::WriteTCP -  Warning: write not completed,not all bytes were written\n");
}

// A till prints again after its printer was switched off and on, without being restarted, and polling a dead printer
// costs one try in two seconds at most.
TEST_F(LostEthernetLink, IsFoundAgainByALaterCall)
{
    Lose();
    EXPECT_EQ(Write("x"), 206U);
    EXPECT_EQ(script.connects, 5);
    std::string reply;
    clock.Sleep(1999);
    EXPECT_EQ(Read(reply), 206U);
    EXPECT_EQ(script.connects, 5);
    LoopbackServer restarted(server.Port());
    clock.Sleep(1);
    EXPECT_EQ(Write("back"), 0U);
    EXPECT_EQ(script.connects, 6);
    EXPECT_EQ(restarted.Accept().Read(4), "back");
}

TEST_F(LostEthernetLink, IsForgottenByClosing)
{
    Lose();
    EXPECT_EQ(transport.CloseEth(), 206U);
    LoopbackServer restarted(server.Port());
    EXPECT_EQ(Write("x"), 206U);
    EXPECT_EQ(script.connects, 4);
}

// A printer that accepts and resets over and over (one network stack out of memory did) must not hold the till.
TEST_F(EthernetTransport, EndlessAbortsEndTheTransfer)
{
    Open();
    script.send = [](int) { return std::optional(kAbort); };
    EXPECT_EQ(Write("x"), 216U);
    EXPECT_EQ(script.connects, 4);
    script.receive = [](int) { return std::optional(kAbort); };
    std::string reply;
    EXPECT_EQ(Read(reply), 216U);
    EXPECT_EQ(script.connects, 8);
}

// Three tries of two seconds, for each of what a closing device still has to say, would be too much.
TEST_F(EthernetTransport, PrinterGivenUpWhileClosingIsNotWaitedForAgain)
{
    Open();
    stop.Set(true);
    script.send = [](int) { return std::optional(TcpTransfer{TcpStatus::kOk, 3}); };
    EXPECT_EQ(Write("short"), 0U);
    EXPECT_EQ(transport.Use().BytesWritten(), 3U);
    EXPECT_EQ(Write("more"), 212U);
    EXPECT_EQ(script.sends, 1);
    stop.Set(false);
    script.send = [](int) { return std::optional(kAbort); };
    script.connect = [](int) { return false; };
    EXPECT_EQ(Write("x"), 216U);
    EXPECT_EQ(script.connects, 4);
    stop.Set(true);
    clock.Sleep(5000);
    EXPECT_EQ(Write("x"), 206U);
    clock.Sleep(5000);
    EXPECT_EQ(Write("x"), 206U);
    EXPECT_EQ(script.connects, 5);
}

TEST_F(EthernetTransport, ClosingDeviceMakesOneTryToReconnect)
{
    Open();
    stop.Set(true);
    script.send = [](int) { return std::optional(kAbort); };
    script.connect = [](int) { return false; };
    EXPECT_EQ(Write("x"), 216U);
    EXPECT_EQ(Write("x"), 206U);
    EXPECT_EQ(script.connects, 2);
}

TEST_F(EthernetTransport, SocketThatWillNotCloseIsNotOpenedOver)
{
    Open();
    script.send = [](int) { return std::optional(kAbort); };
    script.close = [](int) { return false; };
    EXPECT_EQ(Write("x"), 216U);
    EXPECT_EQ(script.connects, 1);
    script.send = [](int) { return std::nullopt; };
    EXPECT_EQ(Write("x"), 0U);
    EXPECT_EQ(script.connects, 2);
}

}  // namespace
}  // namespace marbex::comm
