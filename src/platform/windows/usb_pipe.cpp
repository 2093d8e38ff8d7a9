#include "platform/windows/usb_pipe.h"

#include <windows.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "platform/windows/device_errors.h"
#include "platform/windows/overlapped_transfer.h"

namespace marbex::platform {

namespace {

// A packet that is longer than what was asked for makes the transfer fail, and is lost with it. Whole numbers of the
// largest bulk packet (USB 3.2, 9.6.6) are asked for, therefore.
constexpr std::size_t kLargestPacket = 1024;

class OverlappedPipe final : public UsbPipe {
public:
    explicit OverlappedPipe(UniqueHandle file) : file_(std::move(file)) {}
    OverlappedPipe(const OverlappedPipe&) = delete;
    OverlappedPipe& operator=(const OverlappedPipe&) = delete;
    ~OverlappedPipe() override { Cancel(); }

    void HeedStop(const StopSignal& stop) override { stop_ = &stop; }

    UsbTransfer Write(std::span<const std::byte> bytes, uint32_t timeoutMilliseconds) override
    {
        auto transfer = Begin();
        if (transfer == nullptr) return {UsbStatus::kNoResult, 0};
        transfer->bytes.assign(bytes.begin(), bytes.end());
        if (!transfer->Write(file_.Get())) return Failed(GetLastError());
        return Finish(std::move(transfer), TransferLimit(timeoutMilliseconds, *stop_));
    }

    UsbTransfer Read(std::span<std::byte> buffer, uint32_t timeoutMilliseconds) override
    {
        return ReadWithin(buffer, TransferLimit(timeoutMilliseconds, *stop_));
    }

    UsbTransfer ReadUntilStopped(std::span<std::byte> buffer, uint32_t timeoutMilliseconds) override
    {
        return ReadWithin(buffer, TransferLimit(timeoutMilliseconds, *stop_, TransferLimit::AtStop::kEnd));
    }

    // What a late transfer brings is dropped with it: the answer to a question that was given up must not be taken for
    // that to the next one.
    bool Cancel() override
    {
        if (pending_ == nullptr) return true;
        DWORD error = 0;
        if (pending_->Cancel(file_.Get(), error)) {
            pending_.reset();
            return true;
        }
        lastError_ = error;
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
    std::unique_ptr<OverlappedTransfer> Begin()
    {
        if (!Cancel()) return nullptr;
        auto transfer = OverlappedTransfer::New();
        if (transfer == nullptr) lastError_ = GetLastError();
        return transfer;
    }

    UsbTransfer ReadWithin(std::span<std::byte> buffer, const TransferLimit& limit)
    {
        if (!surplus_.empty()) return {UsbStatus::kDone, TakeSurplus(buffer)};
        auto transfer = Begin();
        if (transfer == nullptr) return {UsbStatus::kNoResult, 0};
        transfer->bytes.resize((buffer.size() + kLargestPacket - 1) / kLargestPacket * kLargestPacket);
        if (!transfer->Read(file_.Get())) return Failed(GetLastError());
        const UsbTransfer got = Finish(std::move(transfer), limit, &surplus_);
        return got.status == UsbStatus::kDone ? UsbTransfer{UsbStatus::kDone, TakeSurplus(buffer)} : got;
    }

    // What has come is put into received.
    UsbTransfer Finish(std::unique_ptr<OverlappedTransfer> transfer, TransferLimit limit,
                       std::vector<std::byte>* received = nullptr)
    {
        const DWORD waited = transfer->WaitWithin(limit);
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
    const StopSignal* stop_ = &kNeverStopped;
    std::unique_ptr<OverlappedTransfer> pending_;  // one whose caller has given up
    std::vector<std::byte> surplus_;               // received, and not asked for yet
    uint32_t lastError_ = 0;
};

}  // namespace

std::unique_ptr<UsbPipe> NewOverlappedPipe(UniqueHandle file)
{
    return std::make_unique<OverlappedPipe>(std::move(file));
}

}  // namespace marbex::platform
