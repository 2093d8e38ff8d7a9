#pragma once

// The other end of a TCP connection, on the loopback, in the hands of the test.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace marbex::tests {

inline constexpr uint32_t kLoopback = 0x7F000001;

// The numbers by which the system tells that nobody listens and that nobody answered in time.
inline constexpr uint32_t kRefusedError = ECONNREFUSED;
inline constexpr uint32_t kTimedOutError = ETIMEDOUT;

// An accepted connection. Every read gives up after ten seconds, so that a fault shows as a failed test.
class LoopbackPeer {
public:
    LoopbackPeer() = default;
    explicit LoopbackPeer(int descriptor) : descriptor_(descriptor)
    {
        const timeval limit{10, 0};
        setsockopt(descriptor_, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    }
    LoopbackPeer(LoopbackPeer&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    LoopbackPeer& operator=(LoopbackPeer&& other) noexcept
    {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~LoopbackPeer() { Finish(); }

    // As many bytes as asked, or fewer when the connection ends.
    std::string Read(std::size_t count)
    {
        std::string bytes(count, '\0');
        std::size_t done = 0;
        while (done < count) {
            const ssize_t got = recv(descriptor_, bytes.data() + done, count - done, 0);
            if (got <= 0) break;
            done += static_cast<std::size_t>(got);
        }
        bytes.resize(done);
        return bytes;
    }

    // Whether the other end has closed the connection, with nothing more to read and without a reset.
    bool EndsInGoodOrder() const
    {
        char next = 0;
        return recv(descriptor_, &next, 1, 0) == 0;
    }

    void Send(std::string_view bytes)
    {
        if (send(descriptor_, bytes.data(), bytes.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(bytes.size()))
            throw std::runtime_error("the peer could not send");
    }

    // Ends the connection in good order.
    void Finish()
    {
        if (descriptor_ >= 0) close(std::exchange(descriptor_, -1));
    }

    // Aborts it: the other end sees a reset.
    void Reset()
    {
        const linger hard{1, 0};
        setsockopt(descriptor_, SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
        Finish();
    }

private:
    int descriptor_ = -1;
};

class LoopbackServer {
public:
    explicit LoopbackServer(uint16_t port = 0, int backlog = 8) : descriptor_(socket(AF_INET, SOCK_STREAM, 0))
    {
        const int on = 1;
        setsockopt(descriptor_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
        const timeval limit{10, 0};
        setsockopt(descriptor_, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(kLoopback);
        socklen_t size = sizeof address;
        if (bind(descriptor_, reinterpret_cast<sockaddr*>(&address), size) != 0 || listen(descriptor_, backlog) != 0 ||
            getsockname(descriptor_, reinterpret_cast<sockaddr*>(&address), &size) != 0)
            throw std::runtime_error("no loopback server");
        port_ = ntohs(address.sin_port);
    }
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;
    ~LoopbackServer() { Stop(); }

    uint16_t Port() const { return port_; }
    int Descriptor() const { return descriptor_; }

    LoopbackPeer Accept()
    {
        const int accepted = accept(descriptor_, nullptr, nullptr);
        if (accepted < 0) throw std::runtime_error("nobody connected");
        return LoopbackPeer(accepted);
    }

    // From now on connections are refused.
    void Stop()
    {
        if (descriptor_ >= 0) close(std::exchange(descriptor_, -1));
    }

private:
    int descriptor_ = -1;
    uint16_t port_ = 0;
};

// A port of this machine on which nobody listens: taken, and never opened to connections.
class DeafPort {
public:
    DeafPort()
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(kLoopback);
        socklen_t size = sizeof address;
        if (bind(descriptor_, reinterpret_cast<const sockaddr*>(&address), size) != 0 ||
            getsockname(descriptor_, reinterpret_cast<sockaddr*>(&address), &size) != 0)
            throw std::runtime_error("no port to be deaf on");
        number_ = ntohs(address.sin_port);
    }
    ~DeafPort() { close(descriptor_); }
    DeafPort(const DeafPort&) = delete;
    DeafPort& operator=(const DeafPort&) = delete;

    uint16_t Number() const { return number_; }

private:
    const int descriptor_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    uint16_t number_ = 0;
};

}  // namespace marbex::tests
