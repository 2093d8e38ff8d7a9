#pragma once

// The state that a process has once, shared by all service objects in it: the current printer device, its model, and
// where events go. (The service log keeps its own switch in support/, the port table its own list in comm/.)

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "device/posprinter_device.h"
#include "platform/lock.h"

namespace marbex::device {

class ProcessState {
public:
    // The device that the last successful model selection made; null at start. The companions read it on every call.
    std::shared_ptr<POSPrinterDevice> CurrentDevice() const;
    void SetCurrentDevice(std::shared_ptr<POSPrinterDevice> device);

    // The last device whose service was released while one of its operations waited for the application; null once it
    // is freed.
    std::shared_ptr<POSPrinterDevice> ClosingDevice() const;
    void SetClosingDevice(const std::shared_ptr<POSPrinterDevice>& device);

    std::atomic<uint32_t> CurrentModelIndex{0};  // 0 to 17

    // How many fronts of the POSPrinter class exist. The first one starts from no device and model index 0.
    std::atomic<int32_t> Fronts{0};

    // Set by the last OpenService or OpenService_NET of any device; read at every event delivery.
    bool NetMode() const;
    std::string EventFileName() const;
    void SetEventDelivery(bool netMode, const std::string& eventFileName);  // the name is kept as it is when not NET

    // How many objects of the server exist, fronts, companions and devices, and how often it is held otherwise, by
    // class factories and LockServer. It may be unloaded at 0.
    std::atomic<int32_t> ServerLocks{0};

private:
    mutable platform::Lock lock_;
    std::shared_ptr<POSPrinterDevice> currentDevice_ MARBEX_GUARDED_BY(lock_);
    std::weak_ptr<POSPrinterDevice> closingDevice_ MARBEX_GUARDED_BY(lock_);
    bool netMode_ MARBEX_GUARDED_BY(lock_) = false;
    std::string eventFileName_ MARBEX_GUARDED_BY(lock_);
};

ProcessState& TheProcess();

// Makes the device object of a model, by its upper-cased name ("TALIS ETHERNET"); null when no model has that name.
std::shared_ptr<POSPrinterDevice> CreateModelDevice(std::string_view modelName);

// For tests of the server: what CreateModelDevice calls instead; an empty function restores it.
using DeviceFactory = std::function<std::shared_ptr<POSPrinterDevice>(std::string_view modelName)>;
void ReplaceDeviceFactory(DeviceFactory factory);

}  // namespace marbex::device
