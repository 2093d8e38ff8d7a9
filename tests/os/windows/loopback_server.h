#pragma once

// The other end of a TCP connection, on the loopback, in the hands of the test.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace marbex::tests {

inline constexpr uint32_t kLoopback = 0x7F000001;

// The numbers by which the system tells that nobody listens and that nobody answered in time.
inline constexpr uint32_t kRefusedError = 10061;
inline constexpr uint32_t kTimedOutError = 10060;

// An accepted connection. Every read gives up after ten seconds, so that a fault shows as a failed test.
class LoopbackPeer {
public:
    LoopbackPeer() = default;
    explicit LoopbackPeer(uintptr_t socket);
    LoopbackPeer(LoopbackPeer&& other) noexcept;
    LoopbackPeer& operator=(LoopbackPeer&& other) noexcept;
    ~LoopbackPeer() { Finish(); }

    // As many bytes as asked, or fewer when the connection ends.
    std::string Read(std::size_t count);
    // Whether the other end has closed the connection, with nothing more to read and without a reset.
    bool EndsInGoodOrder() const;
    void Send(std::string_view bytes);
    // Ends the connection in good order.
    void Finish();
    // Aborts it: the other end sees a reset.
    void Reset();

private:
    uintptr_t socket_ = ~uintptr_t{0};
};

class LoopbackServer {
public:
    explicit LoopbackServer(uint16_t port = 0, int backlog = 8);
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;
    ~LoopbackServer() { Stop(); }

    uint16_t Port() const { return port_; }
    LoopbackPeer Accept();
    // From now on connections are refused.
    void Stop();

private:
    uintptr_t socket_;
    uint16_t port_ = 0;
};

// A port of this machine on which nobody listens: taken, and never opened to connections.
class DeafPort {
public:
    DeafPort();
    ~DeafPort();
    DeafPort(const DeafPort&) = delete;
    DeafPort& operator=(const DeafPort&) = delete;

    uint16_t Number() const { return number_; }

private:
    const uintptr_t socket_;
    uint16_t number_ = 0;
};

}  // namespace marbex::tests
