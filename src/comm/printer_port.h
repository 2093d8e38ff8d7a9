#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "comm/port_connection.h"

namespace marbex::comm {

// The port object that a printer device owns: the settings of its link, the primary connection, and, for models that
// need it, a second one on another COM port. Not locked: a device's printer mutex serialises the transfers. The
// operations are virtual so that a test can stand in for the cable.
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
    virtual int32_t WriteText(const char* text);
    virtual int32_t CleanBoth();
    virtual int32_t CleanInput();
    virtual int32_t CleanOutput();
    virtual int32_t CleanBothAgain();
    virtual int32_t OpenSecondary(uint32_t comPort);
    virtual int32_t WriteSecondary(const uint8_t* buffer, std::size_t length);

    void SetPortType(uint32_t portType);
    void SetLog(uint32_t level, uint32_t destinationSelector, const std::string& directory, uint32_t fileNumber);
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
};

}  // namespace marbex::comm
