#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "comm/port_table.h"

namespace marbex::comm {

// One link to one printer: the settings of the link, and the steps that each kind of transport needs to open. While
// open it owns a communication port of the table, and selects it before every call. Not locked; see CPrinterPort.
class CPortConnection {
public:
    // The signal shortens what waits for a printer that makes no progress.
    explicit CPortConnection(PortTable& table = ProcessPortTable(), std::shared_ptr<const platform::StopSignal> stop =
                                                                        std::make_shared<platform::StopSignal>());
    ~CPortConnection();  // closes
    CPortConnection(const CPortConnection&) = delete;
    CPortConnection& operator=(const CPortConnection&) = delete;

    void SetComType(int32_t comType) { comType_ = comType; }  // 0 serial, 1 Ethernet, 2 USB; others do not open
    // The communication log. Level 0 none, 1 and 2 progress and errors, above that the bytes too. Selector 0 the file
    // COposComm<number>.log in directory, 1 the debugger's output, others nothing. The limit of the file in megabytes.
    void SetLog(uint32_t level, uint32_t destinationSelector, const std::string& directory, uint32_t fileNumber,
                uint32_t limit = 0);
    void SetTimeouts(uint32_t sendMilliseconds, uint32_t receiveMilliseconds);
    void SetEthernet(const std::string& address, uint32_t port);
    void SetPrinterName(const std::string& name);
    void SetSerialPort(uint32_t number, uint32_t baudRate);  // a baud rate of 0 keeps the one before
    // "8N1", "7E1", "7O1", "8E1", "8O1" without regard to case; any other text changes nothing.
    void SetFormat(const std::string& format);
    uint32_t SetHandshake(uint32_t code);  // 2 Xon/Xoff, others hardware; 1 (refused) while open

    uint32_t Open();   // 0 or 1
    uint32_t Close();  // 0
    bool IsOpen() const { return open_; }
    uint32_t CommunicationId() const { return communicationId_; }
    // 0 when all bytes went out, else 1.
    uint32_t Write(const uint8_t* buffer, uint16_t length);
    uint32_t Read(uint8_t* buffer, uint32_t size, uint32_t* count);  // 0 or 1
    LinkRead ReadWithin(uint8_t* buffer, uint32_t size, uint32_t milliseconds, uint32_t* count);
    LinkUse Use() const;                                                       // of the transport since Open
    uint32_t BaudRate() const { return comType_ == kSerial ? baudRate_ : 0; }  // 0 for other links
    void CleanInput();
    void CleanOutput();
    void DiscardInput();       // without a line in the log, not even that of the selection
    uint32_t SetDTR(bool on);  // the port interface's own code
    uint32_t SetRTS(bool on);

private:
    uint32_t OpenSteps();
    void LeaveRecord();
    uint32_t OpenSerial(PortRecord& record);
    uint32_t OpenEthernet(PortRecord& record);
    uint32_t OpenUsb(PortRecord& record);

    PortTable& table_;
    const std::shared_ptr<const platform::StopSignal> stop_;
    int32_t comType_ = kSerial;
    uint32_t communicationId_ = 0;
    uint32_t sendTimeout_ = 5000;
    uint32_t receiveTimeout_ = 5000;
    bool open_ = false;
    uint32_t logMask_ = 0;
    uint32_t logDestination_ = kLogToNothing;
    std::string logFilePath_;
    uint32_t logLimit_ = 0;  // megabytes
    std::string address_ = "192.168.0.1";
    uint32_t tcpPort_ = 9100;
    std::string printerName_;
    std::string serialPortName_ = "COM1";
    uint32_t baudRate_ = 38400;
    uint8_t byteSize_ = 8;
    uint8_t parity_ = 0;    // 0 none, 1 odd, 2 even
    uint8_t stopBits_ = 0;  // 0 one, 2 two
    uint32_t handshake_ = 0;
};

}  // namespace marbex::comm
