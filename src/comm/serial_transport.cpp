#include "comm/serial_transport.h"

#include <algorithm>
#include <string_view>

namespace marbex::comm {

using platform::LineControl;
using platform::LineSettings;

namespace {

constexpr uint32_t kLongestTimeout = 0x7FFFFFFF;

constexpr const char* kNotOpen = "Impossibile to perform the operation: device is not open\n";

}  // namespace

CNuComSerial::CNuComSerial(const CComLayerLog& log, platform::SerialSystem& system, platform::Clock& clock,
                           const platform::StopSignal& stop)
    : log_(log), system_(system), stop_(stop), lostLink_(clock), givenUp_(stop)
{
}

CNuComSerial::~CNuComSerial()
{
    handle_.reset();
    RemoveOwnLink();
}

uint32_t CNuComSerial::SetTimeout(uint32_t readInterval, uint32_t readConstant, uint32_t readMultiplier,
                                  uint32_t writeConstant, uint32_t writeMultiplier)
{
    const OperationLog log(log_, "CNuComSerial::SetTimeout - ");
    log.Start();
    const auto bounded = [](uint32_t value) { return std::min(value, kLongestTimeout); };
    timeouts_ = {bounded(readInterval), bounded(readMultiplier), bounded(readConstant), bounded(writeMultiplier),
                 bounded(writeConstant)};
    if (open_ && handle_ != nullptr && !handle_->Apply(timeouts_)) {
        lastSystemError_ = handle_->LastError();
        return log.Fail(107, "Open failed: error during SetCommTimeouts \n");
    }
    log.Progress(
        "Timeout values setted to: [read interval, read constant, read multiplier, constant, write multiplier] = "
        "[%d %d %d %d %d]\n",
        timeouts_.readInterval, timeouts_.readConstant, timeouts_.readMultiplier, timeouts_.writeConstant,
        timeouts_.writeMultiplier);
    return log.End();
}

uint32_t CNuComSerial::SetPacketSerial(uint32_t writeBytes, uint32_t readBytes)
{
    const OperationLog log(log_, "CNuComSerial::SetPacketSerial - ");
    log.Start();
    if (writeBytes == 0 || readBytes == 0) return log.Fail(9, "Packet size can't be = 0\n");
    writePacketSize_ = writeBytes;
    readPacketSize_ = readBytes;
    log.Progress("Packets size setted; WRITE = %d bytes, READ = %d bytes \n", writeBytes, readBytes);
    return log.End();
}

uint32_t CNuComSerial::WriteSerial(const uint8_t* buffer, uint32_t length)
{
    const OperationLog log(log_, "CNuComSerial::WriteSerial - ");
    log.Start();
    use_.WriteBegins();
    if (!open_) return log.Fail(103, kNotOpen);
    if (buffer == nullptr || length == 0) return log.End();
    const uint32_t packet = std::min(length, writePacketSize_);
    log.Progress("Bytes to send: %d, packet byte used:%d\n", length, packet);
    log.Progress("%d bytes to write:\n", length);
    const uint32_t result = SendPackets(log, buffer, length, packet);
    if (use_.BytesWritten() != length) {
        if (handle_ != nullptr) handle_->Purge(true, true);
        log.Progress("Purge communication ports\n");
    }
    NoticeLoss();
    return result == 0 ? log.End() : result;
}

uint32_t CNuComSerial::SendPackets(const OperationLog& log, const uint8_t* buffer, uint32_t length, uint32_t packet)
{
    if (!RegainLine()) return log.Fail(111, "Write failed: error system occurred during Write()\n");
    for (uint32_t offset = 0; offset < length; offset += packet) {
        const auto bytes = std::as_bytes(std::span(buffer + offset, std::min(packet, length - offset)));
        const auto sent = givenUp_ ? platform::SerialTransfer{true, 0} : handle_->Write(bytes);
        if (!sent.ok) {
            lastSystemError_ = handle_->LastError();
            return log.Fail(111, "Write failed: error system occurred during Write()\n");
        }
        if (sent.count < bytes.size()) givenUp_.WaitedInVain();
        if (sent.count == 0) return log.Fail(112, "Write failed: no bytes send during writing operation \n");
        use_.Took(static_cast<uint32_t>(sent.count));
        if (!log.DumpsBytes()) continue;
        for (uint32_t i = offset; i < offset + sent.count; ++i)
            log.Bytes("SendBuffer[0x%02x]=0x%02x \n", i, buffer[i]);
    }
    return 0;
}

uint32_t CNuComSerial::ReadSerial(uint8_t* buffer, uint32_t size, uint32_t* count)
{
    return Read(buffer, size, count, std::nullopt);
}

LinkRead CNuComSerial::ReadSerialWithin(uint8_t* buffer, uint32_t size, uint32_t milliseconds, uint32_t* count)
{
    const uint32_t result = Read(buffer, size, count, milliseconds);
    if (result != 0 && result != 114) return LinkRead::kFailed;
    return *count > 0 ? LinkRead::kArrived : LinkRead::kNothing;
}

uint32_t CNuComSerial::Read(uint8_t* buffer, uint32_t size, uint32_t* count, std::optional<uint32_t> within)
{
    const OperationLog log(log_, "CNuComSerial::ReadSerial - ");
    log.Start();
    *count = 0;
    if (!open_) return log.Fail(103, kNotOpen);
    if (buffer == nullptr || size == 0) return log.End();
    const uint32_t wanted = std::min(size, readPacketSize_);
    log.Progress("Receive buffer size: %d, packet size setted:%d, packet used for read:%d \n", size, readPacketSize_,
                 wanted);
    if (!RegainLine()) return log.Fail(113, "Read failed: error system occurred during Read()\n");
    const auto room = std::as_writable_bytes(std::span(buffer, wanted));
    const platform::SerialTransfer received = within ? handle_->ReadUntilStopped(room, *within) : handle_->Read(room);
    if (!received.ok) {
        lastSystemError_ = handle_->LastError();
        NoticeLoss();
        return log.Fail(113, "Read failed: error system occurred during Read()\n");
    }
    if (received.count == 0) return log.Fail(114, "Read failed: no bytes read during reading operation \n");
    *count = static_cast<uint32_t>(received.count);
    log.Bytes("%d bytes read:\n", *count);
    if (log.DumpsBytes())
        for (uint32_t i = 0; i < *count; ++i)
            log.Bytes("ReceiveBuffer[0x%02x]=0x%02x \n", i, buffer[i]);
    return log.End();
}

// A device that went away is let go at once: while it is held, it could not come back under its old name.
void CNuComSerial::NoticeLoss()
{
    if (handle_ == nullptr || !handle_->IsGone()) return;
    handle_.reset();
    RemoveOwnLink();
    lostLink_.Lose();
}

// Whether there is a line to use, after one try to get back a lost one.
bool CNuComSerial::RegainLine()
{
    if (handle_ != nullptr) return true;
    const OperationLog log(log_, "CNuComSerial::OpenSerial - ");
    if (!lostLink_.TryAgain([&] { return OpenLine(log) == 0; })) return false;
    log.Progress("Com port succesfully opened\n");
    if (dtr_) SetDTR(*dtr_);
    if (rts_) SetRTS(*rts_);
    return true;
}

uint32_t CNuComSerial::CleanSerial(bool clearOutput, bool clearInput)
{
    const OperationLog log(log_, "CNuComSerial::CleanSerial - ");
    log.Start();
    if (!open_) return log.Fail(103, kNotOpen);
    if (!clearOutput && !clearInput) return log.End();
    if (handle_ == nullptr || !handle_->Purge(clearOutput, clearInput)) {
        if (handle_ != nullptr) lastSystemError_ = handle_->LastError();
        return log.Fail(117, "Purge error: clean has failed\n");
    }
    return log.End();
}

void CNuComSerial::DiscardInput()
{
    if (handle_ != nullptr) handle_->Purge(false, true);
}

// Takes a modem line out of the driver's hands: 0, 115, 108, or 1 when the line is disabled.
uint32_t CNuComSerial::SetLineControl(const OperationLog& log, LineControl LineSettings::*control)
{
    auto settings = handle_ != nullptr ? handle_->Settings() : std::nullopt;
    if (!settings) {
        if (handle_ != nullptr) lastSystemError_ = handle_->LastError();
        return log.Fail(115, "Impossible to get parameters: GetCommState has failed\n");
    }
    if ((*settings).*control == LineControl::kDisabled) return 1;
    (*settings).*control = LineControl::kEnabled;
    if (handle_->Apply(*settings)) return 0;
    lastSystemError_ = handle_->LastError();
    return log.Fail(108, "Open failed: error during SetCommState \n");
}

uint32_t CNuComSerial::SetDTR(bool on)
{
    const OperationLog log(log_, "CNuComSerial::SetDTR - ");
    log.Start();
    if (!open_) return log.Fail(103, kNotOpen);
    const uint32_t result = SetLineControl(log, &LineSettings::dtr);
    if (result == 1) return log.Fail(120, "Impossibile to set/reset DTR: DTR control disabled\n");
    if (result != 0) return result;
    if (!handle_->SetDtr(on)) {
        lastSystemError_ = handle_->LastError();
        return log.Fail(118, "EscapeCommFunctions() error, SetDTR has failed\n");
    }
    dtr_ = on;
    return log.End();
}

uint32_t CNuComSerial::SetRTS(bool on)
{
    const OperationLog log(log_, "CNuComSerial::SetRTS - ");
    log.Start();
    if (!open_) return log.Fail(103, kNotOpen);
    const uint32_t result = SetLineControl(log, &LineSettings::rts);
    if (result == 1) return log.Fail(121, "Impossibile to set/reset DTR: RTS control disabled\n");
    if (result != 0) return result;
    if (!handle_->SetRts(on)) {
        lastSystemError_ = handle_->LastError();
        return log.Fail(119, "EscapeCommFunctions() error, SetRTS has failed\n");
    }
    rts_ = on;
    return log.End();
}

uint32_t CNuComSerial::CloseSerial()
{
    const OperationLog log(log_, "CNuComSerial::CloseSerial - ");
    log.Start();
    if (!open_) return log.Fail(103, kNotOpen);
    lostLink_.Forget();
    if (handle_ == nullptr) return log.Fail(109, "Close failed: invalid handle to close\n");
    if (!handle_->Close()) {
        lastSystemError_ = handle_->LastError();
        return log.Fail(110, "CloseHandle() failed, impossible to close handle \n");
    }
    handle_.reset();
    RemoveOwnLink();
    open_ = false;
    log.Progress("Close handle : success\n");
    return log.End();
}

}  // namespace marbex::comm
