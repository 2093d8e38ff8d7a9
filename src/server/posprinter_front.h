#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "device/posprinter_device.h"
#include "platform/automation.h"
#include "support/device_profile.h"

namespace marbex::server {

// The POSPrinter service object. It owns no printer logic: opening selects the model that the profile names and makes
// its device, and every other call goes to that device. What is here is what the front adds of its own; the rest is
// forwarded by the rows of the dispatch table (posprinter_methods.cpp).
//
// A process has one current printer device. A front forwards to the device it made, and only while that is the current
// one; otherwise it answers as if there were none: 106 (OPOS_E_ILLEGAL), an empty string, or nothing.
//
// Called on the thread of the control object; takes no lock. Calls may be nested: the application may call the service,
// and release it, from inside an event handler that runs while a call waits.
class MarbexOposPrnDriver {
public:
    MarbexOposPrnDriver();
    ~MarbexOposPrnDriver();
    MarbexOposPrnDriver(const MarbexOposPrnDriver&) = delete;
    MarbexOposPrnDriver& operator=(const MarbexOposPrnDriver&) = delete;

    // The device to forward to; null when there is none. Whoever calls it holds the device for the duration of the
    // call.
    std::shared_ptr<device::POSPrinterDevice> Device() const;

    int32_t OpenService(const std::string& DeviceClass, const std::string& DeviceName, IDispatch* Dispatch);
    int32_t OpenService_NET(const std::string& DeviceClass, const std::string& DeviceName,
                            const std::string& EventFileName);
    int32_t CloseService();
    int32_t Close();
    int32_t CutPaper(int32_t Percentage);
    std::optional<std::string> GetPropertyString(int32_t PropIndex);
    int32_t DirectIO_NET(int32_t Command, int32_t Data, const std::u16string& String);
    std::optional<std::string> RetrieveStatistics_NET(const std::string& StatisticsBuffer);

    // Closes the device at once, even when calls of it are still under way on this thread.
    void LastReferenceGone() noexcept;

private:
    int32_t SelectModelAndOpen(const std::string& deviceClass, const std::string& deviceName,
                               const std::function<int32_t(device::POSPrinterDevice&)>& open);

    std::string ModelName;
    support::DeviceProfileStruct Profile{};
    std::weak_ptr<device::POSPrinterDevice> device_;  // the process holds it while it is current
};

}  // namespace marbex::server
