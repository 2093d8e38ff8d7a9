#pragma once

// How applications call the devices of one class: what a control object knows of the registry.

#include <string>
#include <string_view>
#include <vector>

#include "marbex_opos/opos/object_kind.h"
#include "platform/registry.h"

namespace marbex::tools {

// "SOFTWARE\OLEforRetail\ServiceOPOS\POSPrinter", whose subkeys are devices and whose values are logical names.
std::string DeviceClassKey(std::string_view className);

// The devices of this system's service object, and the logical names that lead to them.
std::vector<std::string> DeviceNames(const platform::Registry& registry, ObjectKind kind);

// The device that a name stands for: itself when it is a device or nothing at all, else what the logical name leads to.
std::string ResolvedDeviceName(const platform::Registry& registry, std::string_view className, const std::string& name);

}  // namespace marbex::tools
