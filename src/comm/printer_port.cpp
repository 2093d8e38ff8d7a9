#include "comm/printer_port.h"

#include <algorithm>
#include <cstring>

namespace marbex::comm {

namespace {

// A connection takes a 16-bit length; longer data goes in pieces, or all but the remainder of 65536 would be lost.
constexpr std::size_t kLongestPiece = 32768;

constexpr uint32_t kLongestReadMilliseconds = 60000;

int32_t WriteInPieces(CPortConnection& connection, const uint8_t* buffer, std::size_t length)
{
    for (std::size_t offset = 0; offset < length; offset += kLongestPiece) {
        const auto piece = static_cast<uint16_t>(std::min(kLongestPiece, length - offset));
        if (connection.Write(buffer + offset, piece) != 0) return 1;
    }
    return 0;
}

}  // namespace

CPrinterPort::CPrinterPort(PortTable& table) : table_(table) {}

CPrinterPort::~CPrinterPort()
{
    CloseAll();
}

// What a connection on any port needs; the rest says where the primary one leads.
void CPrinterPort::ApplyCommonSettings(CPortConnection& connection) const
{
    connection.SetComType(static_cast<int32_t>(portType_));
    connection.SetLog(logLevel_, logDestinationSelector_, logDirectory_, logFileNumber_, logLimit_);
    connection.SetTimeouts(sendTimeout_, receiveTimeout_);
    connection.SetFormat(format_);
    connection.SetHandshake(handshake_);
}

int32_t CPrinterPort::Open()
{
    if (IsOpen()) return -1;
    primary_ = std::make_unique<CPortConnection>(table_, stop_);
    ApplyCommonSettings(*primary_);
    primary_->SetEthernet(address_, tcpPort_);
    primary_->SetPrinterName(printerName_);
    primary_->SetSerialPort(comPort_, baudRate_);
    if (primary_->Open() != 0) {
        primary_.reset();
        return -1;
    }
    primary_->SetDTR(true);
    primary_->SetRTS(true);
    return 0;
}

int32_t CPrinterPort::Close()
{
    return CloseAll();
}

int32_t CPrinterPort::CloseAll()
{
    const bool wasOpen = primary_ != nullptr && primary_->IsOpen();
    if (wasOpen) {
        formerOpenings_ += primary_->Use().Openings();
        primary_->Close();
        primary_.reset();
    }
    if (secondary_ != nullptr) {
        secondary_->Close();
        secondary_.reset();
    }
    return wasOpen ? 0 : -1;
}

bool CPrinterPort::IsOpen() const
{
    return primary_ != nullptr && primary_->IsOpen();
}

int32_t CPrinterPort::WriteByte(uint8_t value)
{
    return Write(&value, 1);
}

int32_t CPrinterPort::Write(const uint8_t* buffer, std::size_t length)
{
    if (!IsOpen()) return -1;
    const std::size_t first = std::min(kLongestPiece, length);
    const int32_t result = WriteInPieces(*primary_, buffer, first);
    openingOfWrite_ = formerOpenings_ + primary_->Use().OpeningOfWrite();
    return result != 0 ? result : WriteInPieces(*primary_, buffer + first, length - first);
}

int32_t CPrinterPort::ReadByte(uint8_t* buffer)
{
    uint16_t length = 1;
    return Read(buffer, &length);
}

int32_t CPrinterPort::Read(uint8_t* buffer, uint16_t* length)
{
    if (!IsOpen()) return -1;
    uint32_t count = 0;
    if (primary_->Read(buffer, *length, &count) != 0) return -1;
    *length = static_cast<uint16_t>(count);
    return static_cast<int32_t>(count);
}

LinkRead CPrinterPort::ReadWithin(std::span<uint8_t> room, uint32_t milliseconds, std::size_t& count)
{
    count = 0;
    if (!IsOpen()) return LinkRead::kFailed;
    uint32_t arrived = 0;
    const auto size = static_cast<uint32_t>(std::min<std::size_t>(room.size(), 0xFFFF));
    const uint32_t limit = std::clamp<uint32_t>(milliseconds, 1, kLongestReadMilliseconds);
    const LinkRead result = primary_->ReadWithin(room.data(), size, limit, &arrived);
    count = arrived;
    return result;
}

int32_t CPrinterPort::WriteText(const char* text)
{
    return Write(reinterpret_cast<const uint8_t*>(text), std::strlen(text));
}

int32_t CPrinterPort::CleanBoth()
{
    CleanOutput();
    return CleanInput();
}

int32_t CPrinterPort::CleanInput()
{
    if (IsOpen()) primary_->CleanInput();
    return 0;
}

int32_t CPrinterPort::CleanOutput()
{
    if (IsOpen()) primary_->CleanOutput();
    return 0;
}

int32_t CPrinterPort::CleanBothAgain()
{
    return CleanBoth();
}

void CPrinterPort::DiscardInput()
{
    if (IsOpen()) primary_->DiscardInput();
}

int32_t CPrinterPort::OpenSecondary(uint32_t comPort)
{
    if (secondary_ != nullptr && secondary_->IsOpen()) return -1;
    secondary_ = std::make_unique<CPortConnection>(table_, stop_);
    ApplyCommonSettings(*secondary_);
    secondary_->SetSerialPort(comPort, baudRate_);
    if (secondary_->Open() != 0) {
        secondary_.reset();
        return -1;
    }
    return 0;
}

int32_t CPrinterPort::WriteSecondary(const uint8_t* buffer, std::size_t length)
{
    if (!IsOpen()) return -1;
    return secondary_ == nullptr ? 1 : WriteInPieces(*secondary_, buffer, length);
}

uint32_t CPrinterPort::Openings() const
{
    return formerOpenings_ + (IsOpen() ? primary_->Use().Openings() : 0);
}

uint32_t CPrinterPort::BaudRate() const
{
    return IsOpen() ? primary_->BaudRate() : 0;
}

void CPrinterPort::RequestStop(bool stop)
{
    stop_->Set(stop);
}

void CPrinterPort::SetPortType(uint32_t portType)
{
    portType_ = portType;
}

void CPrinterPort::SetLog(uint32_t level, uint32_t destinationSelector, const std::string& directory,
                          uint32_t fileNumber, uint32_t limit)
{
    logLevel_ = level;
    logDestinationSelector_ = destinationSelector;
    logDirectory_ = directory;
    logFileNumber_ = fileNumber;
    logLimit_ = limit;
}

void CPrinterPort::SetTimeouts(uint32_t sendMilliseconds, uint32_t receiveMilliseconds)
{
    sendTimeout_ = sendMilliseconds;
    receiveTimeout_ = receiveMilliseconds;
}

void CPrinterPort::SetTcpPort(uint32_t port)
{
    tcpPort_ = port;
}

void CPrinterPort::SetIpAddress(const std::string& address)
{
    address_ = address;
}

void CPrinterPort::SetPrinterName(const std::string& name)
{
    printerName_ = name;
}

void CPrinterPort::SetComPort(uint32_t number, uint32_t baudRate)
{
    comPort_ = number;
    baudRate_ = baudRate;
}

void CPrinterPort::SetFormat(const std::string& format)
{
    format_ = format;
}

void CPrinterPort::SetHandshake(uint32_t code)
{
    handshake_ = code;
}

}  // namespace marbex::comm
