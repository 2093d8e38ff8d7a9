#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "comm/port_connection.h"

namespace marbex::comm {

// The port object that a printer device owns: the settings of its link, the primary connection, and, for models that
// need it, a second one on another COM port. Not locked: a device's printer mutex serialises the transfers, and only
// RequestStop may be called from any thread. The operations are virtual so that a test can stand in for the cable.
class CPrinterPort {
public:
    explicit CPrinterPort(PortTable& table = ProcessPortTable());
    virtual ~CPrinterPort();
    CPrinterPort(const CPrinterPort&) = delete;
    CPrinterPort& operator=(const CPrinterPort&) = delete;

    virtual int32_t Open();   // 0 or -1
    virtual int32_t Close();  // 0, or -1 when the primary connection was not open
    virtual bool IsOpen() const;
    virtual int32_t WriteByte(uint8_t value);
    // -1 when not open, 0 when all was written, 1 when it failed. Any length; handed on in pieces of at most 32768
    // bytes.
    virtual int32_t Write(const uint8_t* buffer, std::size_t length);
    virtual int32_t ReadByte(uint8_t* buffer);                // -1, or the number of bytes read (0 or 1)
    virtual int32_t Read(uint8_t* buffer, uint16_t* length);  // in: room, out: count; -1 or the count
    // Waits at most so long (1 to 60,000 ms, whatever the receive time-out of the settings) for at least one byte, and
    // takes what there is, at most the room. count is 0 unless bytes arrived.
    virtual LinkRead ReadWithin(std::span<uint8_t> room, uint32_t milliseconds, std::size_t& count);
    virtual int32_t WriteText(const char* text);
    virtual int32_t CleanBoth();
    virtual int32_t CleanInput();
    virtual int32_t CleanOutput();
    virtual int32_t CleanBothAgain();
    // Throws away what the link has received by now. Unlike a clean it is no operation of its own: it writes no line.
    virtual void DiscardInput();
    virtual int32_t OpenSecondary(uint32_t comPort);
    virtual int32_t WriteSecondary(const uint8_t* buffer, std::size_t length);

    // How often the primary link has been opened with success since this object was made, by Open or because it was
    // lost and found again. The same number before and after: one and the same connection carried what lay between.
    virtual uint32_t Openings() const;
    // Which of them took the first byte of the last write: a link that is found lost is opened anew before it.
    virtual uint32_t OpeningOfWrite() const { return openingOfWrite_; }
    // The speed of an open serial link; 0 for the other kinds.
    virtual uint32_t BaudRate() const;
    uint32_t ReceiveTimeout() const { return receiveTimeout_; }  // ms
    // True: the device is closing. From now on, on both connections, a ReadWithin does not wait any more, and any other
    // transfer, read or attempt to connect that makes no progress for two seconds fails as a time-out, whatever the
    // time-outs of the settings. Those under way notice within a tenth of a second. False takes it back. Any thread.
    virtual void RequestStop(bool stop);

    void SetPortType(uint32_t portType);
    void SetLog(uint32_t level, uint32_t destinationSelector, const std::string& directory, uint32_t fileNumber,
                uint32_t limit = 0);
    void SetTimeouts(uint32_t sendMilliseconds, uint32_t receiveMilliseconds);
    void SetTcpPort(uint32_t port);
    void SetIpAddress(const std::string& address);
    void SetPrinterName(const std::string& name);
    void SetComPort(uint32_t number, uint32_t baudRate);
    void SetFormat(const std::string& format);
    void SetHandshake(uint32_t code);

private:
    void ApplyCommonSettings(CPortConnection& connection) const;
    int32_t CloseAll();

    PortTable& table_;
    std::unique_ptr<CPortConnection> primary_;
    std::unique_ptr<CPortConnection> secondary_;
    const std::shared_ptr<platform::StopSignal> stop_ = std::make_shared<platform::StopSignal>();
    uint32_t formerOpenings_ = 0;  // of primary connections that are closed
    uint32_t openingOfWrite_ = 0;
    uint32_t comPort_ = 1;
    uint32_t baudRate_ = 9600;
    std::string format_ = "8N1";
    uint32_t handshake_ = 1;
    uint32_t portType_ = 0;
    uint32_t sendTimeout_ = 5000;
    uint32_t receiveTimeout_ = 5000;
    uint32_t tcpPort_ = 9100;
    std::string address_ = "192.168.0.1";
    std::string printerName_;
    uint32_t logLevel_ = 0;
    uint32_t logDestinationSelector_ = 0;
    std::string logDirectory_;
    uint32_t logFileNumber_ = 1;
    uint32_t logLimit_ = 0;
};

}  // namespace marbex::comm
