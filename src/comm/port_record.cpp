#include "comm/port_record.h"

#include <utility>

#include "comm/operation_log.h"

namespace marbex::comm {

using platform::LockHold;

namespace {

constexpr const char* kCallsSerial = "Calling function in serial class\n";
constexpr const char* kCallsUsb = "Calling function in usb class\n";
constexpr const char* kCallsEthernet = "Calling function in ethernet class\n";

constexpr const char* kNotSerial = "Serial function failed: a different com type has been setted\n";
constexpr const char* kNotUsb = "USB function failed: a different com type has been setted\n";
constexpr const char* kNotEthernet = "Ethernet function failed: a different com type has been setted\n";

std::unique_ptr<CNuComEth> MakeEthernet(const CComLayerLog& log, const PortSystem& system,
                                        const platform::StopSignal& stop)
{
    auto socket = system.newTcpSocket();
    if (socket == nullptr) return nullptr;
    return std::make_unique<CNuComEth>(log, std::move(socket), *system.clock, stop);
}

}  // namespace

PortRecord::PortRecord(int32_t comType, const PortSystem& system, std::shared_ptr<const platform::StopSignal> stop)
    : stop_(std::move(stop)),
      comType_(comType == kEthernet || comType == kUsb ? comType : kSerial),
      serial_(std::make_unique<CNuComSerial>(log_, *system.serial, *system.clock, *stop_)),
      usb_(std::make_unique<CNuComUsb>(log_, *system.usb, *system.clock, *stop_)),
      ethernet_(MakeEthernet(log_, system, *stop_))
{
}

bool PortRecord::IsComplete() const
{
    return serial_ != nullptr && usb_ != nullptr && ethernet_ != nullptr;
}

uint32_t PortRecord::InitSerialPort(const char* portName, uint32_t baudRate, uint32_t parity, uint32_t byteSize,
                                    uint32_t stopBits, uint32_t flowControl)
{
    if (portName == nullptr) return kPortMissing;
    const LockHold hold(lock_);
    const OperationLog log(log_, "InitSerialPort - ");
    if (comType_ != kSerial) return log.Fail(kPortNotSerial, kNotSerial);
    log.Progress("%s", kCallsSerial);
    return serial_->InitPort(portName, baudRate, parity, byteSize, stopBits, flowControl);
}

uint32_t PortRecord::SetSerialTimeout(uint32_t readInterval, uint32_t readConstant, uint32_t readMultiplier,
                                      uint32_t writeConstant, uint32_t writeMultiplier)
{
    const LockHold hold(lock_);
    const OperationLog log(log_, "SetSerialTimeout - ");
    if (comType_ != kSerial) return log.Fail(kPortNotSerial, kNotSerial);
    log.Progress("%s", kCallsSerial);
    return serial_->SetTimeout(readInterval, readConstant, readMultiplier, writeConstant, writeMultiplier);
}

uint32_t PortRecord::AdvSetSerialDTR(bool on)
{
    const LockHold hold(lock_);
    const OperationLog log(log_, "AdvSetSerialDTR - ");
    if (comType_ != kSerial) return log.Fail(kPortNotSerial, kNotSerial);
    log.Progress("%s", kCallsSerial);
    return serial_->SetDTR(on);
}

uint32_t PortRecord::AdvSetSerialRTS(bool on)
{
    const LockHold hold(lock_);
    const OperationLog log(log_, "AdvSetSerialRTS - ");
    if (comType_ != kSerial) return log.Fail(kPortNotSerial, kNotSerial);
    log.Progress("%s", kCallsSerial);
    return serial_->SetRTS(on);
}

uint32_t PortRecord::InitEthTCP(const char* address, uint32_t port)
{
    if (address == nullptr) return kPortMissing;
    const LockHold hold(lock_);
    const OperationLog log(log_, "InitEthTCP - ");
    if (comType_ != kEthernet) return log.Fail(kPortNotEthernet, kNotEthernet);
    log.Progress("%s", kCallsEthernet);
    return ethernet_->InitTCPIp(address, port);
}

uint32_t PortRecord::SetEthTimeout(uint32_t sendMilliseconds, uint32_t receiveMilliseconds)
{
    const LockHold hold(lock_);
    const OperationLog log(log_, "SetEthTimeout - ");
    if (comType_ != kEthernet) return log.Fail(kPortNotEthernet, kNotEthernet);
    log.Progress("%s", kCallsEthernet);
    return ethernet_->SetTimeoutEth(sendMilliseconds, receiveMilliseconds);
}

uint32_t PortRecord::InitUsbPrinter(const char* printerName)
{
    if (printerName == nullptr) return kPortMissing;
    const LockHold hold(lock_);
    const OperationLog log(log_, "InitUsbPrinter - ");
    if (comType_ != kUsb) return log.Fail(kPortNotUsb, kNotUsb);
    log.Progress("%s", kCallsUsb);
    return usb_->InitPrinter(printerName);
}

uint32_t PortRecord::SetUsbTimeout(uint32_t sendMilliseconds, uint32_t receiveMilliseconds)
{
    const LockHold hold(lock_);
    const OperationLog log(log_, "SetUsbTimeout - ");
    if (comType_ != kUsb) return log.Fail(kPortNotUsb, kNotUsb);
    log.Progress("%s", kCallsUsb);
    return usb_->SetTimeout(sendMilliseconds, receiveMilliseconds);
}

void PortRecord::LogCall(const OperationLog& log) const
{
    log.Progress("%s", comType_ == kEthernet ? kCallsEthernet : comType_ == kUsb ? kCallsUsb : kCallsSerial);
}

uint32_t PortRecord::SetPacketSize(uint32_t writeBytes, uint32_t readBytes)
{
    const LockHold hold(lock_);
    LogCall(OperationLog(log_, "SetPacketSize - "));
    if (comType_ == kEthernet) return ethernet_->SetPacketEth(writeBytes, readBytes);
    if (comType_ == kUsb) return usb_->SetPacketUsb(writeBytes, readBytes);
    return serial_->SetPacketSerial(writeBytes, readBytes);
}

uint32_t PortRecord::Open()
{
    const LockHold hold(lock_);
    LogCall(OperationLog(log_, "Open - "));
    if (comType_ == kEthernet) return ethernet_->OpenEth();
    if (comType_ == kUsb) return usb_->OpenUsb();
    return serial_->OpenSerial();
}

uint32_t PortRecord::Write(const uint8_t* buffer, uint16_t length, uint32_t* written)
{
    if (buffer == nullptr) return kPortMissing;
    const LockHold hold(lock_);
    LogCall(OperationLog(log_, "Write - "));
    uint32_t result = 0;
    uint32_t count = 0;
    if (comType_ == kEthernet) {
        result = ethernet_->WriteEth(buffer, length);
        count = ethernet_->Use().BytesWritten();
    } else if (comType_ == kUsb) {
        result = usb_->WriteUsb(buffer, length);
        count = usb_->Use().BytesWritten();
    } else {
        result = serial_->WriteSerial(buffer, length);
        count = serial_->Use().BytesWritten();
    }
    if (written != nullptr) *written = count;
    return result;
}

uint32_t PortRecord::Read(uint8_t* buffer, uint32_t size, uint32_t* count)
{
    if (buffer == nullptr || count == nullptr) return kPortMissing;
    const LockHold hold(lock_);
    LogCall(OperationLog(log_, "Read - "));
    if (comType_ == kEthernet) return ethernet_->ReadEth(buffer, size, count);
    if (comType_ == kUsb) return usb_->ReadUsb(buffer, size, count);
    return serial_->ReadSerial(buffer, size, count);
}

LinkRead PortRecord::ReadWithin(uint8_t* buffer, uint32_t size, uint32_t milliseconds, uint32_t* count)
{
    const LockHold hold(lock_);
    LogCall(OperationLog(log_, "Read - "));
    if (comType_ == kEthernet) return ethernet_->ReadEthWithin(buffer, size, milliseconds, count);
    if (comType_ == kUsb) return usb_->ReadUsbWithin(buffer, size, milliseconds, count);
    return serial_->ReadSerialWithin(buffer, size, milliseconds, count);
}

uint32_t PortRecord::Clean(bool clearOutput, bool clearInput)
{
    const LockHold hold(lock_);
    const OperationLog log(log_, "Clean - ");
    if (comType_ == kEthernet) {
        log.Progress("Clean not supported for ethernet com type\n");
        // Still thrown away, or one late status reply would shift every later one.
        if (clearInput) ethernet_->DiscardInput();
        return kPortCleanUnsupported;
    }
    LogCall(log);
    if (comType_ == kUsb) return usb_->CleanUsb(clearOutput, clearInput);
    return serial_->CleanSerial(clearOutput, clearInput);
}

void PortRecord::DiscardInput()
{
    const LockHold hold(lock_);
    if (comType_ == kEthernet) return ethernet_->DiscardInput();
    if (comType_ == kUsb) return usb_->DiscardInput();
    serial_->DiscardInput();
}

uint32_t PortRecord::Close()
{
    const LockHold hold(lock_);
    LogCall(OperationLog(log_, "Close - "));
    if (comType_ == kEthernet) return ethernet_->CloseEth();
    if (comType_ == kUsb) return usb_->CloseUsb();
    return serial_->CloseSerial();
}

LinkUse PortRecord::Use()
{
    const LockHold hold(lock_);
    if (comType_ == kEthernet) return ethernet_->Use();
    return comType_ == kUsb ? usb_->Use() : serial_->Use();
}

}  // namespace marbex::comm
