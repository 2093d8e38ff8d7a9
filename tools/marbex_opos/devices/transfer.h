#pragma once

// The configuration of one till brought to another: the devices of this system's service objects, with their drawers,
// displays and logical names, as a .reg file. Entries of other service objects are neither written nor changed.

#include <optional>
#include <string>
#include <vector>

#include "platform/reg_file.h"
#include "platform/registry.h"

namespace marbex::tools {

// The named devices of the registry (all without a name) as a document that regedit takes as well: ASCII where that
// will do, else UTF-16. The names are those of devices, as the registry writes them.
platform::RegDocument ExportedDevices(const platform::Registry& registry, const std::vector<std::string>& names);

// One value that an import sets or deletes. Paths as in Registry.
struct ValueChange {
    std::string name;                            // empty: the key's default value
    std::optional<platform::RegistryValue> now;  // none: it is not there
    std::optional<platform::RegistryValue> then;
};

struct KeyChange {
    std::string key;
    std::string what;  // for a person: "POSPrinter Till1", or "POSPrinter names" for the logical names of the class
    bool isNew = false;
    std::vector<ValueChange> values;
};

struct ImportPlan {
    std::vector<std::string> devices;    // what the file holds for us, as it writes the names
    std::vector<KeyChange> changes;      // only keys in which something changes
    std::vector<std::string> leftAlone;  // a sentence each: what is somebody else's, in the file or in the registry
};

// What it takes to make the registry's devices those of the document: a device that both have is afterwards as the
// document says, value by value; one that only the registry has stays as it is, and no logical name is taken away. What
// else the document holds has no effect. The branch that 64-bit Windows keeps for 32-bit programs (WOW6432Node) will do
// when the document has no other.
ImportPlan PlanImport(const platform::Registry& registry, const platform::RegDocument& document);

// Makes the changes, in their order; false when the registry cannot be written, and then what came before is made.
bool Apply(const ImportPlan& plan, platform::Registry& registry);

// A value as a person reads it: of a field of a profile as the devices commands show it.
std::string ShownValue(const platform::RegistryValue& value);

}  // namespace marbex::tools
