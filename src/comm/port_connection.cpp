#include "comm/port_connection.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace marbex::comm {

namespace {

struct Format {
    std::string_view text;
    uint8_t byteSize;
    uint8_t parity;
    uint8_t stopBits;
};

constexpr std::array kFormats{
    Format{"8N1", 8, 0, 0}, Format{"7E1", 7, 2, 0}, Format{"7O1", 7, 1, 0},
    Format{"8E1", 8, 2, 0}, Format{"8O1", 8, 1, 0},
};

bool EqualIgnoringCase(std::string_view a, std::string_view b)
{
    const auto upper = [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [&](char x, char y) { return upper(x) == upper(y); });
}

}  // namespace

CPortConnection::CPortConnection(PortTable& table, std::shared_ptr<const platform::StopSignal> stop)
    : table_(table), stop_(std::move(stop))
{
}

CPortConnection::~CPortConnection()
{
    Close();
}

void CPortConnection::SetLog(uint32_t level, uint32_t destinationSelector, const std::string& directory,
                             uint32_t fileNumber, uint32_t limit)
{
    logLimit_ = limit;
    if (level == 0) {
        logMask_ = 0;
        logDestination_ = kLogToNothing;
        logFilePath_.clear();
        return;
    }
    logMask_ = kLogProgress | kLogErrors | (level > 2 ? kLogBytes : 0);
    logDestination_ = destinationSelector == 0 ? kLogToFile : destinationSelector == 1 ? kLogToDebugger : kLogToNothing;
    logFilePath_ = directory + "\\COposComm" + std::to_string(fileNumber) + ".log";
}

void CPortConnection::SetTimeouts(uint32_t sendMilliseconds, uint32_t receiveMilliseconds)
{
    sendTimeout_ = sendMilliseconds;
    receiveTimeout_ = receiveMilliseconds;
}

void CPortConnection::SetEthernet(const std::string& address, uint32_t port)
{
    address_ = address;
    tcpPort_ = port;
}

void CPortConnection::SetPrinterName(const std::string& name)
{
    printerName_ = name;
}

void CPortConnection::SetSerialPort(uint32_t number, uint32_t baudRate)
{
    serialPortName_ = "COM" + std::to_string(number);
    if (baudRate != 0) baudRate_ = baudRate;
}

void CPortConnection::SetFormat(const std::string& format)
{
    for (const Format& known : kFormats) {
        if (!EqualIgnoringCase(format, known.text)) continue;
        byteSize_ = known.byteSize;
        parity_ = known.parity;
        stopBits_ = known.stopBits;
    }
}

uint32_t CPortConnection::SetHandshake(uint32_t code)
{
    if (open_) return 1;
    handshake_ = code;
    return 0;
}

uint32_t CPortConnection::Open()
{
    if (open_) return 1;
    open_ = OpenSteps() == kPortOk;
    if (open_) return 0;
    LeaveRecord();
    return 1;
}

uint32_t CPortConnection::OpenSteps()
{
    if (comType_ < kSerial || comType_ > kUsb) return kPortMissing;
    const uint32_t result = table_.CreateCommunicationPort(comType_, logDestination_, logMask_, logFilePath_.c_str(),
                                                           &communicationId_, stop_, logLimit_);
    if (result != kPortOk) return result;
    // The new record is the current one, but another connection may select its own meanwhile.
    const auto record = table_.Find(communicationId_);
    if (record == nullptr) return kPortMissing;
    if (comType_ == kEthernet) return OpenEthernet(*record);
    return comType_ == kUsb ? OpenUsb(*record) : OpenSerial(*record);
}

uint32_t CPortConnection::OpenSerial(PortRecord& record)
{
    const uint32_t flowControl = handshake_ == 2 ? 1 : 0;
    uint32_t result =
        record.InitSerialPort(serialPortName_.c_str(), baudRate_, parity_, byteSize_, stopBits_, flowControl);
    if (result == kPortOk) result = record.SetSerialTimeout(10, receiveTimeout_, 10, sendTimeout_, 100);
    if (result == kPortOk) result = record.SetPacketSize(1024, 256);
    return result == kPortOk ? record.Open() : result;
}

uint32_t CPortConnection::OpenEthernet(PortRecord& record)
{
    uint32_t result = record.InitEthTCP(address_.c_str(), tcpPort_);
    if (result == kPortOk) result = record.SetEthTimeout(sendTimeout_, receiveTimeout_);
    if (result == kPortOk) result = record.SetPacketSize(1024, 256);
    return result == kPortOk ? record.Open() : result;
}

uint32_t CPortConnection::OpenUsb(PortRecord& record)
{
    uint32_t result = record.InitUsbPrinter(printerName_.c_str());
    if (result == kPortOk) result = record.SetUsbTimeout(sendTimeout_, receiveTimeout_);
    if (result == kPortOk) result = record.SetPacketSize(1024, 64);
    return result == kPortOk ? record.Open() : result;
}

uint32_t CPortConnection::Close()
{
    if (!open_) return 0;
    if (const auto record = table_.Select(communicationId_)) record->Close();
    open_ = false;
    LeaveRecord();
    return 0;
}

void CPortConnection::LeaveRecord()
{
    table_.Remove(communicationId_);
    communicationId_ = 0;
}

uint32_t CPortConnection::Write(const uint8_t* buffer, uint16_t length)
{
    const auto record = table_.Select(communicationId_);
    if (record == nullptr) return 1;
    uint32_t written = 0;
    // A transport reports a short write as a success; a hole in a receipt is none.
    return record->Write(buffer, length, &written) == kPortOk && written == length ? 0 : 1;
}

uint32_t CPortConnection::Read(uint8_t* buffer, uint32_t size, uint32_t* count)
{
    const auto record = table_.Select(communicationId_);
    return record != nullptr && record->Read(buffer, size, count) == kPortOk ? 0 : 1;
}

LinkRead CPortConnection::ReadWithin(uint8_t* buffer, uint32_t size, uint32_t milliseconds, uint32_t* count)
{
    const auto record = table_.Select(communicationId_);
    return record != nullptr ? record->ReadWithin(buffer, size, milliseconds, count) : LinkRead::kFailed;
}

LinkUse CPortConnection::Use() const
{
    const auto record = table_.Find(communicationId_);
    return record != nullptr ? record->Use() : LinkUse{};
}

void CPortConnection::CleanInput()
{
    if (const auto record = table_.Select(communicationId_)) record->Clean(false, true);
}

void CPortConnection::CleanOutput()
{
    if (const auto record = table_.Select(communicationId_)) record->Clean(true, false);
}

void CPortConnection::DiscardInput()
{
    if (const auto record = table_.Find(communicationId_)) record->DiscardInput();
}

uint32_t CPortConnection::SetDTR(bool on)
{
    const auto record = table_.Select(communicationId_);
    return record == nullptr ? kPortMissing : record->AdvSetSerialDTR(on);
}

uint32_t CPortConnection::SetRTS(bool on)
{
    const auto record = table_.Select(communicationId_);
    return record == nullptr ? kPortMissing : record->AdvSetSerialRTS(on);
}

}  // namespace marbex::comm
