#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "comm/given_up.h"
#include "comm/link_read.h"
#include "comm/link_use.h"
#include "comm/lost_link.h"
#include "comm/operation_log.h"
#include "platform/clock.h"
#include "platform/tcp.h"

namespace marbex::comm {

// A printer that listens on a TCP port of its own. A plain byte stream: nothing is added to what is sent, and whatever
// the printer sends back is read as it comes.
//
// Operations return 0 or a code; the text of each code stands beside it in the source and goes to the log. Every call
// runs on the caller's thread and is bounded: by the send or receive time-out for each transfer, by the connect
// time-out for each open. One caller at a time.
class CNuComEth {
public:
    // The signal, which must outlive the transport, shortens what waits for a printer that makes no progress.
    CNuComEth(const CComLayerLog& log, std::unique_ptr<platform::TcpSocket> socket, platform::Clock& clock,
              const platform::StopSignal& stop = platform::kNeverStopped);
    CNuComEth(const CNuComEth&) = delete;
    CNuComEth& operator=(const CNuComEth&) = delete;

    uint32_t InitTCPIp(const char* address, uint32_t port);  // dotted IPv4 text of at most 19 characters
    uint32_t SetTimeoutEth(uint32_t sendMilliseconds, uint32_t receiveMilliseconds);
    uint32_t SetPacketEth(uint32_t writeBytes, uint32_t readBytes);
    uint32_t OpenEth();
    // In packets, each with one send; a short send is not made up for, BytesWritten tells. A connection that the
    // printer aborted is made anew and the packet sent again.
    uint32_t WriteEth(const uint8_t* buffer, uint32_t length);
    uint32_t ReadEth(uint8_t* buffer, uint32_t size, uint32_t* count);  // one receive
    // Likewise, with a time limit of its own. A connection that the printer aborted is made anew, and the read has
    // failed: what was asked for over the old one will not come over the new one.
    LinkRead ReadEthWithin(uint8_t* buffer, uint32_t size, uint32_t milliseconds, uint32_t* count);
    uint32_t CloseEth();
    // Up to three tries to open again; 1 when one succeeded, else 0 and the transport is not connected.
    int32_t RetryToConnectAfterAbort();

    // Throws away what the printer has sent up to now. Never waits, writes no line.
    void DiscardInput();
    const LinkUse& Use() const { return use_; }
    uint32_t LastSystemError() const { return lastSystemError_; }

private:
    enum class Mode { kNotInitialised, kTcp };

    uint32_t WriteTCP(const uint8_t* buffer, uint32_t length);
    uint32_t SendPacket(const OperationLog& log, const uint8_t* buffer, uint32_t offset, uint32_t length);
    uint32_t Read(uint8_t* buffer, uint32_t size, uint32_t* count, std::optional<uint32_t> within);
    uint32_t ReadTCP(uint8_t* buffer, uint32_t size, uint32_t* count, std::optional<uint32_t> within);
    uint32_t Reconnect(const OperationLog& log, int& reconnects);
    uint32_t CloseSocket();
    bool HasLink();
    uint32_t FailSystem(const OperationLog& log, uint32_t code, const char* message);

    const CComLayerLog& log_;
    bool connected_ = false;
    Mode mode_ = Mode::kNotInitialised;
    std::string address_;
    std::unique_ptr<platform::TcpSocket> socket_;
    uint32_t serverAddress_ = 0;
    uint32_t port_ = 0;
    uint32_t sendTimeout_ = 10000;
    uint32_t receiveTimeout_ = 10000;
    uint32_t connectTimeout_ = 10000;
    uint32_t writePacketSize_ = 1024;
    uint32_t readPacketSize_ = 1024;
    uint32_t lastSystemError_ = 0;
    LinkUse use_;
    bool readTimedOut_ = false;  // the last one, that is why it failed
    LostLink lostLink_;
    GivenUp givenUp_;
};

}  // namespace marbex::comm
