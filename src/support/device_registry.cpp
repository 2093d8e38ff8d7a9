#include "support/device_registry.h"

#include <algorithm>
#include <cstring>

#include "support/profile_fields.h"

namespace marbex::support {

namespace {

using platform::RegistryType;
using platform::RegistryValue;
using platform::SameName;

constexpr const char* kNewDeviceName = "Marbex POS Printer";

RegistryValue TextValue(std::string_view name, std::string_view text)
{
    return {std::string(name), RegistryType::kSz, std::string(text)};
}

bool IsText(const RegistryValue& value)
{
    return value.type == RegistryType::kSz || value.type == RegistryType::kExpandSz;
}

std::string_view TextOf(const RegistryValue& value)
{
    return std::string_view(value.data).substr(0, value.data.find('\0'));
}

bool Names(const RegistryValue& value, std::string_view device)
{
    return IsText(value) && SameName(TextOf(value), device);
}

}  // namespace

CDeviceRegistry::CDeviceRegistry(platform::Registry& registry) : registry_(registry), serviceKey_(kServiceKey)
{
    CDeviceRegistry::EnumerateDevices();
}

void CDeviceRegistry::SetServiceKey(const std::string& Path)
{
    serviceKey_ = Path;
}

bool CDeviceRegistry::SelectDevice(const std::string& Name)
{
    EnumerateDevices();
    if (!DeviceExists(Name)) return false;
    Select(Name);
    return true;
}

bool CDeviceRegistry::GetDeviceName(std::size_t Index, std::string& Name) const
{
    if (Index >= deviceNames_.size()) return false;
    Name = deviceNames_[Index];
    return true;
}

void CDeviceRegistry::EnumerateDevices()
{
    deviceNames_.clear();
    const auto names = registry_.Subkeys(serviceKey_);
    if (!names) return;
    for (const std::string& name : *names) {
        const auto progId = registry_.Value(KeyOf(name), "");
        if (progId && Names(*progId, kPrinterProgId)) deviceNames_.push_back(name);
    }
}

bool CDeviceRegistry::ServiceKeyExists() const
{
    return registry_.KeyExists(serviceKey_);
}

bool CDeviceRegistry::CreateDeviceKey()
{
    return !selectedName_.empty() && registry_.CreateKey(devicePath_) &&
           registry_.SetValue(devicePath_, TextValue("", kPrinterProgId));
}

bool CDeviceRegistry::DeviceExists(const std::string& Name) const
{
    return std::ranges::any_of(deviceNames_, [&](const std::string& known) { return SameName(known, Name); });
}

bool CDeviceRegistry::CreateNewDevice(std::string& Name)
{
    std::string name = kNewDeviceName;
    // A key of that name may also be another maker's.
    for (int number = 2; DeviceExists(name) || registry_.KeyExists(KeyOf(name)); ++number) {
        name = std::string(kNewDeviceName) + "(" + std::to_string(number) + ")";
    }
    const std::string key = KeyOf(name);
    if (!registry_.CreateKey(key) || !registry_.SetValue(key, TextValue("", kPrinterProgId))) return false;
    Select(name);
    deviceNames_.push_back(name);
    Name = name;
    return true;
}

bool CDeviceRegistry::DeleteDevice(const std::string& Name)
{
    if (!DeviceExists(Name)) return false;
    const std::string name = Name;  // Name may be an element of the list
    Select(name);
    DeleteLogicalNames();
    const bool deleted = registry_.DeleteKey(devicePath_);
    selectedName_.clear();
    devicePath_.clear();
    if (deleted) std::erase_if(deviceNames_, [&](const std::string& known) { return SameName(known, name); });
    return deleted;
}

void CDeviceRegistry::SetDefaults(DeviceProfileStruct& Profile) const
{
    Profile = {};
    CopyText(Profile.DeviceName, selectedName_);
    for (const ProfileField& field : ProfileFields())
        SetFieldDefault(field, Profile);
}

bool CDeviceRegistry::ReadProfile(DeviceProfileStruct& Profile) const
{
    CopyText(Profile.DeviceName, selectedName_);
    const auto logicalNames = registry_.Values(serviceKey_);
    if (!logicalNames) return false;
    for (const RegistryValue& logicalName : *logicalNames) {
        if (!selectedName_.empty() && !logicalName.name.empty() && Names(logicalName, selectedName_)) {
            CopyText(Profile.DeviceName, logicalName.name);
        }
    }

    const auto values = registry_.Values(devicePath_);
    if (!values) return false;
    for (const ProfileField& field : ProfileFields()) {
        const auto value =
            std::ranges::find_if(*values, [&](const RegistryValue& one) { return SameName(one.name, field.name); });
        if (value == values->end() || !LoadField(field, *value, Profile)) SetFieldDefault(field, Profile);
    }
    return true;
}

bool CDeviceRegistry::WriteProfile(const DeviceProfileStruct& Profile)
{
    if (selectedName_.empty()) return false;
    DeleteLogicalNames();
    const std::string_view logicalName(Profile.DeviceName, strnlen(Profile.DeviceName, sizeof Profile.DeviceName));
    if (!logicalName.empty() && !registry_.SetValue(serviceKey_, TextValue(logicalName, selectedName_))) return false;
    if (!registry_.KeyExists(devicePath_)) return false;
    return std::ranges::all_of(ProfileFields(), [&](const ProfileField& field) {
        return registry_.SetValue(devicePath_, StoreField(field, Profile));
    });
}

bool CDeviceRegistry::DeleteLogicalNames()
{
    const auto values = registry_.Values(serviceKey_);
    if (!values) return false;
    // Without a selection there is nothing they could be the names of.
    if (selectedName_.empty()) return true;
    for (const RegistryValue& value : *values) {
        if (Names(value, selectedName_)) registry_.DeleteValue(serviceKey_, value.name);
    }
    return true;
}

std::string CDeviceRegistry::KeyOf(const std::string& device) const
{
    return serviceKey_ + "\\" + device;
}

void CDeviceRegistry::Select(const std::string& device)
{
    selectedName_ = device;
    devicePath_ = KeyOf(device);
}

}  // namespace marbex::support
