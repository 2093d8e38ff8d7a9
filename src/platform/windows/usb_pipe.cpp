// Transfers that the system goes on with after their caller has given up.
//
// From the moment a transfer is started until the system says that it has ended, the system writes into its OVERLAPPED
// and reads or fills its bytes. All of that is therefore one object on the heap, with a copy of the caller's bytes, and
// it is destroyed only after the end. A transfer that is cancelled ends at once, unless a driver is at fault; then the
// object is left to it for good, for a small leak is better than memory that changes under its next owner.

#include "platform/windows/usb_pipe.h"

#include <windows.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "platform/windows/device_errors.h"

namespace marbex::platform {

namespace {

constexpr DWORD kCancelPatience = 2000;  // ms

// A packet that is longer than what was asked for makes the transfer fail, and is lost with it. Whole numbers of the
// largest bulk packet (USB 3.2, 9.6.6) are asked for, therefore.
constexpr std::size_t kLargestPacket = 1024;

struct Transfer {
    Transfer() : ended(CreateEventA(nullptr, TRUE, FALSE, nullptr)) { overlapped.hEvent = ended.Get(); }

    UniqueHandle ended;
    OVERLAPPED overlapped{};
    std::vector<std::byte> bytes;
};

DWORD Clamped(std::size_t size)
{
    return static_cast<DWORD>(std::min<std::size_t>(size, 0x7FFFFFFF));
}

class OverlappedPipe final : public UsbPipe {
public:
    explicit OverlappedPipe(UniqueHandle file) : file_(std::move(file)) {}
    OverlappedPipe(const OverlappedPipe&) = delete;
    OverlappedPipe& operator=(const OverlappedPipe&) = delete;
    ~OverlappedPipe() override { Cancel(); }

    UsbTransfer Write(std::span<const std::byte> bytes, uint32_t timeoutMilliseconds) override
    {
        std::unique_ptr<Transfer> transfer = Begin();
        if (transfer == nullptr) return {UsbStatus::kNoResult, 0};
        transfer->bytes.assign(bytes.begin(), bytes.end());
        const BOOL done = WriteFile(file_.Get(), transfer->bytes.data(), Clamped(transfer->bytes.size()), nullptr,
                                    &transfer->overlapped);
        return Finish(std::move(transfer), done, timeoutMilliseconds);
    }

    UsbTransfer Read(std::span<std::byte> buffer, uint32_t timeoutMilliseconds) override
    {
        if (!surplus_.empty()) return {UsbStatus::kDone, TakeSurplus(buffer)};
        std::unique_ptr<Transfer> transfer = Begin();
        if (transfer == nullptr) return {UsbStatus::kNoResult, 0};
        transfer->bytes.resize((buffer.size() + kLargestPacket - 1) / kLargestPacket * kLargestPacket);
        const BOOL done = ReadFile(file_.Get(), transfer->bytes.data(), Clamped(transfer->bytes.size()), nullptr,
                                   &transfer->overlapped);
        const UsbTransfer got = Finish(std::move(transfer), done, timeoutMilliseconds, &surplus_);
        return got.status == UsbStatus::kDone ? UsbTransfer{UsbStatus::kDone, TakeSurplus(buffer)} : got;
    }

    // What a late transfer brings is dropped with it: the answer to a question that was given up must not be taken for
    // that to the next one.
    bool Cancel() override
    {
        if (pending_ == nullptr) return true;
        // Of the whole process, not only of the thread that began it. It may have ended already.
        CancelIoEx(file_.Get(), &pending_->overlapped);
        const DWORD waited = WaitForSingleObject(pending_->ended.Get(), kCancelPatience);
        if (waited == WAIT_OBJECT_0) {
            pending_.reset();
            return true;
        }
        lastError_ = waited == WAIT_FAILED ? GetLastError() : waited;
        static_cast<void>(pending_.release());
        return false;
    }

    bool Close() override
    {
        if (!file_) {
            lastError_ = ERROR_INVALID_HANDLE;
            return false;
        }
        const bool cancelled = Cancel();
        if (file_.Close()) return cancelled;
        lastError_ = GetLastError();
        return false;
    }

    uint32_t LastError() const override { return lastError_; }

private:
    // A new transfer; an older one that is still pending is ended first. Null, with the error told, when that fails.
    std::unique_ptr<Transfer> Begin()
    {
        if (!Cancel()) return nullptr;
        auto transfer = std::make_unique<Transfer>();
        if (transfer->ended) return transfer;
        lastError_ = GetLastError();
        return nullptr;
    }

    // What has come is put into received.
    UsbTransfer Finish(std::unique_ptr<Transfer> transfer, BOOL done, uint32_t timeout,
                       std::vector<std::byte>* received = nullptr)
    {
        if (done == FALSE && GetLastError() != ERROR_IO_PENDING) return Failed(GetLastError());
        const DWORD waited = WaitForSingleObject(transfer->ended.Get(), std::min<DWORD>(timeout, INFINITE - 1));
        if (waited != WAIT_OBJECT_0) {
            lastError_ = waited == WAIT_FAILED ? GetLastError() : waited;
            pending_ = std::move(transfer);
            return {waited == WAIT_FAILED ? UsbStatus::kWaitFailed : UsbStatus::kTimedOut, 0};
        }
        DWORD count = 0;
        if (GetOverlappedResult(file_.Get(), &transfer->overlapped, &count, FALSE) == FALSE)
            return Failed(GetLastError());
        if (received != nullptr) {
            *received = std::move(transfer->bytes);
            received->resize(count);
        }
        return {UsbStatus::kDone, count};
    }

    std::size_t TakeSurplus(std::span<std::byte> buffer)
    {
        const auto count = static_cast<std::ptrdiff_t>(std::min(surplus_.size(), buffer.size()));
        std::copy_n(surplus_.begin(), count, buffer.begin());
        surplus_.erase(surplus_.begin(), surplus_.begin() + count);
        return static_cast<std::size_t>(count);
    }

    UsbTransfer Failed(DWORD error)
    {
        lastError_ = error;
        return {IsDeviceGone(error) ? UsbStatus::kGone : UsbStatus::kNoResult, 0};
    }

    UniqueHandle file_;
    std::unique_ptr<Transfer> pending_;  // one whose caller has given up
    std::vector<std::byte> surplus_;     // received, and not asked for yet
    uint32_t lastError_ = 0;
};

}  // namespace

std::unique_ptr<UsbPipe> NewOverlappedPipe(UniqueHandle file)
{
    return std::make_unique<OverlappedPipe>(std::move(file));
}

}  // namespace marbex::platform
