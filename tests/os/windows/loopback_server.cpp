#include "loopback_server.h"

#include <winsock2.h>

#include <stdexcept>
#include <utility>

namespace marbex::tests {

namespace {

SOCKET NewSocket()
{
    WSADATA data{};
    WSAStartup(MAKEWORD(2, 2), &data);
    return socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
}

// Binds to a port of the loopback, any for 0; the port, 0 when it is not to be had.
uint16_t Bind(SOCKET socket, uint16_t port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(kLoopback);
    int size = sizeof address;
    const bool bound = bind(socket, reinterpret_cast<sockaddr*>(&address), size) == 0 &&
                       getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size) == 0;
    return bound ? ntohs(address.sin_port) : uint16_t{0};
}

void SetOption(SOCKET socket, int option, const auto& value)
{
    setsockopt(socket, SOL_SOCKET, option, reinterpret_cast<const char*>(&value), sizeof value);
}

}  // namespace

LoopbackPeer::LoopbackPeer(uintptr_t socket) : socket_(socket)
{
    const DWORD limit = 10000;
    SetOption(socket_, SO_RCVTIMEO, limit);
}

LoopbackPeer::LoopbackPeer(LoopbackPeer&& other) noexcept : socket_(std::exchange(other.socket_, INVALID_SOCKET)) {}

LoopbackPeer& LoopbackPeer::operator=(LoopbackPeer&& other) noexcept
{
    std::swap(socket_, other.socket_);
    return *this;
}

std::string LoopbackPeer::Read(std::size_t count)
{
    std::string bytes(count, '\0');
    std::size_t done = 0;
    while (done < count) {
        const int got = recv(socket_, bytes.data() + done, static_cast<int>(count - done), 0);
        if (got <= 0) break;
        done += static_cast<std::size_t>(got);
    }
    bytes.resize(done);
    return bytes;
}

bool LoopbackPeer::EndsInGoodOrder() const
{
    char next = 0;
    return recv(socket_, &next, 1, 0) == 0;
}

void LoopbackPeer::Send(std::string_view bytes)
{
    if (send(socket_, bytes.data(), static_cast<int>(bytes.size()), 0) != static_cast<int>(bytes.size()))
        throw std::runtime_error("the peer could not send");
}

void LoopbackPeer::Finish()
{
    if (socket_ != INVALID_SOCKET) closesocket(std::exchange(socket_, INVALID_SOCKET));
}

void LoopbackPeer::Reset()
{
    const linger hard{1, 0};
    SetOption(socket_, SO_LINGER, hard);
    Finish();
}

LoopbackServer::LoopbackServer(uint16_t port, int backlog) : socket_(NewSocket())
{
    const BOOL on = TRUE;
    SetOption(socket_, SO_REUSEADDR, on);
    port_ = Bind(socket_, port);
    if (port_ == 0 || listen(socket_, backlog) != 0) throw std::runtime_error("no loopback server");
}

LoopbackPeer LoopbackServer::Accept()
{
    fd_set waiting{1, {socket_}};
    timeval limit{10, 0};
    const bool came = select(0, &waiting, nullptr, nullptr, &limit) == 1;
    const SOCKET accepted = came ? accept(socket_, nullptr, nullptr) : INVALID_SOCKET;
    if (accepted == INVALID_SOCKET) throw std::runtime_error("nobody connected");
    return LoopbackPeer(accepted);
}

void LoopbackServer::Stop()
{
    if (socket_ != INVALID_SOCKET) closesocket(std::exchange(socket_, INVALID_SOCKET));
}

DeafPort::DeafPort() : socket_(NewSocket()), number_(Bind(socket_, 0))
{
    if (number_ == 0) throw std::runtime_error("no port to be deaf on");
}

DeafPort::~DeafPort()
{
    closesocket(socket_);
}

}  // namespace marbex::tests
