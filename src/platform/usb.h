#pragma once

// USB printers: the registry keys that tie an installed printer to its device, the printer-class interfaces that are
// present, and the two pipes of one.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/registry.h"
#include "platform/stop_signal.h"

namespace marbex::platform {

// The device interface class of USB printers, as published.
inline constexpr const char* kUsbPrinterInterfaceClass = "{28d78fad-5a12-11d1-ae5b-0000f803a8c2}";

enum class UsbStatus {
    kDone,        // count bytes moved; 0 is possible
    kTimedOut,    // the time ran out; the transfer is still pending until Cancel
    kGone,        // the device was unplugged or switched off
    kWaitFailed,  // waiting for the transfer failed
    kNoResult,    // the transfer ended, but not well
};

struct UsbTransfer {
    UsbStatus status = UsbStatus::kNoResult;
    std::size_t count = 0;
};

// One direction of an open device. One caller at a time. Closed by its destructor.
class UsbPipe {
public:
    virtual ~UsbPipe() = default;
    // From now on a transfer without progress ends two seconds after this signal, as if its time were over. The signal
    // must outlive the pipe.
    virtual void HeedStop(const StopSignal& stop) = 0;
    // Both wait at most so many milliseconds.
    virtual UsbTransfer Write(std::span<const std::byte> bytes, uint32_t timeoutMilliseconds) = 0;
    virtual UsbTransfer Read(std::span<std::byte> buffer, uint32_t timeoutMilliseconds) = 0;
    // Likewise; the signal ends it at once.
    virtual UsbTransfer ReadUntilStopped(std::span<std::byte> buffer, uint32_t timeoutMilliseconds) = 0;
    virtual bool Cancel() = 0;  // ends a pending transfer; true when there was none
    virtual bool Close() = 0;
    virtual uint32_t LastError() const = 0;
};

// The USB printers of this machine. Any thread.
class UsbSystem {
public:
    enum class Direction { kWrite, kRead };

    virtual ~UsbSystem() = default;

    // The print-system and USB enumeration keys under the local-machine hive; a trailing backslash is allowed.
    virtual std::optional<std::vector<std::string>> Subkeys(const std::string& key) = 0;  // none: cannot be opened
    virtual bool KeyExists(const std::string& key) = 0;
    virtual std::optional<std::string> Text(const std::string& key, const std::string& value) = 0;

    // The device paths of the present interfaces of the printer class,
    // "\\?\usb#vid_xxxx&pid_yyyy#instance#{class}".
    virtual std::vector<std::string> PresentInterfaces() = 0;
    virtual bool IsUsable(const std::string& devicePath) = 0;  // it can be opened
    // Path: a device path and "\PIPE01\" for writing, "\PIPE00\" for reading. Null when it cannot be opened; error is
    // then the system's number.
    virtual std::unique_ptr<UsbPipe> OpenPipe(const std::string& path, Direction direction, uint32_t& error) = 0;
};

// On POSIX a device is a file to read and write: a printer device, a terminal or a stream socket in the file system.
// The registry file may say what is there: the keys named above, and below
// SYSTEM\CurrentControlSet\Control\DeviceClasses\{class} one key an interface, its device path with "##?#" for "\\?\"
// as Windows writes it, with the path of the file as its value DeviceNode (REG_SZ). Where it does not, the kernel's
// list of USB printers is presented under the same keys: printer name = product name, or "lp0", "lp1" and so on.
UsbSystem& SystemUsb();

}  // namespace marbex::platform
