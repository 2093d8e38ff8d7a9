// A TCP connection by Winsock, whose sockets never block here: every wait is a select with the time limit of the call.
//
// Windows has time limits of its own for send and receive (SO_SNDTIMEO, SO_RCVTIMEO), but Microsoft's reference says of
// a call whose limit has run out that nobody knows how much of it was done, and that the socket should not be used any
// more; limits below half a second counted as half a second on older systems. A printer that is asked for its status
// and stays silent is everyday business, and its connection goes on. Here nothing is cancelled, so that nothing is
// lost, and a send tells how many bytes it did move.
//
// Winsock is started with the first socket and never ended: that may not be done while a library is unloaded, which is
// where the last chance to do it would be, and the system ends it with the process.

#include <winsock2.h>
// After winsock2.h, which replaces what it would bring.
#include <windows.h>

#include <algorithm>
#include <array>
#include <atomic>

#include "platform/tcp.h"
#include "platform/transfer_limit.h"

namespace marbex::platform {

namespace {

constexpr int kSendBufferBytes = 16 * 1024;
constexpr WORD kWinsockVersion = MAKEWORD(2, 2);
constexpr uint32_t kLongestWait = 0x7FFFFFFF;  // ms

bool IsAborted(int error)
{
    return error == WSAECONNABORTED || error == WSAECONNRESET || error == WSAENETRESET || error == WSAESHUTDOWN;
}

// Once a process. A start that fails, for the network may not be up yet, is tried again by the next socket.
void StartWinsock()
{
    static std::atomic<bool> started{false};
    WSADATA data{};
    if (started.load() || WSAStartup(kWinsockVersion, &data) != 0) return;
    if (started.exchange(true)) WSACleanup();  // another thread was quicker
}

int ClampedSize(std::size_t size)
{
    return static_cast<int>(std::min<std::size_t>(size, 0x7FFFFFFF));
}

class WindowsTcpSocket final : public TcpSocket {
public:
    WindowsTcpSocket() = default;
    WindowsTcpSocket(const WindowsTcpSocket&) = delete;
    WindowsTcpSocket& operator=(const WindowsTcpSocket&) = delete;
    ~WindowsTcpSocket() override { Release(); }

    void HeedStop(const StopSignal& stop) override { stop_ = &stop; }

    bool Create() override
    {
        Release();
        // When it does not start, the next call says so.
        StartWinsock();
        socket_ = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
        if (socket_ == INVALID_SOCKET) return Fail(WSAGetLastError());
        u_long nonBlocking = 1;
        if (ioctlsocket(socket_, static_cast<long>(FIONBIO), &nonBlocking) != 0) {
            const int error = WSAGetLastError();
            Release();
            return Fail(error);
        }
        // A program that the application starts must not keep the connection open.
        SetHandleInformation(reinterpret_cast<HANDLE>(socket_), HANDLE_FLAG_INHERIT, 0);
        // A small send buffer: what a send has taken but the printer has not is lost with the link, and its job has
        // been reported complete by then.
        SetOption(SOL_SOCKET, SO_SNDBUF, kSendBufferBytes);
        // A status query is a few bytes after a few bytes; held back for an acknowledgement it would take 40 ms and
        // more.
        SetOption(IPPROTO_TCP, TCP_NODELAY, 1);
        return true;
    }

    bool Connect(uint32_t address, uint16_t port, uint32_t timeoutMilliseconds) override
    {
        sockaddr_in server{};
        server.sin_family = AF_INET;
        server.sin_port = htons(port);
        server.sin_addr.s_addr = htonl(address);
        if (connect(socket_, reinterpret_cast<const sockaddr*>(&server), sizeof server) == 0) return true;
        const int error = WSAGetLastError();
        if (error != WSAEWOULDBLOCK) return Fail(error);
        if (WaitFor(Readiness::kConnected, TransferLimit(timeoutMilliseconds, *stop_)) != TcpStatus::kOk) return false;
        int outcome = 0;
        int size = sizeof outcome;
        if (getsockopt(socket_, SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&outcome), &size) != 0)
            return Fail(WSAGetLastError());
        return outcome == 0 || Fail(outcome);
    }

    bool SetSendTimeout(uint32_t milliseconds) override { return SetTimeout(sendTimeout_, milliseconds); }
    bool SetReceiveTimeout(uint32_t milliseconds) override { return SetTimeout(receiveTimeout_, milliseconds); }

    TcpTransfer Send(std::span<const std::byte> bytes) override
    {
        if (HasEnded()) return Failed(WSAECONNABORTED);
        TransferLimit limit(sendTimeout_, *stop_);
        std::size_t count = 0;
        while (count < bytes.size()) {
            const auto rest = bytes.subspan(count);
            const int sent = send(socket_, reinterpret_cast<const char*>(rest.data()), ClampedSize(rest.size()), 0);
            if (sent >= 0) {
                count += static_cast<std::size_t>(sent);
                limit.Progress();
                continue;
            }
            const TcpStatus status = WaitAfter(WSAGetLastError(), Readiness::kWrite, limit);
            if (status == TcpStatus::kOk) continue;
            // What has gone is told now; the next call finds the failure again.
            if (count > 0) break;
            return {status, 0};
        }
        return {TcpStatus::kOk, count};
    }

    TcpTransfer Receive(std::span<std::byte> buffer) override
    {
        return ReceiveWithin(buffer, TransferLimit(receiveTimeout_, *stop_));
    }

    TcpTransfer ReceiveUntilStopped(std::span<std::byte> buffer, uint32_t milliseconds) override
    {
        return ReceiveWithin(buffer, TransferLimit(milliseconds, *stop_, TransferLimit::AtStop::kEnd));
    }

    void DiscardInput() override
    {
        std::array<char, 4096> waste{};
        // Bounded, for a printer may send as fast as this reads.
        for (int reads = 0; reads < 256; ++reads)
            if (recv(socket_, waste.data(), static_cast<int>(waste.size()), 0) <= 0) return;
    }

    bool Close() override
    {
        if (socket_ == INVALID_SOCKET) return Fail(WSAENOTSOCK);
        // A connection that is closed with input nobody has read is reset, and the printer loses what it has not got
        // yet.
        DiscardInput();
        const int result = closesocket(socket_);
        const int error = WSAGetLastError();
        socket_ = INVALID_SOCKET;
        return result == 0 || Fail(error);
    }

    uint32_t LastError() const override { return lastError_; }

private:
    enum class Readiness { kRead, kWrite, kConnected };

    TcpTransfer ReceiveWithin(std::span<std::byte> buffer, const TransferLimit& limit)
    {
        for (;;) {
            const int got = recv(socket_, reinterpret_cast<char*>(buffer.data()), ClampedSize(buffer.size()), 0);
            // Wine, unlike Windows, tells of a reset only when it is polled and receives an end in good order.
            if (got == 0 && (PollNow() & POLLERR) != 0) return Failed(WSAECONNRESET);
            if (got >= 0) return {TcpStatus::kOk, static_cast<std::size_t>(got)};
            const TcpStatus status = WaitAfter(WSAGetLastError(), Readiness::kRead, limit);
            if (status != TcpStatus::kOk) return {status, 0};
        }
    }

    // Ok when a transfer that has ended with this error is to be tried again: the socket was not ready and has become
    // so in time.
    TcpStatus WaitAfter(int error, Readiness readiness, const TransferLimit& limit)
    {
        return error == WSAEWOULDBLOCK ? WaitFor(readiness, limit) : Failed(error).status;
    }

    // Ok, or the error told. A connection that cannot be made shows in the set of exceptions; WSAPoll did not show it
    // at all before Windows 10 version 2004.
    TcpStatus WaitFor(Readiness readiness, const TransferLimit& limit)
    {
        for (;;) {
            const uint32_t left = limit.Slice();
            timeval slice{0, static_cast<long>(left * 1000)};
            fd_set readable{readiness == Readiness::kRead ? 1U : 0U, {socket_}};
            fd_set writable{readiness == Readiness::kRead ? 0U : 1U, {socket_}};
            fd_set refused{readiness == Readiness::kConnected ? 1U : 0U, {socket_}};
            const int ready = select(0, &readable, &writable, &refused, &slice);
            if (ready > 0) return TcpStatus::kOk;
            if (ready < 0) return Failed(WSAGetLastError()).status;
            // The system's waits end up to one of its ticks too early.
            if (left > 0) continue;
            Fail(WSAETIMEDOUT);
            return TcpStatus::kTimedOut;
        }
    }

    // Whether the other side has ended the connection, even behind bytes that nobody has received yet.
    bool HasEnded() const
    {
        const SHORT state = PollNow();
        if ((state & (POLLHUP | POLLERR)) != 0) return true;
        char next = 0;
        return (state & POLLRDNORM) != 0 && recv(socket_, &next, 1, MSG_PEEK) == 0;
    }

    SHORT PollNow() const
    {
        WSAPOLLFD item{socket_, POLLRDNORM, 0};
        return WSAPoll(&item, 1, 0) > 0 ? item.revents : SHORT{0};
    }

    void SetOption(int level, int option, int value)
    {
        setsockopt(socket_, level, option, reinterpret_cast<const char*>(&value), sizeof value);
    }

    bool SetTimeout(uint32_t& timeout, uint32_t milliseconds)
    {
        if (socket_ == INVALID_SOCKET) return Fail(WSAENOTSOCK);
        timeout = std::clamp<uint32_t>(milliseconds, 1, kLongestWait);
        return true;
    }

    void Release()
    {
        if (socket_ != INVALID_SOCKET) closesocket(socket_);
        socket_ = INVALID_SOCKET;
        sendTimeout_ = receiveTimeout_ = kLongestWait;
    }

    bool Fail(int error)
    {
        lastError_ = static_cast<uint32_t>(error);
        return false;
    }

    TcpTransfer Failed(int error)
    {
        Fail(error);
        return {IsAborted(error) ? TcpStatus::kAborted : TcpStatus::kFailed, 0};
    }

    const StopSignal* stop_ = &kNeverStopped;
    SOCKET socket_ = INVALID_SOCKET;
    uint32_t sendTimeout_ = kLongestWait;
    uint32_t receiveTimeout_ = kLongestWait;
    uint32_t lastError_ = 0;
};

}  // namespace

std::unique_ptr<TcpSocket> NewTcpSocket()
{
    return std::make_unique<WindowsTcpSocket>();
}

}  // namespace marbex::platform
