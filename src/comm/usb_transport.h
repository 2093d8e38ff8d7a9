#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "comm/given_up.h"
#include "comm/link_read.h"
#include "comm/link_use.h"
#include "comm/lost_link.h"
#include "comm/operation_log.h"
#include "platform/clock.h"
#include "platform/usb.h"

namespace marbex::comm {

// A printer on USB, named as it is installed in the print system. The registry tells which device stands behind the
// name; its interface is looked for among the present ones, and its two bulk pipes are used, one for each direction.
//
// Operations return 0 or a code; the text of each code stands beside it in the source and goes to the log. Every call
// runs on the caller's thread and is bounded by the send or receive time-out for each packet. One caller at a time.
class CNuComUsb {
public:
    // The signal, which must outlive the transport, shortens what waits for a printer that makes no progress.
    CNuComUsb(const CComLayerLog& log, platform::UsbSystem& system, platform::Clock& clock,
              const platform::StopSignal& stop = platform::kNeverStopped);
    CNuComUsb(const CNuComUsb&) = delete;
    CNuComUsb& operator=(const CNuComUsb&) = delete;

    uint32_t InitPrinter(const char* printerName);
    uint32_t SetTimeout(uint32_t sendMilliseconds, uint32_t receiveMilliseconds);
    uint32_t SetPacketUsb(uint32_t writeBytes, uint32_t readBytes);
    uint32_t OpenUsb();
    // In packets, each with one transfer; a short transfer is not made up for, BytesWritten tells. A device that is
    // unplugged meanwhile closes the transport.
    uint32_t WriteUsb(const uint8_t* buffer, uint32_t length);
    uint32_t ReadUsb(uint8_t* buffer, uint32_t size, uint32_t* count);  // success with 0 bytes is possible
    // Likewise, with a time limit of its own; transfers without bytes do not end it.
    LinkRead ReadUsbWithin(uint8_t* buffer, uint32_t size, uint32_t milliseconds, uint32_t* count);
    // Input is drained until the printer is silent for 50 ms, at most for the receive time-out.
    uint32_t CleanUsb(bool clearOutput, bool clearInput);
    void DiscardInput();  // likewise, at most for a second; writes no line
    uint32_t CloseUsb();

    // The Plug and Play parent prefix of an installed printer; 1 or 0.
    int32_t ExtractParentPrefixID(const std::string& printerName, std::string& prefix);
    // The path of the present interface of that device; 1 or 0. VID and PID are four hex digits.
    int32_t FindSymbolicLinkFromName(std::string& devicePath, const std::string& vid, const std::string& pid,
                                     const std::string& prefix);

    const LinkUse& Use() const { return use_; }
    uint32_t LastSystemError() const { return lastSystemError_; }

private:
    uint32_t IdentifyPrinter(const OperationLog& log, const std::string& printerName);
    uint32_t FindDeviceKey(const OperationLog& log, const std::string& prefix, std::string& deviceKey);
    bool HasParentPrefix(const OperationLog& log, const std::string& instanceKey, const std::string& prefix);
    uint32_t SendPackets(const OperationLog& log, const uint8_t* buffer, uint32_t length, uint32_t packet);
    uint32_t Read(uint8_t* buffer, uint32_t size, uint32_t* count, std::optional<uint32_t> within);
    platform::UsbTransfer AwaitBytes(std::span<std::byte> room, uint32_t milliseconds);
    uint32_t WriteFailure(const OperationLog& log, const platform::UsbTransfer& sent);
    uint32_t ReadFailure(const OperationLog& log, platform::UsbStatus status);
    uint32_t LoseDevice(const OperationLog& log, platform::UsbPipe& pipe);
    bool DrainInput(uint32_t limitMilliseconds);
    uint32_t ClosePipes();
    bool HasLink();

    const CComLayerLog& log_;
    platform::UsbSystem& system_;
    platform::Clock& clock_;
    const platform::StopSignal& stop_;
    std::unique_ptr<platform::UsbPipe> writePipe_;
    std::unique_ptr<platform::UsbPipe> readPipe_;
    uint32_t writePacketSize_ = 64;
    uint32_t readPacketSize_ = 1024;
    bool open_ = false;
    bool initialised_ = false;
    uint32_t interfaceType_ = 1;  // printer, the only one there is
    uint32_t sendTimeout_ = 10000;
    uint32_t receiveTimeout_ = 10000;
    std::string vid_;
    std::string pid_;
    std::string parentIdPrefix_;
    uint32_t lastSystemError_ = 0;
    LinkUse use_;
    LostLink lostLink_;
    GivenUp givenUp_;
};

}  // namespace marbex::comm
