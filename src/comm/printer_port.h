#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "comm/port_connection.h"

namespace marbex::comm {

// The port object that a printer device owns: the settings of its link, the primary connection, and, for models that need
// it, a second one on another COM port. Not locked: a device's printer mutex serialises the transfers.
// The operations are virtual so that a test can stand in for the cable.
class CPrinterPort {
public:
    explicit CPrinterPort(PortTable& table = ProcessPortTable());
    virtual ~CPrinterPort();
    CPrinterPort(const CPrinterPort&) = delete;
    CPrinterPort& operator=(const CPrinterPort&) = delete;

    virtual int32_t Open();    // 0 or -1
    virtual int32_t Close();   // 0, or -1 when the primary connection was not open
    virtual bool IsOpen() const;
    virtual int32_t WriteByte(uint8_t value);
    // -1 when not open, 0 when all was written, 1 when it failed. Any length; handed on in pieces of at most 32768 bytes.
    virtual int32_t Write(const uint8_t* buffer, std::size_t length);
    virtual int32_t ReadByte(uint8_t* buffer);  // -1, or the number of bytes read (0 or 1)
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
};

}  // namespace marbex::comm
