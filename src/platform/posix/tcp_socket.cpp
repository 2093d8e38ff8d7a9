#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "platform/posix/poll_wait.h"
#include "platform/tcp.h"

namespace marbex::platform {

namespace {

constexpr int kSendBufferBytes = 16 * 1024;
constexpr uint32_t kLongestWait = 0x7FFFFFFF;  // ms

bool IsAborted(int error)
{
    return error == ECONNABORTED || error == ECONNRESET || error == EPIPE;
}

class PosixTcpSocket final : public TcpSocket {
public:
    PosixTcpSocket() = default;
    PosixTcpSocket(const PosixTcpSocket&) = delete;
    PosixTcpSocket& operator=(const PosixTcpSocket&) = delete;
    ~PosixTcpSocket() override
    {
        if (descriptor_ >= 0) close(descriptor_);
    }

    void HeedStop(const StopSignal& stop) override { stop_ = &stop; }

    bool Create() override
    {
        if (descriptor_ >= 0) close(descriptor_);
        descriptor_ = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
        if (descriptor_ < 0) return Fail(errno);
        // A small send buffer: what a send has taken but the printer has not is lost with the link, and its job has
        // been reported complete by then.
        const int sendBuffer = kSendBufferBytes;
        setsockopt(descriptor_, SOL_SOCKET, SO_SNDBUF, &sendBuffer, sizeof sendBuffer);
        // A status query is a few bytes after a few bytes; held back for an acknowledgement it would take 40 ms and
        // more.
        const int on = 1;
        setsockopt(descriptor_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        return true;
    }

    bool Connect(uint32_t address, uint16_t port, uint32_t timeoutMilliseconds) override
    {
        const int error = ConnectWithin(address, port, timeoutMilliseconds);
        return error == 0 || Fail(error);
    }

    bool SetSendTimeout(uint32_t milliseconds) override { return SetTimeout(sendTimeout_, milliseconds); }
    bool SetReceiveTimeout(uint32_t milliseconds) override { return SetTimeout(receiveTimeout_, milliseconds); }

    TcpTransfer Send(std::span<const std::byte> bytes) override
    {
        pollfd item{descriptor_, POLLRDHUP, 0};
        if (poll(&item, 1, 0) > 0 && (item.revents & (POLLRDHUP | POLLHUP)) != 0) return Failed(EPIPE);
        TransferLimit limit(sendTimeout_, *stop_);
        std::size_t count = 0;
        while (count < bytes.size()) {
            const ssize_t sent = send(descriptor_, bytes.data() + count, bytes.size() - count, MSG_NOSIGNAL);
            if (sent >= 0) {
                count += static_cast<std::size_t>(sent);
                limit.Progress();
                continue;
            }
            const TcpStatus status = WaitAfter(errno, POLLOUT, limit);
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
        std::array<std::byte, 4096> waste{};
        // Bounded, for a printer may send as fast as this reads.
        for (int reads = 0; reads < 256; ++reads)
            if (recv(descriptor_, waste.data(), waste.size(), 0) <= 0) return;
    }

    bool Close() override
    {
        if (descriptor_ < 0) return Fail(EBADF);
        // A connection that is closed with input nobody has read is reset, and the printer loses what it has not got
        // yet.
        DiscardInput();
        const int result = close(descriptor_);
        descriptor_ = -1;  // Linux gives the number up even when close reports an error
        return result == 0 || Fail(errno);
    }

    uint32_t LastError() const override { return lastError_; }

private:
    int ConnectWithin(uint32_t address, uint16_t port, uint32_t timeoutMilliseconds)
    {
        sockaddr_in server{};
        server.sin_family = AF_INET;
        server.sin_port = htons(port);
        server.sin_addr.s_addr = htonl(address);
        if (connect(descriptor_, reinterpret_cast<const sockaddr*>(&server), sizeof server) == 0) return 0;
        if (errno != EINPROGRESS && errno != EINTR) return errno;
        switch (PollUntil(descriptor_, POLLOUT, TransferLimit(timeoutMilliseconds, *stop_))) {
            case PollResult::kTimedOut:
                return ETIMEDOUT;
            case PollResult::kFailed:
                return errno;
            case PollResult::kReady:
                break;
        }
        int error = 0;
        socklen_t size = sizeof error;
        if (getsockopt(descriptor_, SOL_SOCKET, SO_ERROR, &error, &size) < 0) return errno;
        return error;
    }

    TcpTransfer ReceiveWithin(std::span<std::byte> buffer, const TransferLimit& limit)
    {
        for (;;) {
            const ssize_t got = recv(descriptor_, buffer.data(), buffer.size(), 0);
            if (got >= 0) return {TcpStatus::kOk, static_cast<std::size_t>(got)};
            const TcpStatus status = WaitAfter(errno, POLLIN, limit);
            if (status != TcpStatus::kOk) return {status, 0};
        }
    }

    // Ok when a transfer that has ended with this error is to be tried again: a signal came, or the socket was not
    // ready and has become so in time. The limits of the socket itself would begin anew with every signal.
    TcpStatus WaitAfter(int error, short events, const TransferLimit& limit)
    {
        if (error != EINTR && error != EAGAIN) return Failed(error).status;
        const PollResult waited = limit.IsOver() ? PollResult::kTimedOut : PollUntil(descriptor_, events, limit);
        if (waited == PollResult::kReady) return TcpStatus::kOk;
        if (waited == PollResult::kFailed) return Failed(errno).status;
        Fail(ETIMEDOUT);
        return TcpStatus::kTimedOut;
    }

    bool SetTimeout(uint32_t& timeout, uint32_t milliseconds)
    {
        if (descriptor_ < 0) return Fail(EBADF);
        timeout = std::clamp<uint32_t>(milliseconds, 1, kLongestWait);
        return true;
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
    int descriptor_ = -1;
    uint32_t sendTimeout_ = kLongestWait;
    uint32_t receiveTimeout_ = kLongestWait;
    uint32_t lastError_ = 0;
};

}  // namespace

std::unique_ptr<TcpSocket> NewTcpSocket()
{
    return std::make_unique<PosixTcpSocket>();
}

}  // namespace marbex::platform
