#include "platform/tcp.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "loopback_server.h"
#include "platform/stopped_waits.h"

namespace marbex::platform {
namespace {

using marbex::tests::kLoopback;
using marbex::tests::LoopbackPeer;
using marbex::tests::LoopbackServer;

std::span<const std::byte> Bytes(std::string_view text)
{
    return std::as_bytes(std::span(text));
}

class Tcp : public testing::Test {
protected:
    void Connect()
    {
        ASSERT_TRUE(socket->Create());
        ASSERT_TRUE(socket->Connect(kLoopback, server.Port(), 5000));
        ASSERT_TRUE(socket->SetReceiveTimeout(10000));
        peer = server.Accept();
    }

    TcpTransfer Receive(std::string& text)
    {
        text.assign(64, '\0');
        const TcpTransfer got = socket->Receive(std::as_writable_bytes(std::span(text)));
        text.resize(got.count);
        return got;
    }

    // Connects until nobody answers any more, and tells how long that last attempt took.
    static std::vector<std::unique_ptr<TcpSocket>> FillUp(const LoopbackServer& full,
                                                          std::chrono::steady_clock::duration* took = nullptr)
    {
        std::vector<std::unique_ptr<TcpSocket>> waiting;
        bool answered = true;
        while (answered && waiting.size() < 16) {
            waiting.push_back(NewTcpSocket());
            EXPECT_TRUE(waiting.back()->Create());
            const auto start = std::chrono::steady_clock::now();
            answered = waiting.back()->Connect(kLoopback, full.Port(), 200);
            if (took != nullptr) *took = std::chrono::steady_clock::now() - start;
        }
        EXPECT_FALSE(answered);
        return waiting;
    }

    LoopbackServer server;
    LoopbackPeer peer;
    std::unique_ptr<TcpSocket> socket = NewTcpSocket();
};

TEST(ParseIpv4, TakesFourNumbersAndNothingElse)
{
    EXPECT_EQ(ParseIpv4("192.168.0.1"), 0xC0A80001U);
    EXPECT_EQ(ParseIpv4("255.255.255.255"), 0xFFFFFFFFU);
    EXPECT_EQ(ParseIpv4("0.0.0.0"), 0U);
    using namespace std::string_view_literals;
    for (const auto text : {""sv, "192.168.0.300"sv, "192.168.0"sv, "192.168.0.1 "sv, "till.example"sv, "1.2.3.4\0x"sv})
        EXPECT_FALSE(ParseIpv4(text)) << text;
}

TEST_F(Tcp, CarriesBytesBothWaysAndTellsTheEnd)
{
    Connect();
    EXPECT_EQ(socket->Send(Bytes("print")).count, 5U);
    EXPECT_EQ(peer.Read(5), "print");
    peer.Send("ok");
    std::string reply;
    EXPECT_EQ(Receive(reply).status, TcpStatus::kOk);
    EXPECT_EQ(reply, "ok");
    peer.Finish();
    const TcpTransfer end = Receive(reply);
    EXPECT_EQ(end.status, TcpStatus::kOk);
    EXPECT_EQ(end.count, 0U);
}

TEST_F(Tcp, RefusedConnectionFailsAtOnceWithTheSystemsNumber)
{
    server.Stop();
    ASSERT_TRUE(socket->Create());
    EXPECT_FALSE(socket->Connect(kLoopback, server.Port(), 60000));
    EXPECT_EQ(socket->LastError(), tests::kRefusedError);
}

// A printer that is switched off behind a switch: nobody answers at all. On the loopback a full queue does the same.
TEST_F(Tcp, UnansweredConnectionEndsWithItsTimeLimit)
{
    LoopbackServer full(0, 0);
    std::chrono::steady_clock::duration took{};
    const auto waiting = FillUp(full, &took);
    EXPECT_EQ(waiting.back()->LastError(), tests::kTimedOutError);
    EXPECT_GE(took, std::chrono::milliseconds(200));
    EXPECT_LT(took, std::chrono::seconds(5));
}

TEST_F(Tcp, SilenceIsAFailureAndNotAnAbort)
{
    Connect();
    ASSERT_TRUE(socket->SetReceiveTimeout(20));
    std::string reply;
    EXPECT_EQ(Receive(reply).status, TcpStatus::kTimedOut);
    ASSERT_TRUE(socket->SetReceiveTimeout(0));  // not "for ever"
    EXPECT_EQ(Receive(reply).status, TcpStatus::kTimedOut);
}

TEST_F(Tcp, PrinterThatTakesNothingEndsASendWithItsTimeLimit)
{
    Connect();
    ASSERT_TRUE(socket->SetSendTimeout(50));
    const std::string block(1 << 20, 'x');
    TcpTransfer sent;
    for (int i = 0; i < 64; ++i) {
        sent = socket->Send(Bytes(block));
        if (sent.status != TcpStatus::kOk) break;
    }
    EXPECT_EQ(sent.status, TcpStatus::kTimedOut);
}

// A till that closes must not wait for a printer that does nothing, and must not drop what a slow one still takes.
TEST_F(Tcp, AfterTheSignalOnlyProgressIsWaitedFor)
{
    StopSignal stop;
    const auto connect = [&](LoopbackPeer& end) {
        auto made = NewTcpSocket();
        made->HeedStop(stop);
        EXPECT_TRUE(made->Create() && made->Connect(kLoopback, server.Port(), 5000));
        EXPECT_TRUE(made->SetSendTimeout(tests::kOneMinute) && made->SetReceiveTimeout(tests::kOneMinute));
        end = server.Accept();
        return made;
    };
    LoopbackPeer stalled, silent, slow;
    const auto sender = connect(stalled), receiver = connect(silent), patient = connect(slow);
    LoopbackServer full(0, 0);
    const auto waiting = FillUp(full);
    socket->HeedStop(stop);
    ASSERT_TRUE(socket->Create());

    const std::string block(8 << 20, 'x');
    ASSERT_TRUE(sender->SetSendTimeout(50));
    while (sender->Send(Bytes(block)).status == TcpStatus::kOk) {
    }
    ASSERT_TRUE(sender->SetSendTimeout(tests::kOneMinute));
    TcpTransfer sent{};
    std::jthread slowPrinter([&] {
        for (std::size_t taken = 0; taken < block.size(); taken += block.size() / 8) {
            std::this_thread::sleep_for(std::chrono::milliseconds(400));
            slow.Read(block.size() / 8);
        }
    });
    std::jthread slowJob([&] { sent = patient->Send(Bytes(block)); });
    tests::ExpectToEndTwoSecondsAfter(
        stop, {{"connect", [&] { EXPECT_FALSE(socket->Connect(kLoopback, full.Port(), tests::kOneMinute)); }},
               {"send", [&] { EXPECT_EQ(sender->Send(Bytes("x")).status, TcpStatus::kTimedOut); }},
               {"receive", [&] {
                    std::byte byte{};
                    EXPECT_EQ(receiver->Receive({&byte, 1}).status, TcpStatus::kTimedOut);
                }}});
    slowPrinter.join();
    slowJob.join();
    EXPECT_EQ(sent.count, block.size());
}

TEST_F(Tcp, ResetIsAnAbortOnReadAndOnWrite)
{
    Connect();
    peer.Reset();
    std::string reply;
    EXPECT_EQ(Receive(reply).status, TcpStatus::kAborted);
    EXPECT_EQ(socket->Send(Bytes("x")).status, TcpStatus::kAborted);  // and no signal
}

// The first send after the printer dropped an idle connection used to be accepted here and lost there.
TEST_F(Tcp, SendOnAConnectionThatThePrinterEndedIsAnAbort)
{
    Connect();
    peer.Finish();
    std::string reply;
    ASSERT_EQ(Receive(reply).count, 0U);  // the end has arrived
    EXPECT_EQ(socket->Send(Bytes("receipt")).status, TcpStatus::kAborted);
}

TEST_F(Tcp, DiscardsWhatHasArrivedAndNothingLater)
{
    Connect();
    peer.Send("older");
    std::string reply(1, '\0');
    ASSERT_EQ(socket->Receive(std::as_writable_bytes(std::span(reply))).count, 1U);
    socket->DiscardInput();
    peer.Send("new");
    EXPECT_EQ(Receive(reply).status, TcpStatus::kOk);
    EXPECT_EQ(reply, "new");
}

// Closed with input that nobody has read, a connection would be reset under the last bytes.
TEST_F(Tcp, WhatWasSentArrivesThoughTheAnswerWasNotRead)
{
    Connect();
    ASSERT_TRUE(socket->SetSendTimeout(10000));
    peer.Send("status");
    std::string reply(1, '\0');
    ASSERT_EQ(socket->Receive(std::as_writable_bytes(std::span(reply))).count, 1U);  // the others have arrived with it
    const std::string receipt(8000, 'x');
    ASSERT_EQ(socket->Send(Bytes(receipt)).count, receipt.size());
    EXPECT_TRUE(socket->Close());
    EXPECT_EQ(peer.Read(receipt.size()), receipt);
    EXPECT_TRUE(peer.EndsInGoodOrder());
}

TEST_F(Tcp, MakesAnewAfterClosing)
{
    EXPECT_FALSE(socket->Close());
    Connect();
    EXPECT_TRUE(socket->Close());
    EXPECT_FALSE(socket->Close());
    EXPECT_EQ(peer.Read(1), "");
    Connect();
    EXPECT_EQ(socket->Send(Bytes("again")).count, 5U);
    EXPECT_EQ(peer.Read(5), "again");
}

}  // namespace
}  // namespace marbex::platform
