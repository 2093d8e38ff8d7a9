#pragma once

// A printer as simple as can be, on a serial cable or behind a TCP port: it answers, keeps nothing, and can hold the
// serial line.

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>

#include <atomic>
#include <chrono>
#include <stop_token>
#include <string>
#include <string_view>
#include <thread>

#include "loopback_server.h"
#include "platform/posix/pseudo_terminal.h"
#include "platform/tcp.h"

namespace marbex::test {

// Takes the bytes of the till one by one and gives what a TALIS answers to them.
class TalisAnswers {
public:
    std::string_view Take(char byte)
    {
        last_ = last_.substr(last_.size() < 3 ? 0 : 1) + byte;
        if (last_ == "\x1DI\x01") return "\x5F";
        if (last_ == "\x10\x04\x14") return std::string_view("\x10\x0F\0\0\0\0", 6);
        return last_ == "\x10\x04\x01" || last_ == "\x10\x04\x02" ? "\x12" : "";
    }

private:
    std::string last_;
};

// What a printer does that is out of paper: the other end may send no more. Back when the terminal has obeyed.
inline void HoldWithXoff(const tests::PseudoTerminal& terminal)
{
    int packets = 1;
    ioctl(terminal.Master(), TIOCPKT, &packets);
    terminal.Send("\x13");
    unsigned char what = 0;
    while ((what & TIOCPKT_STOP) == 0)
        ASSERT_EQ(read(terminal.Master(), &what, 1), 1);
    packets = 0;
    ioctl(terminal.Master(), TIOCPKT, &packets);
}

class SerialTalis {
public:
    // From now on it neither takes nor answers. Only when the device has asked its first question, or that would be
    // what is held.
    void Hold()
    {
        asked_.wait(false);
        thread_.request_stop();
        thread_.join();
        HoldWithXoff(terminal);
    }

    const tests::PseudoTerminal terminal;

private:
    void Serve(const std::stop_token& stop)
    {
        constexpr std::size_t kFullStatus = 6;  // bytes; the printer status is asked next
        std::size_t last = 0;
        TalisAnswers talis;
        while (!stop.stop_requested()) {
            pollfd item{terminal.Master(), POLLIN, 0};
            char byte = 0;
            if (poll(&item, 1, 20) <= 0) continue;
            if (read(terminal.Master(), &byte, 1) != 1) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));  // nobody has the port open
                continue;
            }
            const std::string_view answer = talis.Take(byte);
            terminal.Send(answer);
            if (answer.empty()) continue;
            if (last == kFullStatus) {
                asked_ = true;
                asked_.notify_all();
            }
            last = answer.size();
        }
    }

    std::atomic<bool> asked_{false};
    std::jthread thread_{[this](const std::stop_token& stop) { Serve(stop); }};
};

class TcpTalis {
public:
    ~TcpTalis()
    {
        thread_.request_stop();
        const auto caller = platform::NewTcpSocket();  // so that it looks up
        caller->Create();
        caller->Connect(tests::kLoopback, server_.Port(), 1000);
    }

    uint16_t Port() const { return server_.Port(); }
    bool IsIdle() const { return idle_.load(); }

private:
    void Serve(const std::stop_token& stop)
    {
        while (!stop.stop_requested()) {
            pollfd item{server_.Descriptor(), POLLIN, 0};
            if (poll(&item, 1, 1000) <= 0) continue;
            idle_ = false;
            tests::LoopbackPeer peer = server_.Accept();
            TalisAnswers talis;
            for (std::string byte = peer.Read(1); !byte.empty() && !stop.stop_requested(); byte = peer.Read(1)) {
                const std::string_view answer = talis.Take(byte[0]);
                if (!answer.empty()) peer.Send(answer);
            }
            peer.Finish();
            idle_ = true;
        }
    }

    tests::LoopbackServer server_;
    std::atomic<bool> idle_{true};
    std::jthread thread_{[this](const std::stop_token& stop) { Serve(stop); }};
};

}  // namespace marbex::test
