#pragma once

// The configured devices: what the device commands do to the registry. Operations that change something give an empty
// text, or the reason why nothing was changed.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/registry.h"
#include "support/device_profile.h"
#include "support/device_registry.h"
#include "support/profile_fields.h"

namespace marbex::tools {

// One thing to set: a field of the profile and what a person wrote for it.
struct Assignment {
    const support::ProfileField* field;
    std::string text;
};

// "Speed=19200"; none, with a reason, when it is no assignment to a field. Ports may be written serial, ethernet, usb.
std::optional<Assignment> ParseAssignment(std::string_view text, std::string& problem);

struct DeviceView {
    std::string name;
    std::vector<std::string> logicalNames;
    support::DeviceProfileStruct profile{};
    std::vector<bool> isSet;  // a field's value stands in the registry and is used; in the order of ProfileFields
};

struct DeviceChanges {
    std::vector<Assignment> assignments;
    std::vector<const support::ProfileField*> toDefault;
    std::string logicalName;  // to add; empty: none
};

class DeviceStore {
public:
    explicit DeviceStore(platform::Registry& registry = platform::SystemRegistry());

    // Why the registry cannot be used at all, with file and line; empty when it can.
    std::string RegistryProblem() const;

    std::vector<std::string> Names();
    std::optional<DeviceView> View(const std::string& name);

    // An empty name takes the next free one and gives it back. A model without a serial port gets its first port unless
    // the changes say which.
    std::string Add(std::string& name, const DeviceChanges& changes);
    std::string Change(const std::string& name, const DeviceChanges& changes);
    std::string Remove(const std::string& name);

private:
    std::string Apply(const DeviceChanges& changes, support::DeviceProfileStruct& profile) const;
    bool Write(const std::string& name, const DeviceChanges& changes, const support::DeviceProfileStruct& profile);
    bool CreateEntry(const std::string& className, const std::string& name, std::string_view progId);
    bool RemoveCompanion(const std::string& className, const std::string& name, std::string_view progId);
    bool MatchCompanions(const std::string& name, const support::DeviceProfileStruct& profile);
    std::string CannotWrite() const;

    platform::Registry& registry_;
    support::CDeviceRegistry devices_;
};

}  // namespace marbex::tools
