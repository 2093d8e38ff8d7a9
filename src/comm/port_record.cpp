#include "comm/port_record.h"

#include <utility>

#include "comm/operation_log.h"

namespace marbex::comm {

namespace {

constexpr const char* kNotSerialText = "Serial function failed: a different com type has been setted\n";
constexpr const char* kNotEthernetText = "Ethernet function failed: a different com type has been setted\n";

std::unique_ptr<CNuComEth> MakeEthernet(const CComLayerLog& log, const PortSystem& system)
{
    auto socket = system.newTcpSocket();
    return socket == nullptr ? nullptr : std::make_unique<CNuComEth>(log, std::move(socket), *system.clock);
}

}  // namespace

PortRecord::PortRecord(int32_t comType, const PortSystem& system)
    : comType_(comType == kEthernet || comType == kUsb ? comType : kSerial), ethernet_(MakeEthernet(log_, system))
{
}

bool PortRecord::IsComplete() const
{
    return ethernet_ != nullptr;
}

uint32_t PortRecord::AdvSetSerialDTR(bool on)
{
    const OperationLog log(log_, "AdvSetSerialDTR - ");
    if (comType_ != kSerial) return log.Fail(kPortNotSerial, kNotSerialText);
    static_cast<void>(on);
    return kPortMissing;
}

uint32_t PortRecord::AdvSetSerialRTS(bool on)
{
    const OperationLog log(log_, "AdvSetSerialRTS - ");
    if (comType_ != kSerial) return log.Fail(kPortNotSerial, kNotSerialText);
    static_cast<void>(on);
    return kPortMissing;
}

uint32_t PortRecord::InitEthTCP(const char* address, uint32_t port)
{
    if (address == nullptr) return kPortMissing;
    const platform::LockHold hold(lock_);
    const OperationLog log(log_, "InitEthTCP - ");
    if (comType_ != kEthernet) return log.Fail(kPortNotEthernet, kNotEthernetText);
    log.Progress("Calling function in ethernet class\n");
    return ethernet_->InitTCPIp(address, port);
}

uint32_t PortRecord::SetEthTimeout(uint32_t sendMilliseconds, uint32_t receiveMilliseconds)
{
    const platform::LockHold hold(lock_);
    const OperationLog log(log_, "SetEthTimeout - ");
    if (comType_ != kEthernet) return log.Fail(kPortNotEthernet, kNotEthernetText);
    log.Progress("Calling function in ethernet class\n");
    return ethernet_->SetTimeoutEth(sendMilliseconds, receiveMilliseconds);
}

uint32_t PortRecord::SetPacketSize(uint32_t writeBytes, uint32_t readBytes)
{
    const platform::LockHold hold(lock_);
    const OperationLog log(log_, "SetPacketSize - ");
    if (comType_ != kEthernet) return kPortMissing;
    log.Progress("Calling function in ethernet class\n");
    return ethernet_->SetPacketEth(writeBytes, readBytes);
}

uint32_t PortRecord::Open()
{
    const platform::LockHold hold(lock_);
    const OperationLog log(log_, "Open - ");
    if (comType_ != kEthernet) return kPortMissing;
    log.Progress("Calling function in ethernet class\n");
    return ethernet_->OpenEth();
}

uint32_t PortRecord::Write(const uint8_t* buffer, uint16_t length, uint32_t* written)
{
    if (buffer == nullptr) return kPortMissing;
    const platform::LockHold hold(lock_);
    const OperationLog log(log_, "Write - ");
    if (comType_ != kEthernet) return kPortMissing;
    log.Progress("Calling function in ethernet class\n");
    const uint32_t result = ethernet_->WriteEth(buffer, length);
    if (written != nullptr) *written = ethernet_->BytesWritten();
    return result;
}

uint32_t PortRecord::Read(uint8_t* buffer, uint32_t size, uint32_t* count)
{
    if (buffer == nullptr || count == nullptr) return kPortMissing;
    const platform::LockHold hold(lock_);
    const OperationLog log(log_, "Read - ");
    if (comType_ != kEthernet) return kPortMissing;
    log.Progress("Calling function in ethernet class\n");
    return ethernet_->ReadEth(buffer, size, count);
}

uint32_t PortRecord::Clean(bool clearOutput, bool clearInput)
{
    const platform::LockHold hold(lock_);
    const OperationLog log(log_, "Clean - ");
    static_cast<void>(clearOutput);
    if (comType_ != kEthernet) return kPortMissing;
    log.Progress("Clean not supported for ethernet com type\n");
    // Still thrown away, or one late status reply would shift every later one.
    if (clearInput) ethernet_->DiscardInput();
    return kPortCleanUnsupported;
}

uint32_t PortRecord::Close()
{
    const platform::LockHold hold(lock_);
    const OperationLog log(log_, "Close - ");
    if (comType_ != kEthernet) return kPortMissing;
    log.Progress("Calling function in ethernet class\n");
    return ethernet_->CloseEth();
}

}  // namespace marbex::comm
