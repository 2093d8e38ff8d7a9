#include "comm/ethernet_transport.h"

#include <algorithm>
#include <span>
#include <string_view>
#include <utility>

namespace marbex::comm {

namespace {

constexpr std::size_t kLongestAddress = 19;
constexpr uint32_t kLongestTimeout = 0x7FFFFFFF;

// A printer that accepts and aborts over and over must not hold a transfer for ever: so many reconnections, each
// successful, are made in one call before a byte has moved again.
constexpr int kReconnectsWithoutProgress = 3;

}  // namespace

CNuComEth::CNuComEth(const CComLayerLog& log, std::unique_ptr<platform::TcpSocket> socket, platform::Clock& clock,
                     const platform::StopSignal& stop)
    : log_(log), socket_(std::move(socket)), lostLink_(clock), givenUp_(stop)
{
    socket_->HeedStop(stop);
}

uint32_t CNuComEth::FailSystem(const OperationLog& log, uint32_t code, const char* message)
{
    lastSystemError_ = socket_->LastError();
    return log.Fail(code, message);
}

uint32_t CNuComEth::InitTCPIp(const char* address, uint32_t port)
{
    const OperationLog log(log_, "CNuComEth::InitTCPIp - ");
    log.Start();
    if (connected_) return log.Fail(200, "Init failed: a TCP connection is already active\n");
    const std::string_view text = address;
    const auto number = text.size() <= kLongestAddress ? platform::ParseIpv4(text) : std::nullopt;
    if (!number) {
        mode_ = Mode::kNotInitialised;
        return log.Fail(205, "Init failed: IP format not correct \n");
    }
    address_ = text;
    serverAddress_ = *number;
    port_ = port;
    mode_ = Mode::kTcp;
    return log.End();
}

uint32_t CNuComEth::SetTimeoutEth(uint32_t sendMilliseconds, uint32_t receiveMilliseconds)
{
    const OperationLog log(log_, "CNuComEth::SetTimeoutEth - ");
    log.Start();
    if (sendMilliseconds == 0 || receiveMilliseconds == 0)
        return log.Fail(204, "Ethernet timeout values cannot be =0 \n");
    sendTimeout_ = std::min(sendMilliseconds, kLongestTimeout);
    receiveTimeout_ = std::min(receiveMilliseconds, kLongestTimeout);
    OperationLog(log_, "CNuComEth::SetTimeoutEth")
        .Progress("Timeout values for ethernet communication setted to: [send timeout, receive timeout] = [%d , %d ]\n",
                  sendTimeout_, receiveTimeout_);
    return log.End();
}

uint32_t CNuComEth::SetPacketEth(uint32_t writeBytes, uint32_t readBytes)
{
    const OperationLog log(log_, "CNuComEth::SetPacketEth - ");
    log.Start();
    if (writeBytes == 0 || readBytes == 0) return log.Fail(9, "Packet size can't be = 0\n");
    writePacketSize_ = writeBytes;
    readPacketSize_ = readBytes;
    log.Progress("Packets size setted; WRITE = %d bytes, READ = %d bytes \n", writeBytes, readBytes);
    return log.End();
}

uint32_t CNuComEth::OpenEth()
{
    const OperationLog log(log_, "CNuComEth::OpenEth - ");
    log.Start();
    if (mode_ == Mode::kNotInitialised) return log.Fail(201, "Open ethernet failed: no init was done\n");
    if (connected_) return log.Fail(202, "Open ethernet failed: a connection is already active\n");
    if (!socket_->Create()) return FailSystem(log, 207, "Socket creation is failed \n");
    // A TCP port number has 16 bits, whatever the profile says.
    if (!socket_->Connect(serverAddress_, static_cast<uint16_t>(port_), connectTimeout_)) {
        FailSystem(log, 215, "Open TCP has failed: impossibile to connect the socket \n");
        givenUp_.WaitedInVain();
        socket_->Close();
        return 215;
    }
    log.Progress("TCP connect successful with %s \n", address_.c_str());
    connected_ = true;
    use_.Opened();
    lostLink_.Forget();
    return log.End();
}

// Whether there is a connection to use, after one try to get back a lost one.
bool CNuComEth::HasLink()
{
    return connected_ || (!givenUp_ && lostLink_.TryAgain([this] { return OpenEth() == 0; }));
}

uint32_t CNuComEth::WriteEth(const uint8_t* buffer, uint32_t length)
{
    const OperationLog log(log_, "CNuComEth::WriteEth - ");
    log.Start();
    use_.WriteBegins();
    if (!HasLink())
        return log.Fail(206, "Impossible to perform the operation: socket and connections are not opened\n");
    if (buffer == nullptr || length == 0) return log.End();
    if (!socket_->SetSendTimeout(sendTimeout_)) return FailSystem(log, 208, "Error socket: setsockoption() failed\n");
    const uint32_t result = WriteTCP(buffer, length);
    return result == 0 ? log.End() : result;
}

uint32_t CNuComEth::WriteTCP(const uint8_t* buffer, uint32_t length)
{
    const OperationLog log(log_, "CNuComEth::WriteTCP - ");
    log.Start();
    const uint32_t packet = std::min(length, writePacketSize_);
    log.Progress("Bytes to send: %d, packet byte used:%d\n", length, packet);
    log.Progress("%d bytes to write:\n", length);
    uint32_t result = 0;
    for (uint32_t offset = 0; offset < length && result == 0; offset += packet)
        result = SendPacket(log, buffer, offset, std::min(packet, length - offset));
    if (use_.BytesWritten() != length) log.Progress("Warning: write not completed,not all bytes were written\n");
    return result == 0 ? log.End() : result;
}

uint32_t CNuComEth::SendPacket(const OperationLog& log, const uint8_t* buffer, uint32_t offset, uint32_t length)
{
    int reconnects = 0;
    for (;;) {
        const auto sent = givenUp_ ? platform::TcpTransfer{platform::TcpStatus::kTimedOut, 0}
                                   : socket_->Send(std::as_bytes(std::span(buffer + offset, length)));
        if (sent.status == platform::TcpStatus::kTimedOut || (sent.count > 0 && sent.count < length))
            givenUp_.WaitedInVain();
        if (sent.status == platform::TcpStatus::kFailed || sent.status == platform::TcpStatus::kTimedOut)
            return FailSystem(log, 212, "Write failed: error system occurred during Write()\n");
        if (sent.status == platform::TcpStatus::kOk) {
            if (sent.count == 0) return log.Fail(211, "Write failed: no bytes send during writing operation \n");
            use_.Took(static_cast<uint32_t>(sent.count));
            if (log.DumpsBytes())
                for (uint32_t i = offset; i < offset + length; ++i)
                    log.Bytes("SendBuffer[0x%02x]=0x%02x \n", i, buffer[i]);
            return 0;
        }
        if (const uint32_t result = Reconnect(log, reconnects); result != 0) return result;
        if (!socket_->SetSendTimeout(sendTimeout_))
            return FailSystem(log, 208, "Error socket: setsockoption() failed\n");
    }
}

uint32_t CNuComEth::ReadEth(uint8_t* buffer, uint32_t size, uint32_t* count)
{
    return Read(buffer, size, count, std::nullopt);
}

LinkRead CNuComEth::ReadEthWithin(uint8_t* buffer, uint32_t size, uint32_t milliseconds, uint32_t* count)
{
    if (Read(buffer, size, count, milliseconds) != 0) return readTimedOut_ ? LinkRead::kNothing : LinkRead::kFailed;
    return *count > 0 ? LinkRead::kArrived : LinkRead::kNothing;
}

uint32_t CNuComEth::Read(uint8_t* buffer, uint32_t size, uint32_t* count, std::optional<uint32_t> within)
{
    const OperationLog log(log_, "CNuComEth::ReadEth - ");
    log.Start();
    *count = 0;
    readTimedOut_ = false;
    if (!HasLink())
        return log.Fail(206, "Impossible to perform the operation: socket and connections are not opened\n");
    if (buffer == nullptr || size == 0) return log.End();
    if (!socket_->SetReceiveTimeout(receiveTimeout_))
        return FailSystem(log, 208, "Error socket: setsockoption() failed\n");
    const uint32_t result = ReadTCP(buffer, size, count, within);
    return result == 0 ? log.End() : result;
}

uint32_t CNuComEth::ReadTCP(uint8_t* buffer, uint32_t size, uint32_t* count, std::optional<uint32_t> within)
{
    const OperationLog log(log_, "CNuComEth::ReadTCP - ");
    log.Start();
    int reconnects = 0;
    for (;;) {
        const uint32_t wanted = std::min(size, readPacketSize_);
        log.Progress("Receive buffer size: %d, packet size setted:%d, packet used for read:%d \n", size,
                     readPacketSize_, wanted);
        const auto room = std::as_writable_bytes(std::span(buffer, wanted));
        const auto received = within ? socket_->ReceiveUntilStopped(room, *within) : socket_->Receive(room);
        readTimedOut_ = received.status == platform::TcpStatus::kTimedOut;
        if (received.status == platform::TcpStatus::kFailed || readTimedOut_)
            return FailSystem(log, 214, "Read failed: error system occurred during Read()\n");
        if (received.status == platform::TcpStatus::kOk) {
            if (received.count == 0) return log.Fail(213, "Read failed: no bytes read during reading operation \n");
            *count = static_cast<uint32_t>(received.count);
            log.Progress("%d bytes read:\n", *count);
            if (log.DumpsBytes())
                for (uint32_t i = 0; i < *count; ++i)
                    log.Bytes("ReceiveBuffer[0x%02x]=0x%02x \n", i, buffer[i]);
            return log.End();
        }
        if (const uint32_t result = Reconnect(log, reconnects); result != 0) return result;
        if (within) return FailSystem(log, 214, "Read failed: error system occurred during Read()\n");
        if (!socket_->SetReceiveTimeout(receiveTimeout_))
            return FailSystem(log, 208, "Error socket: setsockoption() failed\n");
    }
}

// After an abort within a transfer: 0 when there is a new connection, else 216 and the link is lost.
uint32_t CNuComEth::Reconnect(const OperationLog& log, int& reconnects)
{
    lastSystemError_ = socket_->LastError();
    log.Progress("Socket connection aborted for inactivity: try to connect 3 times\n");
    if (reconnects < kReconnectsWithoutProgress && RetryToConnectAfterAbort() != 0) {
        ++reconnects;
        return 0;
    }
    if (connected_) CloseSocket();
    connected_ = false;
    lostLink_.Lose();
    return log.Fail(216, "Socket connection aborted. impossibile to restablish connection");
}

int32_t CNuComEth::RetryToConnectAfterAbort()
{
    const OperationLog log(log_, "CNuComEth::WriteTCP - ");
    bool closed = false;
    for (int attempt = 1; attempt <= 3; ++attempt) {
        log.Progress("Iteration #%d \n", attempt);
        if (!closed) closed = CloseSocket() == 0;
        if (closed && OpenEth() == 0) return 1;
        if (givenUp_) break;
    }
    return 0;
}

uint32_t CNuComEth::CloseEth()
{
    lostLink_.Forget();
    return CloseSocket();
}

uint32_t CNuComEth::CloseSocket()
{
    const OperationLog log(log_, "CNuComEth::CloseEth - ");
    log.Start();
    if (!connected_)
        return log.Fail(206, "Impossible to perform the operation: socket and connections are not opened\n");
    if (!socket_->Close())
        return FailSystem(log, 206, "Impossible to perform the operation: socket and connections are not opened\n");
    connected_ = false;
    return log.End();
}

void CNuComEth::DiscardInput()
{
    if (connected_) socket_->DiscardInput();
}

}  // namespace marbex::comm
