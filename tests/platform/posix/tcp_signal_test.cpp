// Connections in a process that signals keep interrupting, as a profiler's or an interval timer's do.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/time.h>

#include <chrono>
#include <string>

#include "loopback_server.h"
#include "platform/tcp.h"

namespace marbex::platform {
namespace {

// A signal every 20 ms, handled, as long as this lives.
class Alarms {
public:
    Alarms()
    {
        struct sigaction action {};
        action.sa_handler = [](int) {};
        action.sa_flags = SA_RESTART;
        sigaction(SIGALRM, &action, &formerAction_);
        const itimerval often{{0, 20000}, {0, 20000}};
        setitimer(ITIMER_REAL, &often, nullptr);
    }
    ~Alarms()
    {
        const itimerval never{};
        setitimer(ITIMER_REAL, &never, nullptr);
        sigaction(SIGALRM, &formerAction_, nullptr);
    }
    Alarms(const Alarms&) = delete;
    Alarms& operator=(const Alarms&) = delete;

private:
    struct sigaction formerAction_ {};
};

TEST(TcpUnderSignals, LimitsHoldAndNothingIsLost)
{
    tests::LoopbackServer server;
    const auto socket = NewTcpSocket();
    ASSERT_TRUE(socket->Create() && socket->Connect(tests::kLoopback, server.Port(), 5000));
    tests::LoopbackPeer peer = server.Accept();
    ASSERT_TRUE(socket->SetReceiveTimeout(200) && socket->SetSendTimeout(200));
    const Alarms alarms;

    std::string reply(1, '\0');
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(socket->Receive(std::as_writable_bytes(std::span(reply))).status, TcpStatus::kTimedOut);
    EXPECT_EQ(socket->LastError(), tests::kTimedOutError);

    const std::string block(1 << 20, 'x');
    std::size_t sent = 0;
    TcpTransfer last;
    do {
        last = socket->Send(std::as_bytes(std::span(block)));
        sent += last.count;
    } while (last.status == TcpStatus::kOk);
    EXPECT_EQ(last.status, TcpStatus::kTimedOut);
    EXPECT_EQ(socket->LastError(), tests::kTimedOutError);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    EXPECT_EQ(peer.Read(sent).size(), sent);
}

}  // namespace
}  // namespace marbex::platform
