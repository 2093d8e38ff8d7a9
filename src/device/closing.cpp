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
// - An operation that is under way on another thread ends by itself, now that no answer is awaited. Its event handler
//   may be waiting for this very call, though; so a close waits a few seconds for it and then leaves the rest to it.
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
constexpr uint32_t kOperationsOfOthersMilliseconds = 3000;

}  // namespace

PrinterDevice::OperationScope::OperationScope(PrinterDevice& device) : device_(device)
{
    device_.calls_.Enter();
}

PrinterDevice::OperationScope::~OperationScope()
{
    if (device_.calls_.Leave()) device_.FinishClosing();
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
    const int32_t released = Claimed.load() != 0 ? ReleaseDevice() : opos::OPOS_SUCCESS;
    BeginClosing();
    if (!OperationWaitsOnThisThread()) Wait(calls_.AllEnded(), kOperationsOfOthersMilliseconds);
    if (!calls_.MayCloseNow()) return released;
    return FinishClosing() ? released : opos::OPOS_E_TIMEOUT;
}

void PrinterDevice::BeginClosing()
{
    closing_ = true;
    Events.BeginClosing();
    Spooler.BeginClosing();
    PrinterEncoder.RequestStop(true);
}

bool PrinterDevice::FinishClosing()
{
    CloseComponents();
    ControlObject_.Detach();
    const bool printed = !Spooler.DroppedOutput();
    if (!printed) {
        LogWrite("[%s] CloseService Queued output was dropped", tag_);
        SetErrorCode(opos::OPOS_E_TIMEOUT, 0);
    }
    support::LogClose();
    BecomeClosed();
    return printed;
}

void PrinterDevice::CloseComponents()
{
    calls_.Enter();  // a wait below runs messages
    Spooler.Close();
    Events.Close();
    ClosePort();
    {
        platform::LockHold hold(claimLock_);
        const bool held = Claimed.exchange(0) != 0;
        DeviceEnabled = 0;
        if (ClaimSemaphore && held) ClaimSemaphore->Release();  // for a thread that waits to claim
        ClaimSemaphore.reset();
    }
    static_cast<void>(calls_.Leave());
}

void PrinterDevice::BecomeClosed()
{
    activity_.Close();
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
