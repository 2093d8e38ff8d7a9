#include "comm/usb_transport.h"

#include <algorithm>
#include <span>

namespace marbex::comm {

using platform::UsbStatus;

namespace {

constexpr uint32_t kLongestTimeout = 0x7FFFFFFF;
constexpr uint32_t kDrainSilence = 50;    // milliseconds
constexpr uint32_t kDiscardLimit = 1000;  // milliseconds
constexpr std::size_t kDrainChunk = 256;
constexpr uint32_t kEmptyTransferPause = 10;  // milliseconds

constexpr const char* kNotOpen = "Usb device not opened: imposible to perform operation\n";

}  // namespace

CNuComUsb::CNuComUsb(const CComLayerLog& log, platform::UsbSystem& system, platform::Clock& clock,
                     const platform::StopSignal& stop)
    : log_(log), system_(system), clock_(clock), stop_(stop), lostLink_(clock), givenUp_(stop)
{
}

uint32_t CNuComUsb::SetTimeout(uint32_t sendMilliseconds, uint32_t receiveMilliseconds)
{
    const OperationLog log(log_, "CNuComUsb::SetTimeout - ");
    log.Start();
    if (sendMilliseconds == 0 || receiveMilliseconds == 0) return log.Fail(310, "Timeout values can not be=0\n");
    sendTimeout_ = std::min(sendMilliseconds, kLongestTimeout);
    receiveTimeout_ = std::min(receiveMilliseconds, kLongestTimeout);
    OperationLog(log_, "CNuComUsb::SetTimeout")
        .Progress("Timeout values for USB communication setted to: [send timeout, receive timeout] = [%d , %d ]\n",
                  sendTimeout_, receiveTimeout_);
    return log.End();
}

uint32_t CNuComUsb::SetPacketUsb(uint32_t writeBytes, uint32_t readBytes)
{
    const OperationLog log(log_, "CNuComUsb::SetPacketUsb - ");
    log.Start();
    if (writeBytes == 0 || readBytes == 0) return log.Fail(9, "Packet size can't be = 0\n");
    writePacketSize_ = writeBytes;
    readPacketSize_ = readBytes;
    log.Progress("Packets size setted; WRITE = %d bytes, READ = %d bytes \n", writeBytes, readBytes);
    return log.End();
}

uint32_t CNuComUsb::OpenUsb()
{
    const OperationLog log(log_, "CNuComUsb::OpenUsb - ");
    log.Start();
    if (!initialised_) return log.Fail(304, "USB device not initialized\n");
    if (open_) return log.Fail(305, "USB device is already opened\n");
    log.Progress("Open on interface type: %d\n", interfaceType_);
    std::string devicePath;
    if (FindSymbolicLinkFromName(devicePath, vid_, pid_, parentIdPrefix_) == 0) {
        log.Error("Impossible to find and open a USB plugged device with VID=%s, PID=%s, PrefixID=%s\n", vid_.c_str(),
                  pid_.c_str(), parentIdPrefix_.c_str());
        return 315;
    }
    using Direction = platform::UsbSystem::Direction;
    writePipe_ = system_.OpenPipe(devicePath + "\\PIPE01\\", Direction::kWrite, lastSystemError_);
    readPipe_ = system_.OpenPipe(devicePath + "\\PIPE00\\", Direction::kRead, lastSystemError_);
    if (writePipe_ == nullptr || readPipe_ == nullptr) {
        writePipe_.reset();
        readPipe_.reset();
        return log.Fail(308, "Invalid handle returned opening the USB device\n");
    }
    writePipe_->HeedStop(stop_);
    readPipe_->HeedStop(stop_);
    open_ = true;
    use_.Opened();
    lostLink_.Forget();
    return log.End();
}

// Whether there is a device to use, after one try to get back one that was unplugged.
bool CNuComUsb::HasLink()
{
    return open_ || lostLink_.TryAgain([this] { return OpenUsb() == 0; });
}

uint32_t CNuComUsb::WriteUsb(const uint8_t* buffer, uint32_t length)
{
    const OperationLog log(log_, "CNuComUsb::WriteUsb - ");
    log.Start();
    use_.WriteBegins();
    if (!HasLink()) return log.Fail(309, kNotOpen);
    if (buffer == nullptr || length == 0) return log.End();
    const uint32_t packet = std::min(length, writePacketSize_);
    log.Progress("Bytes to send: %d, packet byte used:%d\n", length, packet);
    log.Progress("%d bytes to write:\n", length);
    const uint32_t result = SendPackets(log, buffer, length, packet);
    if (result == 330) return result;
    if (use_.BytesWritten() != length) {
        writePipe_->Cancel();
        log.Progress("Warning: USB write not completed,not all bytes were written\n");
    }
    return result == 0 ? log.End() : result;
}

uint32_t CNuComUsb::SendPackets(const OperationLog& log, const uint8_t* buffer, uint32_t length, uint32_t packet)
{
    for (uint32_t offset = 0; offset < length; offset += packet) {
        const uint32_t size = std::min(packet, length - offset);
        const auto sent = givenUp_ ? platform::UsbTransfer{UsbStatus::kTimedOut, 0}
                                   : writePipe_->Write(std::as_bytes(std::span(buffer + offset, size)), sendTimeout_);
        if (sent.status == UsbStatus::kTimedOut) givenUp_.WaitedInVain();
        if (sent.status != UsbStatus::kDone || sent.count == 0) return WriteFailure(log, sent);
        use_.Took(static_cast<uint32_t>(sent.count));
        if (!log.DumpsBytes()) continue;
        for (uint32_t i = offset; i < offset + sent.count; ++i)
            log.Bytes("SendBuffer[0x%02x]=0x%02x \n", i, buffer[i]);
    }
    return 0;
}

uint32_t CNuComUsb::WriteFailure(const OperationLog& log, const platform::UsbTransfer& sent)
{
    lastSystemError_ = writePipe_->LastError();
    if (sent.status == UsbStatus::kGone) return LoseDevice(log, *writePipe_);
    uint32_t result = 0;
    if (sent.status == UsbStatus::kTimedOut)
        result = log.Fail(313, "USB write error timeout\n");
    else if (sent.status == UsbStatus::kWaitFailed)
        result = log.Fail(311, "USB write generic error \n");
    else if (sent.status == UsbStatus::kNoResult)
        result = log.Fail(314, "USB write overlap error\n");
    else
        result = log.Fail(312, "USB write success, but 0 bytes send\n");
    writePipe_->Cancel();
    return result;
}

uint32_t CNuComUsb::ReadUsb(uint8_t* buffer, uint32_t size, uint32_t* count)
{
    return Read(buffer, size, count, std::nullopt);
}

LinkRead CNuComUsb::ReadUsbWithin(uint8_t* buffer, uint32_t size, uint32_t milliseconds, uint32_t* count)
{
    const uint32_t result = Read(buffer, size, count, milliseconds);
    if (result != 0 && result != 323) return LinkRead::kFailed;
    return *count > 0 ? LinkRead::kArrived : LinkRead::kNothing;
}

// A printer that has nothing to say may answer each time it is asked, with a transfer of no bytes.
platform::UsbTransfer CNuComUsb::AwaitBytes(std::span<std::byte> room, uint32_t milliseconds)
{
    const uint64_t start = clock_.Milliseconds();
    for (;;) {
        const uint64_t passed = std::min<uint64_t>(clock_.Milliseconds() - start, milliseconds);
        const auto got = readPipe_->ReadUntilStopped(room, static_cast<uint32_t>(milliseconds - passed));
        if (got.status != UsbStatus::kDone || got.count > 0) return got;
        if (passed == milliseconds || stop_.IsSet()) return got;
        clock_.Sleep(kEmptyTransferPause);
    }
}

uint32_t CNuComUsb::Read(uint8_t* buffer, uint32_t size, uint32_t* count, std::optional<uint32_t> within)
{
    const OperationLog log(log_, "CNuComUsb::ReadUsb - ");
    log.Start();
    *count = 0;
    if (!HasLink()) return log.Fail(309, kNotOpen);
    if (buffer == nullptr || size == 0) return log.End();
    const uint32_t wanted = std::min(size, readPacketSize_);
    log.Progress("Receive buffer size: %d, packet size setted:%d, packet used for read:%d \n", size, readPacketSize_,
                 wanted);
    const auto room = std::as_writable_bytes(std::span(buffer, wanted));
    const auto received = within ? AwaitBytes(room, *within) : readPipe_->Read(room, receiveTimeout_);
    if (received.status != UsbStatus::kDone) return ReadFailure(log, received.status);
    *count = static_cast<uint32_t>(received.count);
    log.Call("%d bytes read:\n", *count);
    if (log.DumpsBytes())
        for (uint32_t i = 0; i < *count; ++i)
            log.Bytes("ReceiveBuffer[0x%02x]=0x%02x \n", i, buffer[i]);
    return log.End();
}

uint32_t CNuComUsb::ReadFailure(const OperationLog& log, UsbStatus status)
{
    lastSystemError_ = readPipe_->LastError();
    if (status == UsbStatus::kGone) return LoseDevice(log, *readPipe_);
    readPipe_->Cancel();
    if (status == UsbStatus::kTimedOut) return log.Fail(323, "USB read timeout\n");
    if (status == UsbStatus::kWaitFailed) return log.Fail(322, "USB read generic error \n");
    return log.Fail(324, "USB read overlap error\n");
}

uint32_t CNuComUsb::LoseDevice(const OperationLog& log, platform::UsbPipe& pipe)
{
    log.Error("Device is no longer available: handle will be closed\n");
    pipe.Cancel();
    ClosePipes();
    // Closing the pipes of a device that is gone may fail; it is closed all the same.
    writePipe_.reset();
    readPipe_.reset();
    open_ = false;
    lostLink_.Lose();
    return 330;
}

uint32_t CNuComUsb::CleanUsb(bool clearOutput, bool clearInput)
{
    const OperationLog log(log_, "CNuComUsb::CleanUsb - ");
    log.Start();
    if (!open_) return log.Fail(309, kNotOpen);
    if (clearOutput) {
        if (!writePipe_->Cancel()) {
            lastSystemError_ = writePipe_->LastError();
            return log.Fail(321, "Error cleaning USB channels\n");
        }
        log.Progress("USB write channel cleaned\n");
    }
    if (clearInput) {
        if (!DrainInput(receiveTimeout_)) {
            lastSystemError_ = readPipe_->LastError();
            return log.Fail(321, "Error cleaning USB channels\n");
        }
        log.Progress("USB read channel cleaned\n");
    }
    return log.End();
}

void CNuComUsb::DiscardInput()
{
    if (open_) DrainInput(std::min(receiveTimeout_, kDiscardLimit));
}

bool CNuComUsb::DrainInput(uint32_t limitMilliseconds)
{
    std::array<std::byte, kDrainChunk> waste{};
    const uint64_t end = clock_.Milliseconds() + limitMilliseconds;
    for (;;) {
        const auto received = readPipe_->Read(waste, kDrainSilence);
        if (received.status == UsbStatus::kTimedOut) break;
        if (received.status != UsbStatus::kDone) return false;
        // A printer that never stops sending must not hold its caller for ever.
        if (received.count == 0 || stop_.IsSet() || clock_.Milliseconds() >= end) break;
    }
    return readPipe_->Cancel();
}

uint32_t CNuComUsb::CloseUsb()
{
    lostLink_.Forget();
    return ClosePipes();
}

uint32_t CNuComUsb::ClosePipes()
{
    const OperationLog log(log_, "CNuComUsb::CloseUsb - ");
    log.Start();
    if (!open_) return log.Fail(309, kNotOpen);
    if (writePipe_ == nullptr || readPipe_ == nullptr) return log.Fail(320, "Close failed: invalid handle to close\n");
    if (!writePipe_->Close()) {
        lastSystemError_ = writePipe_->LastError();
        return log.Fail(317, "Error closing write handle for USB\n");
    }
    if (!readPipe_->Close()) {
        lastSystemError_ = readPipe_->LastError();
        return log.Fail(318, "Error closing read handle for USB\n");
    }
    writePipe_.reset();
    readPipe_.reset();
    open_ = false;
    log.Progress("Close handle : success\n");
    return log.End();
}

}  // namespace marbex::comm
