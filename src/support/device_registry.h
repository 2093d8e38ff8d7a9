#pragma once

#include <string>
#include <vector>

#include "platform/registry.h"
#include "support/device_profile.h"

namespace marbex::support {

inline constexpr const char* kServiceKey = "SOFTWARE\\OLEforRetail\\ServiceOPOS\\POSPrinter";
inline constexpr const char* kPrinterProgId = "Service.MarbexOposPrnDriver";

// The device entries of this service object under the service key, and the profile of the selected one. Names compare
// without regard to case. Used on one thread at a time; takes no lock.
class CDeviceRegistry {
public:
    explicit CDeviceRegistry(platform::Registry& registry = platform::SystemRegistry());
    virtual ~CDeviceRegistry() = default;

    virtual void SetServiceKey(const std::string& Path);
    virtual bool SelectDevice(const std::string& Name);  // false, and nothing changes, when there is no such device
    virtual bool GetDeviceName(std::size_t Index, std::string& Name) const;
    virtual void EnumerateDevices();
    virtual bool ServiceKeyExists() const;
    virtual bool CreateDeviceKey();                            // of the selected device; false without one
    virtual bool DeviceExists(const std::string& Name) const;  // in the list as enumerated last
    virtual bool CreateNewDevice(std::string& Name);  // "Marbex POS Printer", or the first free "Marbex POS Printer(n)"
    virtual bool DeleteDevice(const std::string& Name);
    virtual void SetDefaults(DeviceProfileStruct& Profile) const;
    virtual bool ReadProfile(DeviceProfileStruct& Profile) const;  // false only when a key cannot be opened
    virtual bool WriteProfile(const DeviceProfileStruct& Profile);
    virtual bool DeleteLogicalNames();

private:
    std::string KeyOf(const std::string& device) const;
    void Select(const std::string& device);

    platform::Registry& registry_;
    std::string selectedName_;
    std::string serviceKey_;
    std::string devicePath_;
    std::vector<std::string> deviceNames_;
};

}  // namespace marbex::support
