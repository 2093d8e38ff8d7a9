// Closing the service, whenever and from wherever it is asked for.
//
// - The device first stops waiting for the application: it answers as closed, and every error answer, awaited or to
//   come, is CLEAR. From then on the spool thread ends after the healthy part of its queue and one failing transfer at
//   most, and no operation waits for an answer any more.
// - While the window thread waits for the spool thread it runs its messages, since the spool thread may be waiting for
//   the delivery of something that was posted before.
// - An application may close the service from inside an event handler while an operation of the same device waits
//   further up the same stack. Freeing the spooler under it would be wrong and waiting for it would be waiting for
//   ourselves; so the nested call does the first half, and the waiting operation, which ends now, does the rest when it
//   unwinds.
// - A CloseService inside a CloseService does nothing.
// - On another thread than the window's the same steps wait plainly.

#include "device/printer_device.h"
#include "device/process_state.h"
#include "opos/common.h"
#include "support/service_log.h"

namespace marbex::device {

using support::LogWrite;

namespace {

// How often a wait for the printer mutex looks at what may end it.
constexpr uint32_t kLookMilliseconds = 50;
constexpr uint64_t kFrozenLimitMilliseconds = 30000;

}  // namespace

PrinterDevice::OperationScope::OperationScope(PrinterDevice& device)
    : device_(device), counted_(device.Events.IsWindowThread())
{
    if (counted_) ++device_.windowOperations_;
}

PrinterDevice::OperationScope::~OperationScope()
{
    if (counted_ && --device_.windowOperations_ == 0 && device_.closeDeferred_.exchange(false)) {
        device_.FinishClosing();
    }
}

bool PrinterDevice::OperationWaitsOnThisThread() const
{
    return windowOperations_.load() > 0 && Events.IsWindowThread();
}

int32_t PrinterDevice::CloseService()
{
    if (closeRunning_.exchange(true)) return ResultCode.load();
    LogWrite("[%s] CloseService Begin", tag_);
    SetErrorCode(0, 0);
    if (State.load() == opos::OPOS_S_CLOSED) {
        closeRunning_ = false;
        return ResultCode.load();
    }
    if (Claimed.load() != 0) ReleaseDevice();
    const int32_t result = ResultCode.load();
    BeginClosing();
    if (OperationWaitsOnThisThread()) {
        closeDeferred_ = true;
        return result;
    }
    FinishClosing();
    return result;
}

void PrinterDevice::BeginClosing()
{
    closing_ = true;
    Events.BeginClosing();
    Spooler.BeginClosing();
    PrinterEncoder.RequestStop(true);
}

void PrinterDevice::FinishClosing()
{
    CloseComponents();
    ControlObject_.Detach();
    support::LogClose();
    BecomeClosed();
}

void PrinterDevice::CloseComponents()
{
    const bool windowThread = Events.IsWindowThread();
    if (windowThread) ++windowOperations_;  // a wait below runs messages
    Spooler.Close();
    Events.Close();
    if (windowThread) --windowOperations_;
    ClosePort();
    {
        platform::LockHold hold(claimLock_);
        if (ClaimSemaphore && Claimed.load() != 0) ClaimSemaphore->Release();  // for a thread that waits to claim
        ClaimSemaphore.reset();
        Claimed = 0;
    }
    DeviceEnabled = 0;
}

void PrinterDevice::BecomeClosed()
{
    State = opos::OPOS_S_CLOSED;
    closing_ = false;
    closeRunning_ = false;
}

bool PrinterDevice::AcquirePrinter(platform::Mutex& printer)
{
    if (!Events.IsWindowThread()) return platform::WaitForOne(printer, platform::kForever).Obtained();
    uint64_t frozenMilliseconds = 0;
    uint64_t lookedAt = clock_.Milliseconds();
    for (;;) {
        if (platform::WaitForOneRunningMessages(printer, kLookMilliseconds).Obtained()) return true;
        if (closing_.load()) return false;
        const uint64_t now = clock_.Milliseconds();
        if (Events.ErrorAnswerAwaitedElsewhere()) {
            // The answer comes from this thread, and not before the handler that is running on it returns.
            if (Events.DeliversOnCallingThread()) return false;
            if (Events.IsFrozen()) frozenMilliseconds += now - lookedAt;
            if (frozenMilliseconds >= kFrozenLimitMilliseconds) return false;
        }
        lookedAt = now;
    }
}

bool PrinterDevice::Wait(platform::WaitObject& object, uint32_t timeout)
{
    if (Events.IsWindowThread()) return platform::WaitForOneRunningMessages(object, timeout).Obtained();
    return platform::WaitForOne(object, timeout).Obtained();
}

}  // namespace marbex::device
