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

// Whose an entry of a device class is: ours when its default value is our ProgID.
enum class EntryOwner { kNobody, kUs, kOther };
EntryOwner OwnerOf(const platform::Registry& registry, ObjectKind kind, const std::string& name);

// Who opens an entry, by the ProgID in it; "nobody we know" when there is none.
std::string OwnerName(const platform::Registry& registry, ObjectKind kind, const std::string& name);

// The devices of this system's service object, and the logical names that lead to them.
std::vector<std::string> DeviceNames(const platform::Registry& registry, ObjectKind kind);

// The device that a name stands for: itself when it is a device or nothing at all, else what the logical name leads to.
std::string ResolvedDeviceName(const platform::Registry& registry, std::string_view className, const std::string& name);

}  // namespace marbex::tools
