#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "platform/lock.h"
#include "platform/posix/unique_fd.h"
#include "platform/transfer_limit.h"
#include "platform/usb.h"

namespace marbex::platform {

// The file behind a USB printer, opened once for both pipes: the kernel's printer device allows no second opening, and
// two connections to a socket would be two printers. The two pipes may be used by two threads.
class UsbNode {
public:
    // The node of a path, shared with whoever has it open. Null when it cannot be opened; error is then errno's.
    static std::shared_ptr<UsbNode> Open(const std::string& path, uint32_t& error);
    // Whether Open would find something; a socket is not connected to, for the printer would take that for a caller.
    static bool IsUsable(const std::string& path);

    UsbTransfer Write(std::span<const std::byte> bytes, TransferLimit limit, uint32_t& error);
    UsbTransfer Read(std::span<std::byte> buffer, const TransferLimit& limit, uint32_t& error);
    // Ends a write that is still on its way.
    bool CancelWrite(uint32_t& error);

private:
    enum class Kind { kPrinterDevice, kTerminal, kSocket };

    UsbNode(std::string path, Kind kind, UniqueFd descriptor);
    static UniqueFd OpenFile(const std::string& path, Kind& kind);
    UsbTransfer WriteWithin(std::span<const std::byte> bytes, TransferLimit& limit, uint32_t& error);
    UsbTransfer Failed(int code, uint32_t& error);
    std::shared_ptr<UniqueFd> Descriptor();

    const std::string path_;
    const Kind kind_;
    std::atomic<bool> gone_ = false;
    std::atomic<bool> writePending_ = false;  // the last write ran out of time
    Lock lock_;
    std::shared_ptr<UniqueFd> descriptor_ MARBEX_GUARDED_BY(lock_);
};

}  // namespace marbex::platform
