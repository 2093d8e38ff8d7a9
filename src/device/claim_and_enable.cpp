// Claiming, releasing, enabling and freezing.

#include "device/printer_device.h"
#include "opos/common.h"
#include "opos/printer.h"
#include "platform/memory.h"
#include "support/service_log.h"

namespace marbex::device {

using support::LogWrite;

int32_t PrinterDevice::ClaimDevice(int32_t Timeout)
{
    LogWrite("[%s] ClaimDevice Begin", tag_);
    int32_t result = opos::OPOS_E_TIMEOUT;
    SetErrorCode(result, 0);
    if (Claimed.load() != 0 && !IsClosed()) {
        result = Refuse(opos::OPOS_E_CLAIMED);
    } else if (CurrentState() == opos::OPOS_S_IDLE) {
        std::shared_ptr<platform::Semaphore> semaphore;
        {
            platform::LockHold hold(claimLock_);
            semaphore = ClaimSemaphore;
        }
        uint32_t milliseconds = 0;
        if (Timeout == opos::OPOS_FOREVER) {
            milliseconds = platform::kForever;
        } else if (Timeout > 0) {
            milliseconds = static_cast<uint32_t>(Timeout);
        }
        if (semaphore && platform::WaitForOne(*semaphore, milliseconds).Obtained()) {
            platform::LockHold hold(claimLock_);
            if (IsClosed() || semaphore != ClaimSemaphore) {
                semaphore->Release();  // closed while this thread waited; the next one that waits must learn of it too
            } else {
                Claimed = 1;
                DeviceEnabled = 0;
                result = opos::OPOS_SUCCESS;
                SetErrorCode(result, 0);
            }
        }
    }
    LogWrite("[%s] ClaimDevice End", tag_);
    return result;
}

int32_t PrinterDevice::ReleaseDevice()
{
    LogWrite("[%s] ReleaseDevice Begin", tag_);
    int32_t result = opos::OPOS_E_TIMEOUT;
    SetErrorCode(result, 0);
    if (Claimed.load() == 0 || IsClosed()) {
        result = Refuse(opos::OPOS_E_ILLEGAL);
    } else if (CurrentState() == opos::OPOS_S_IDLE) {
        {
            platform::LockHold hold(claimLock_);
            const bool held = Claimed.exchange(0) != 0;
            DeviceEnabled = 0;
            if (ClaimSemaphore && held) ClaimSemaphore->Release();
        }
        // An error that has just come up, since the look at the state, is still to be answered.
        platform::WaitForMemory(clock_, [this] { Events.Clear(events::CEventHandler::ErrorEvents::kKept); });
        result = opos::OPOS_SUCCESS;
        SetErrorCode(result, 0);
    }
    LogWrite("[%s] ReleaseDevice End", tag_);
    return result;
}

int32_t PrinterDevice::Claim(int32_t Timeout)
{
    LogWrite("[%s] Claim Redirected", tag_);
    return ClaimDevice(Timeout);
}

int32_t PrinterDevice::Close()
{
    LogWrite("[%s] Close Redirected", tag_);
    const int32_t result = CloseService();
    CharSets.clear();
    return result;
}

int32_t PrinterDevice::Release()
{
    LogWrite("[%s] Release Redirected", tag_);
    return ReleaseDevice();
}

void PrinterDevice::SetDeviceEnabledState(bool Enabled)
{
    LogWrite("[%s] SetDeviceEnabledState Begin (%d)", tag_, Enabled ? 1 : 0);
    if (Enabled != (DeviceEnabled.load() != 0)) {
        if (Enabled && Claimed.load() == 0) {
            SetErrorCode(opos::OPOS_E_NOTCLAIMED, 0);
            return;
        }
        DeviceEnabled = Enabled ? 1 : 0;
        if (Enabled) Events.FireStatusUpdateEvent(opos::PTR_SUE_IDLE);
    }
    LogWrite("[%s] SetDeviceEnabledState End", tag_);
}

int32_t PrinterDevice::COFreezeEvents(bool Freeze)
{
    LogWrite("[%s] COFreezeEvents Begin", tag_);
    const int32_t result = IsClosed() ? opos::OPOS_E_CLOSED : opos::OPOS_SUCCESS;
    if (result == opos::OPOS_SUCCESS) {
        COFreezeEvents_ = Freeze;
        Events.COFreezeEvents(Freeze);
    }
    SetErrorCode(result, 0);
    LogWrite("[%s] COFreezeEvents End", tag_);
    return result;
}

void PrinterDevice::DoFreezeEvents(bool Freeze)
{
    LogWrite("[%s] DoFreezeEvents Begin (%d)", tag_, Freeze ? 1 : 0);
    if (IsClosed()) {
        SetErrorCode(opos::OPOS_E_CLOSED, 0);
    } else {
        FreezeEvents = Freeze ? 1 : 0;
        Events.FreezeEvents(Freeze);
    }
    LogWrite("[%s] DoFreezeEvents End", tag_);
}

void PrinterDevice::SetAsyncMode(bool Async)
{
    LogWrite("[%s] SetAsyncMode Begin (%d)", tag_, Async ? 1 : 0);
    if (IsClosed()) {
        SetErrorCode(opos::OPOS_E_CLOSED, 0);
    } else {
        AsyncMode = Async ? 1 : 0;
        if (Async) {
            Spooler.SetAsyncMode();
        } else {
            Spooler.SetSyncMode();
        }
    }
    LogWrite("[%s] SetAsyncMode End", tag_);
}

void PrinterDevice::SetFlagWhenIdle(bool Flag)
{
    LogWrite("[%s] SetFlagWhenIdle Begin (%d)", tag_, Flag ? 1 : 0);
    if (IsClosed()) {
        SetErrorCode(opos::OPOS_E_CLOSED, 0);
    } else {
        FlagWhenIdle = Flag ? 1 : 0;
    }
    LogWrite("[%s] SetFlagWhenIdle End", tag_);
}

}  // namespace marbex::device
