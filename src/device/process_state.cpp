#include "device/process_state.h"

#include <utility>

namespace marbex::device {

std::shared_ptr<POSPrinterDevice> ProcessState::CurrentDevice() const
{
    platform::LockHold hold(lock_);
    return currentDevice_;
}

void ProcessState::SetCurrentDevice(std::shared_ptr<POSPrinterDevice> device)
{
    {
        platform::LockHold hold(lock_);
        currentDevice_.swap(device);
    }
    // The old device's last reference may go here, outside the lock: its destructor is long.
}

std::shared_ptr<POSPrinterDevice> ProcessState::ClosingDevice() const
{
    platform::LockHold hold(lock_);
    return closingDevice_.lock();
}

void ProcessState::SetClosingDevice(const std::shared_ptr<POSPrinterDevice>& device)
{
    platform::LockHold hold(lock_);
    closingDevice_ = device;
}

bool ProcessState::NetMode() const
{
    platform::LockHold hold(lock_);
    return netMode_;
}

std::string ProcessState::EventFileName() const
{
    platform::LockHold hold(lock_);
    return eventFileName_;
}

void ProcessState::SetEventDelivery(bool netMode, const std::string& eventFileName)
{
    platform::LockHold hold(lock_);
    netMode_ = netMode;
    if (netMode) eventFileName_ = eventFileName;
}

ProcessState& TheProcess()
{
    // Never destroyed: a thread of the application may still call while the process ends.
    static auto& state = *new ProcessState;
    return state;
}

}  // namespace marbex::device
