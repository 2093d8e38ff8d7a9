#include "comm/port_table.h"

#include <new>
#include <utility>

#include "comm/operation_log.h"

namespace marbex::comm {

namespace {

std::shared_ptr<PortRecord> MakeRecord(int32_t comType, const PortSystem& system,
                                       std::shared_ptr<const platform::StopSignal> stop)
{
    try {
        auto record = std::make_shared<PortRecord>(comType, system, std::move(stop));
        return record->IsComplete() ? std::move(record) : nullptr;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

}  // namespace

PortTable::PortTable(PortSystem system) : system_(std::move(system)) {}

uint32_t PortTable::CreateCommunicationPort(int32_t comType, uint32_t logDestination, uint32_t logMask,
                                            const char* logFilePath, uint32_t* communicationId,
                                            std::shared_ptr<const platform::StopSignal> stop, uint32_t logLimit)
{
    if (communicationId == nullptr) return kPortMissing;
    const auto record = MakeRecord(comType, system_, std::move(stop));
    if (record == nullptr) return kPortMissing;
    record->Log().SetMode(logDestination, logMask);
    record->Log().SetLimit(logLimit);
    record->Log().SetPath(logFilePath);
    record->Log().Write("CreateCommunicationPort- ", "START\n", kLogCalls);
    std::shared_ptr<PortRecord> former = record;  // may be the last that refers to it; destroyed without the lock
    {
        const platform::LockHold hold(lock_);
        records_.emplace(lastId_ + 1, record);  // may fail for lack of memory; nothing points to the record yet
        *communicationId = ++lastId_;
        current_.swap(former);
    }
    record->Log().Write("CreateCommunicationPort - ", "END\n", kLogCalls);
    return kPortOk;
}

std::shared_ptr<PortRecord> PortTable::FindLocked(uint32_t communicationId) const
{
    const auto found = records_.find(communicationId);
    return found == records_.end() ? nullptr : found->second;
}

std::shared_ptr<PortRecord> PortTable::Find(uint32_t communicationId) const
{
    const platform::LockHold hold(lock_);
    return FindLocked(communicationId);
}

void PortTable::Remove(uint32_t communicationId)
{
    std::shared_ptr<PortRecord> removed;  // destroyed without the lock
    const platform::LockHold hold(lock_);
    const auto found = records_.find(communicationId);
    if (found == records_.end()) return;
    removed = std::move(found->second);
    records_.erase(found);
}

std::shared_ptr<PortRecord> PortTable::Select(uint32_t communicationId)
{
    std::shared_ptr<PortRecord> former;
    std::shared_ptr<PortRecord> found;
    {
        const platform::LockHold hold(lock_);
        former = current_;
        found = FindLocked(communicationId);
        if (found != nullptr) current_ = found;
    }
    if (former != nullptr) {
        const OperationLog log(former->Log(), "SetCommunicationPort - ");
        if (found != nullptr)
            log.Progress("Communication ID will be setted to %d \n", communicationId);
        else
            log.Error("ID not found\n");
    }
    return found;
}

uint32_t PortTable::SetCommunicationPort(uint32_t communicationId)
{
    return Select(communicationId) == nullptr ? kPortNoSuchId : kPortOk;
}

template <typename Call>
uint32_t PortTable::OnCurrent(Call call)
{
    std::shared_ptr<PortRecord> record;
    {
        const platform::LockHold hold(lock_);
        record = current_;
    }
    return record == nullptr ? kPortMissing : call(*record);
}

uint32_t PortTable::InitSerialPort(const char* portName, uint32_t baudRate, uint32_t parity, uint32_t byteSize,
                                   uint32_t stopBits, uint32_t flowControl)
{
    return OnCurrent([=](PortRecord& record) {
        return record.InitSerialPort(portName, baudRate, parity, byteSize, stopBits, flowControl);
    });
}

uint32_t PortTable::SetSerialTimeout(uint32_t readInterval, uint32_t readConstant, uint32_t readMultiplier,
                                     uint32_t writeConstant, uint32_t writeMultiplier)
{
    return OnCurrent([=](PortRecord& record) {
        return record.SetSerialTimeout(readInterval, readConstant, readMultiplier, writeConstant, writeMultiplier);
    });
}

uint32_t PortTable::InitUsbPrinter(const char* printerName)
{
    return OnCurrent([=](PortRecord& record) { return record.InitUsbPrinter(printerName); });
}

uint32_t PortTable::SetUsbTimeout(uint32_t sendMilliseconds, uint32_t receiveMilliseconds)
{
    return OnCurrent([=](PortRecord& record) { return record.SetUsbTimeout(sendMilliseconds, receiveMilliseconds); });
}

uint32_t PortTable::InitEthTCP(const char* address, uint32_t port)
{
    return OnCurrent([=](PortRecord& record) { return record.InitEthTCP(address, port); });
}

uint32_t PortTable::SetEthTimeout(uint32_t sendMilliseconds, uint32_t receiveMilliseconds)
{
    return OnCurrent([=](PortRecord& record) { return record.SetEthTimeout(sendMilliseconds, receiveMilliseconds); });
}

uint32_t PortTable::SetPacketSize(uint32_t writeBytes, uint32_t readBytes)
{
    return OnCurrent([=](PortRecord& record) { return record.SetPacketSize(writeBytes, readBytes); });
}

uint32_t PortTable::Open()
{
    return OnCurrent([](PortRecord& record) { return record.Open(); });
}

uint32_t PortTable::Write(const uint8_t* buffer, uint16_t length)
{
    return OnCurrent([=](PortRecord& record) { return record.Write(buffer, length); });
}

uint32_t PortTable::Read(uint8_t* buffer, uint32_t size, uint32_t* count)
{
    return OnCurrent([=](PortRecord& record) { return record.Read(buffer, size, count); });
}

uint32_t PortTable::Clean(bool clearOutput, bool clearInput)
{
    return OnCurrent([=](PortRecord& record) { return record.Clean(clearOutput, clearInput); });
}

uint32_t PortTable::Close()
{
    return OnCurrent([](PortRecord& record) { return record.Close(); });
}

uint32_t PortTable::AdvSetSerialDTR(bool on)
{
    return OnCurrent([=](PortRecord& record) { return record.AdvSetSerialDTR(on); });
}

uint32_t PortTable::AdvSetSerialRTS(bool on)
{
    return OnCurrent([=](PortRecord& record) { return record.AdvSetSerialRTS(on); });
}

PortTable& ProcessPortTable()
{
    static PortTable& table = *new PortTable;
    return table;
}

}  // namespace marbex::comm
