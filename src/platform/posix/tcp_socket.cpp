#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "platform/posix/poll_wait.h"
#include "platform/tcp.h"

namespace marbex::platform {

namespace {

constexpr int kSendBufferBytes = 16 * 1024;

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

    bool Create() override
    {
        if (descriptor_ >= 0) close(descriptor_);
        descriptor_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
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
        const int flags = fcntl(descriptor_, F_GETFL);
        if (flags < 0 || fcntl(descriptor_, F_SETFL, flags | O_NONBLOCK) < 0) return Fail(errno);
        const int error = ConnectNonBlocking(address, port, timeoutMilliseconds);
        if (fcntl(descriptor_, F_SETFL, flags) < 0) return Fail(errno);
        return error == 0 || Fail(error);
    }

    bool SetSendTimeout(uint32_t milliseconds) override { return SetTimeout(SO_SNDTIMEO, milliseconds); }
    bool SetReceiveTimeout(uint32_t milliseconds) override { return SetTimeout(SO_RCVTIMEO, milliseconds); }

    TcpTransfer Send(std::span<const std::byte> bytes) override
    {
        pollfd item{descriptor_, POLLRDHUP, 0};
        if (poll(&item, 1, 0) > 0 && (item.revents & (POLLRDHUP | POLLHUP)) != 0) return Failed(EPIPE);
        ssize_t count = -1;
        do {
            count = send(descriptor_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        } while (count < 0 && errno == EINTR);
        return count < 0 ? Failed(errno) : TcpTransfer{TcpStatus::kOk, static_cast<std::size_t>(count)};
    }

    TcpTransfer Receive(std::span<std::byte> buffer) override
    {
        ssize_t count = -1;
        do {
            count = recv(descriptor_, buffer.data(), buffer.size(), 0);
        } while (count < 0 && errno == EINTR);
        return count < 0 ? Failed(errno) : TcpTransfer{TcpStatus::kOk, static_cast<std::size_t>(count)};
    }

    void DiscardInput() override
    {
        std::array<std::byte, 4096> waste{};
        // Bounded, for a printer may send as fast as this reads.
        for (int reads = 0; reads < 256; ++reads)
            if (recv(descriptor_, waste.data(), waste.size(), MSG_DONTWAIT) <= 0) return;
    }

    bool Close() override
    {
        if (descriptor_ < 0) return Fail(EBADF);
        const int result = close(descriptor_);
        descriptor_ = -1;  // Linux gives the number up even when close reports an error
        return result == 0 || Fail(errno);
    }

    uint32_t LastError() const override { return lastError_; }

private:
    int ConnectNonBlocking(uint32_t address, uint16_t port, uint32_t timeoutMilliseconds)
    {
        sockaddr_in server{};
        server.sin_family = AF_INET;
        server.sin_port = htons(port);
        server.sin_addr.s_addr = htonl(address);
        if (connect(descriptor_, reinterpret_cast<const sockaddr*>(&server), sizeof server) == 0) return 0;
        if (errno != EINPROGRESS && errno != EINTR) return errno;
        switch (PollUntil(descriptor_, POLLOUT, Deadline(timeoutMilliseconds))) {
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

    bool SetTimeout(int option, uint32_t milliseconds)
    {
        const uint32_t bounded = std::max<uint32_t>(milliseconds, 1);
        timeval limit{};
        limit.tv_sec = bounded / 1000;
        limit.tv_usec = static_cast<suseconds_t>(bounded % 1000) * 1000;
        return setsockopt(descriptor_, SOL_SOCKET, option, &limit, sizeof limit) == 0 || Fail(errno);
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

    int descriptor_ = -1;
    uint32_t lastError_ = 0;
};

}  // namespace

std::unique_ptr<TcpSocket> NewTcpSocket()
{
    return std::make_unique<PosixTcpSocket>();
}

}  // namespace marbex::platform
