#pragma once

// Transfers that the system goes on with after their caller has given up.
//
// From the moment a transfer is started until the system says that it has ended, the system writes into its OVERLAPPED
// and reads or fills its bytes. All of that is therefore one object on the heap, with a copy of the caller's bytes, and
// it is destroyed only after the end. A transfer that is cancelled ends at once, unless a driver is at fault; then the
// object is left to it for good, for a small leak is better than memory that changes under its next owner.

#include <windows.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

#include "platform/transfer_limit.h"
#include "platform/windows/unique_handle.h"

namespace marbex::platform {

struct OverlappedTransfer {
    UniqueHandle ended{CreateEventA(nullptr, TRUE, FALSE, nullptr)};
    OVERLAPPED overlapped{};
    std::vector<std::byte> bytes;

    // Null, with the system's error in GetLastError, when there is no event to be had.
    static std::unique_ptr<OverlappedTransfer> New()
    {
        auto transfer = std::make_unique<OverlappedTransfer>();
        transfer->overlapped.hEvent = transfer->ended.Get();
        return transfer->ended ? std::move(transfer) : nullptr;
    }

    // Starts it. False, with the system's error in GetLastError, when it has failed already.
    bool Write(HANDLE file)
    {
        return WriteFile(file, bytes.data(), Size(), nullptr, &overlapped) != FALSE ||
               GetLastError() == ERROR_IO_PENDING;
    }
    bool Read(HANDLE file)
    {
        return ReadFile(file, bytes.data(), Size(), nullptr, &overlapped) != FALSE ||
               GetLastError() == ERROR_IO_PENDING;
    }

    // WAIT_OBJECT_0 when it has ended, WAIT_TIMEOUT when the limit came first, WAIT_FAILED. Between the waits, look may
    // find out how far it is.
    DWORD WaitWithin(TransferLimit& limit, const std::function<void()>& look = {}) const
    {
        for (;;) {
            const uint32_t slice = limit.Slice();
            const DWORD waited = WaitForSingleObject(ended.Get(), slice);
            if (waited != WAIT_TIMEOUT || slice == 0) return waited;
            if (look) look();
        }
    }

    // Ends it, whichever thread began it. False, with the error, when it does not end.
    bool Cancel(HANDLE file, DWORD& error)
    {
        CancelIoEx(file, &overlapped);  // it may have ended already
        const DWORD waited = WaitForSingleObject(ended.Get(), kCancelPatience);
        if (waited != WAIT_OBJECT_0) error = waited == WAIT_FAILED ? GetLastError() : waited;
        return waited == WAIT_OBJECT_0;
    }

private:
    static constexpr DWORD kCancelPatience = 2000;  // ms

    DWORD Size() const { return static_cast<DWORD>(std::min<std::size_t>(bytes.size(), 0x7FFFFFFF)); }
};

}  // namespace marbex::platform
