#pragma once

// One TCP connection to an IPv4 address. Not shared between threads: one caller at a time.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

#include "platform/stop_signal.h"

namespace marbex::platform {

// Dotted IPv4 text ("192.168.0.1") as a number in host byte order; none when it is not one.
std::optional<uint32_t> ParseIpv4(std::string_view text);

enum class TcpStatus {
    kOk,  // count bytes moved; 0 on receive: the other side closed the connection
    // The connection was aborted (POSIX: ECONNABORTED, ECONNRESET, EPIPE; Windows: 10053 and kin), or, on send, the
    // other side has ended it already: the bytes would be accepted here and thrown away there.
    kAborted,
    kTimedOut,
    kFailed,  // any other error
};

struct TcpTransfer {
    TcpStatus status = TcpStatus::kFailed;
    std::size_t count = 0;
};

class TcpSocket {
public:
    virtual ~TcpSocket() = default;  // closes what is open

    // From now on a connect, send or receive without progress ends two seconds after this signal, as if its time were
    // over. The signal must outlive the socket.
    virtual void HeedStop(const StopSignal& stop) = 0;

    // Makes the stream socket; false when the system refuses. Closes an older one first.
    virtual bool Create() = 0;
    // Connects within timeoutMilliseconds; sends and receives have limits of their own. Signals do not stretch them.
    virtual bool Connect(uint32_t address, uint16_t port, uint32_t timeoutMilliseconds) = 0;
    // Limits of each later send and receive; 0 counts as 1, for nothing waits without limit.
    virtual bool SetSendTimeout(uint32_t milliseconds) = 0;
    virtual bool SetReceiveTimeout(uint32_t milliseconds) = 0;
    // One send: may move fewer bytes than asked. Raises no signal.
    virtual TcpTransfer Send(std::span<const std::byte> bytes) = 0;
    // One receive: whatever is there, at least one byte unless the connection ends or the time runs out.
    virtual TcpTransfer Receive(std::span<std::byte> buffer) = 0;
    // Likewise, with this limit in place of the socket's own; the signal ends it at once.
    virtual TcpTransfer ReceiveUntilStopped(std::span<std::byte> buffer, uint32_t milliseconds) = 0;
    // Throws away what has already arrived; never waits.
    virtual void DiscardInput() = 0;
    virtual bool Close() = 0;                // false when the system reports an error or nothing is open
    virtual uint32_t LastError() const = 0;  // the system's number of the last failure, 0 before one
};

using TcpSocketFactory = std::function<std::unique_ptr<TcpSocket>()>;

std::unique_ptr<TcpSocket> NewTcpSocket();

}  // namespace marbex::platform
