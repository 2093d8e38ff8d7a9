#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "comm/given_up.h"
#include "comm/link_read.h"
#include "comm/link_use.h"
#include "comm/lost_link.h"
#include "comm/operation_log.h"
#include "platform/clock.h"
#include "platform/serial.h"

namespace marbex::comm {

// A printer on an RS-232 port. The port's device is reached through a link name of this transport's own.
//
// Operations return 0 or a code; the text of each code stands beside it in the source and goes to the log. Every call
// runs on the caller's thread and is bounded by the line's time-outs. One caller at a time.
class CNuComSerial {
public:
    // The signal, which must outlive the transport, shortens what waits for a printer that makes no progress.
    CNuComSerial(const CComLayerLog& log, platform::SerialSystem& system, platform::Clock& clock,
                 const platform::StopSignal& stop = platform::kNeverStopped);
    CNuComSerial(const CNuComSerial&) = delete;
    CNuComSerial& operator=(const CNuComSerial&) = delete;
    ~CNuComSerial();

    // Parity 0 none, 1 odd, 2 even; byte size 7 or 8; stop bits 0 one, 2 two; flow control 0 hardware, 1 Xon/Xoff, 2
    // none. A sum of 1 baud rate, 2 parity, 4 byte size, 8 stop bits, 16 flow control tells what was rejected.
    uint32_t InitPort(const char* portName, uint32_t baudRate, uint32_t parity, uint32_t byteSize, uint32_t stopBits,
                      uint32_t flowControl);
    // Milliseconds; constants before multipliers.
    uint32_t SetTimeout(uint32_t readInterval, uint32_t readConstant, uint32_t readMultiplier, uint32_t writeConstant,
                        uint32_t writeMultiplier);
    uint32_t SetPacketSerial(uint32_t writeBytes, uint32_t readBytes);
    uint32_t OpenSerial();
    // In packets, each with one write; a short write is not made up for, BytesWritten tells.
    uint32_t WriteSerial(const uint8_t* buffer, uint32_t length);
    uint32_t ReadSerial(uint8_t* buffer, uint32_t size, uint32_t* count);
    // Likewise, with a time limit of its own in place of the line's total.
    LinkRead ReadSerialWithin(uint8_t* buffer, uint32_t size, uint32_t milliseconds, uint32_t* count);
    uint32_t CleanSerial(bool clearOutput, bool clearInput);
    void DiscardInput();  // what has arrived; never waits, writes no line
    uint32_t SetDTR(bool on);
    uint32_t SetRTS(bool on);
    uint32_t CloseSerial();

    // The names of all serial ports, separated by "|", zero-terminated. 1: the device map cannot be read; 3: no room.
    uint32_t EnumPorts(std::span<char> buffer);
    int32_t CheckCom(const char* portName);
    int32_t GetSystemVersion(uint32_t& version, uint32_t& error);
    int32_t GetTheLinkPathName(const std::string& portName, std::string& device);
    int32_t CreateComPortLink(const std::string& portName, uint32_t version, std::string& openPath);

    const LinkUse& Use() const { return use_; }
    uint32_t LastSystemError() const { return lastSystemError_; }

private:
    uint32_t InitParameters(const OperationLog& log, uint32_t baudRate, uint32_t parity, uint32_t byteSize,
                            uint32_t stopBits, uint32_t flowControl);
    uint32_t Read(uint8_t* buffer, uint32_t size, uint32_t* count, std::optional<uint32_t> within);
    uint32_t OpenLine(const OperationLog& log);
    uint32_t ConfigureLine(const OperationLog& log);
    void FillSettings(platform::LineSettings& settings) const;
    uint32_t SetLineControl(const OperationLog& log, platform::LineControl platform::LineSettings::*control);
    uint32_t SendPackets(const OperationLog& log, const uint8_t* buffer, uint32_t length, uint32_t packet);
    void RemoveOwnLink();
    void NoticeLoss();
    bool RegainLine();

    const CComLayerLog& log_;
    platform::SerialSystem& system_;
    const platform::StopSignal& stop_;
    std::unique_ptr<platform::SerialLine> handle_;
    bool initialised_ = false;
    bool parametersSet_ = true;
    bool open_ = false;
    uint32_t baudRate_ = 0;
    uint32_t parity_ = 0;
    uint32_t byteSize_ = 0;
    uint32_t stopBits_ = 0;
    uint32_t flowControl_ = 0;
    uint32_t writePacketSize_ = 1024;
    uint32_t readPacketSize_ = 1024;
    std::string portName_;
    std::string linkName_;
    std::string linkTarget_;
    bool linkIsOwn_ = false;  // made by this transport, so removed by it
    platform::SerialTimeouts timeouts_{10, 10, 1000, 100, 1000};
    uint32_t lastSystemError_ = 0;
    LinkUse use_;
    // An adapter that is unplugged and plugged in again is a new device: the line is opened anew, lines as they were.
    LostLink lostLink_;
    GivenUp givenUp_;
    std::optional<bool> dtr_;
    std::optional<bool> rts_;
};

}  // namespace marbex::comm
