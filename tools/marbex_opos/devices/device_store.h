#pragma once

// The configured devices: what the device commands do to the registry. Operations that change something give an empty
// text, or the reason why nothing was changed. An entry of another service object, in any of the three device classes,
// is never changed.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "marbex_opos/devices/assignment.h"
#include "marbex_opos/opos/object_kind.h"
#include "platform/registry.h"
#include "support/device_profile.h"
#include "support/device_registry.h"
#include "support/profile_fields.h"

namespace marbex::tools {

struct DeviceView {
    std::string name;
    std::vector<std::string> logicalNames;
    support::DeviceProfileStruct profile{};
    std::vector<bool> isSet;  // a field's value stands in the registry and is used; in the order of ProfileFields
};

struct DeviceChanges {
    std::vector<Assignment> assignments;
    std::vector<std::string> toDefault;  // names of fields, or of values that are none and go altogether
    std::string logicalName;             // to add, for the drawer and the display too; empty: none
};

// The drawer and the display of a printer are devices of their own classes under the same name: whether its model has
// one.
bool HasCompanion(const support::DeviceProfileStruct& profile, ObjectKind kind);

class DeviceStore {
public:
    explicit DeviceStore(platform::Registry& registry = platform::SystemRegistry());

    // Why the registry cannot be used at all, with file and line; empty when it can.
    std::string RegistryProblem() const;

    std::vector<std::string> Names();
    std::optional<DeviceView> View(const std::string& name);  // logical names lead to their devices

    // "there is no device Till9 in FILE; there are: Till1, Till2"
    std::string NoDevice(const std::string& name);

    // An empty name takes the next free one and gives it back. A model without a serial port gets its first port unless
    // the changes say which.
    std::string Add(std::string& name, const DeviceChanges& changes);
    std::string Change(const std::string& name, const DeviceChanges& changes);
    std::string Remove(const std::string& name);

    // What the last of these operations should have had a part in and left alone, a sentence each: the entries of the
    // device's name, for its drawer and its display, that belong to another service object.
    const std::vector<std::string>& LeftAlone() const { return leftAlone_; }

private:
    std::vector<std::string> LogicalNamesOf(const std::string& name) const;
    std::string CheckName(ObjectKind kind, const std::string& name, const std::string& device) const;
    std::string CheckLogicalName(const std::string& name, const std::string& device,
                                 const support::DeviceProfileStruct& profile) const;
    static std::string Apply(const DeviceChanges& changes, support::DeviceProfileStruct& profile);
    bool Write(const std::string& name, const DeviceChanges& changes, const support::DeviceProfileStruct& profile);
    bool CreateEntry(const std::string& className, const std::string& name, std::string_view progId);
    bool RemoveEntry(const std::string& className, const std::string& name);
    bool MatchCompanions(const std::string& name, const support::DeviceProfileStruct* profile);
    bool NameCompanions(const std::string& name, const support::DeviceProfileStruct& profile);
    void RememberLeftAlone(const std::string& name, const support::DeviceProfileStruct& profile);
    std::string CannotWrite() const;

    platform::Registry& registry_;
    support::CDeviceRegistry devices_;
    std::vector<std::string> leftAlone_;
};

}  // namespace marbex::tools
