// How an installed printer is tied to a USB device, and the device to one of the present interfaces.

#include <algorithm>
#include <cctype>
#include <string_view>

#include "comm/usb_transport.h"

namespace marbex::comm {

namespace {

constexpr const char* kPrintersKey = "SYSTEM\\CurrentControlSet\\Control\\Print\\Printers\\";
constexpr const char* kEnumerationKey = "SYSTEM\\CurrentControlSet\\Enum\\USB\\";
constexpr const char* kVendor = "F055";  // the printer maker's
constexpr std::size_t kLargestIndex = 127;
constexpr std::size_t kPathPrefixLength = 8;  // "\\?\usb#"

// Names of devices, in keys and in paths: Vid_xxxx&Pid_yyyy.
constexpr std::size_t kVidAt = 4;
constexpr std::size_t kPidAt = 13;
constexpr std::size_t kIdLength = 4;
constexpr std::size_t kShortestDeviceName = 17;

bool EqualIgnoringCase(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](unsigned char x, unsigned char y) { return std::tolower(x) == std::tolower(y); });
}

// Cuts the text up to the next separator from the front of rest.
std::string_view TakeUpTo(std::string_view& rest, char separator)
{
    const std::string_view part = rest.substr(0, rest.find(separator));
    rest.remove_prefix(std::min(rest.size(), part.size() + 1));
    return part;
}

}  // namespace

uint32_t CNuComUsb::InitPrinter(const char* printerName)
{
    const OperationLog log(log_, "CNuComUsb::InitPrinter - ");
    initialised_ = true;
    log.Start();
    log.Progress("Try to init USB printer with name %s \n", printerName);
    if (open_) return log.Fail(301, "Init failed: USB device already opened\n");
    if (const uint32_t result = IdentifyPrinter(log, printerName); result != 0) {
        initialised_ = false;
        return result;
    }
    log.Progress("VID=%s , PID=%s , ParentPrefixID= %s for printer %s\n", vid_.c_str(), pid_.c_str(),
                 parentIdPrefix_.c_str(), printerName);
    return log.End();
}

uint32_t CNuComUsb::IdentifyPrinter(const OperationLog& log, const std::string& printerName)
{
    const auto printers = system_.Subkeys(kPrintersKey);
    if (!printers) {
        log.Error("Error opening registry key: %s \n", kPrintersKey);
        return 1;
    }
    if (std::find(printers->begin(), printers->end(), printerName) == printers->end()) {
        log.Error("A printer with the name %s has not found in the registry %s \n", printerName.c_str(), kPrintersKey);
        return 302;
    }
    log.Progress("Try to init printer %s\n", printerName.c_str());
    std::string prefix;
    if (ExtractParentPrefixID(printerName, prefix) == 0)
        return log.Fail(325, "Error extracting ParentPrefixID from DeviceInstanceID \n");
    std::string deviceKey;
    if (const uint32_t result = FindDeviceKey(log, prefix, deviceKey); result != 0) return result;
    if (deviceKey.size() < kShortestDeviceName) {
        log.Error("Impossible to extract VID and PID from registry name %s \n", deviceKey.c_str());
        return 303;
    }
    const std::string vid = deviceKey.substr(kVidAt, kIdLength);
    if (!EqualIgnoringCase(vid, kVendor)) {
        log.Error("VID %s not valid\n", vid.c_str());
        return 303;
    }
    vid_ = vid;
    pid_ = deviceKey.substr(kPidAt, kIdLength);
    parentIdPrefix_ = prefix;
    return 0;
}

int32_t CNuComUsb::ExtractParentPrefixID(const std::string& printerName, std::string& prefix)
{
    const OperationLog log(log_, "CNuComUsb::ExtractParentPrefixID - ");
    log.Start();
    const std::string key = kPrintersKey + printerName + "\\PnPData";
    if (!system_.KeyExists(key)) {
        log.Error("Error opening registry key: %s \n", key.c_str());
        return 0;
    }
    const auto instanceId = system_.Text(key, "DeviceInstanceId");
    if (!instanceId) {
        log.Error("Error reading registry value\n");
        return 0;
    }
    const std::string instance = instanceId->substr(instanceId->rfind('\\') + 1);
    prefix = instance.substr(0, instance.rfind('&'));
    log.End();
    return 1;
}

// The key of the device, among those of the USB enumeration, one of whose instances has the prefix.
uint32_t CNuComUsb::FindDeviceKey(const OperationLog& log, const std::string& prefix, std::string& deviceKey)
{
    const auto cannotOpen = [&](const std::string& key) {
        log.Error("Error opening registry key: %s \n", key.c_str());
        return 1U;
    };
    const auto devices = system_.Subkeys(kEnumerationKey);
    if (!devices) return cannotOpen(kEnumerationKey);
    for (const std::string& device : *devices) {
        const std::string key = kEnumerationKey + device + "\\";
        const auto instances = system_.Subkeys(key);
        if (!instances) return cannotOpen(key);
        for (const std::string& instance : *instances) {
            const auto found = system_.Text(key + instance + "\\", "ParentIdPrefix");
            if (!found || !EqualIgnoringCase(*found, prefix)) continue;
            deviceKey = device;
            return 0;
        }
    }
    log.Error("Impossible to associate a VID and a PID to ParentPrefixID %s\n", prefix.c_str());
    return 303;
}

int32_t CNuComUsb::FindSymbolicLinkFromName(std::string& devicePath, const std::string& vid, const std::string& pid,
                                            const std::string& prefix)
{
    const OperationLog log(log_, "CNuComUsb::FindSymbolicLinkFromName - ");
    log.Start();
    std::size_t index = 0;
    for (const std::string& path : system_.PresentInterfaces()) {
        if (index++ > kLargestIndex) break;
        if (!system_.IsUsable(path) || path.size() < kPathPrefixLength) continue;
        std::string_view rest = std::string_view(path).substr(kPathPrefixLength);
        const std::string device(TakeUpTo(rest, '#'));
        const std::string instance(TakeUpTo(rest, '#'));
        if (device.size() < kShortestDeviceName || !EqualIgnoringCase(device.substr(kVidAt, kIdLength), vid) ||
            !EqualIgnoringCase(device.substr(kPidAt, kIdLength), pid))
            continue;
        const std::string instanceKey = std::string(kEnumerationKey).append(device).append("\\").append(instance);
        if (!HasParentPrefix(log, instanceKey + "\\", prefix)) continue;
        devicePath = path;
        log.End();
        return 1;
    }
    return 0;
}

bool CNuComUsb::HasParentPrefix(const OperationLog& log, const std::string& instanceKey, const std::string& prefix)
{
    if (!system_.KeyExists(instanceKey)) {
        log.Error("Error opening registry key: %s \n", instanceKey.c_str());
        return false;
    }
    const auto found = system_.Text(instanceKey, "ParentIdPrefix");
    if (!found) {
        log.Error("Error reading registry value\n");
        return false;
    }
    return EqualIgnoringCase(*found, prefix);
}

}  // namespace marbex::comm
