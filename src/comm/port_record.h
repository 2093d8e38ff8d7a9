#pragma once

#include <cstdint>
#include <memory>

#include "comm/com_layer_log.h"
#include "comm/ethernet_transport.h"
#include "comm/port_system.h"
#include "comm/serial_transport.h"
#include "comm/usb_transport.h"
#include "platform/lock.h"

namespace marbex::comm {

inline constexpr int32_t kSerial = 0;
inline constexpr int32_t kEthernet = 1;
inline constexpr int32_t kUsb = 2;

// Results of the port interface itself; every other code comes from a transport.
inline constexpr uint32_t kPortOk = 0;
inline constexpr uint32_t kPortNoSuchId = 4;
inline constexpr uint32_t kPortMissing = 5;  // an argument, the current record or a transport
inline constexpr uint32_t kPortNotSerial = 123;
inline constexpr uint32_t kPortNotEthernet = 203;
inline constexpr uint32_t kPortCleanUnsupported = 221;
inline constexpr uint32_t kPortNotUsb = 300;

// One communication port: its log and its transports, of which the one that matches its com type is used.
// Every operation holds the record's own lock, a blocking transfer included, so that one port never delays another.
class PortRecord {
public:
    // comType: 0 serial, 1 Ethernet, 2 USB, anything else counts as serial.
    PortRecord(int32_t comType, const PortSystem& system,
               std::shared_ptr<const platform::StopSignal> stop = std::make_shared<platform::StopSignal>());

    bool IsComplete() const;              // no transport is missing
    CComLayerLog& Log() { return log_; }  // settings: before others see the record
    const CComLayerLog& Log() const { return log_; }

    uint32_t InitSerialPort(const char* portName, uint32_t baudRate, uint32_t parity, uint32_t byteSize,
                            uint32_t stopBits, uint32_t flowControl);
    uint32_t SetSerialTimeout(uint32_t readInterval, uint32_t readConstant, uint32_t readMultiplier,
                              uint32_t writeConstant, uint32_t writeMultiplier);
    uint32_t AdvSetSerialDTR(bool on);
    uint32_t AdvSetSerialRTS(bool on);
    uint32_t InitEthTCP(const char* address, uint32_t port);
    uint32_t SetEthTimeout(uint32_t sendMilliseconds, uint32_t receiveMilliseconds);
    uint32_t InitUsbPrinter(const char* printerName);
    uint32_t SetUsbTimeout(uint32_t sendMilliseconds, uint32_t receiveMilliseconds);
    uint32_t SetPacketSize(uint32_t writeBytes, uint32_t readBytes);
    uint32_t Open();
    // written, when given, receives the number of bytes that went out, whatever the result.
    uint32_t Write(const uint8_t* buffer, uint16_t length, uint32_t* written = nullptr);
    uint32_t Read(uint8_t* buffer, uint32_t size, uint32_t* count);
    LinkRead ReadWithin(uint8_t* buffer, uint32_t size, uint32_t milliseconds, uint32_t* count);
    uint32_t Clean(bool clearOutput, bool clearInput);
    void DiscardInput();  // writes no line
    uint32_t Close();
    LinkUse Use();  // of the transport

private:
    void LogCall(const OperationLog& log) const;

    CComLayerLog log_;
    const std::shared_ptr<const platform::StopSignal> stop_;  // the transports refer to it
    const int32_t comType_;
    platform::Lock lock_;
    const std::unique_ptr<CNuComSerial> serial_ MARBEX_PT_GUARDED_BY(lock_);
    const std::unique_ptr<CNuComUsb> usb_ MARBEX_PT_GUARDED_BY(lock_);
    const std::unique_ptr<CNuComEth> ethernet_ MARBEX_PT_GUARDED_BY(lock_);
};

}  // namespace marbex::comm
