#include "marbex_opos/session/device_names.h"

#include <algorithm>

namespace marbex::tools {

namespace {

std::string TextOf(const platform::RegistryValue& value)
{
    return value.data.substr(0, value.data.find('\0'));
}

}  // namespace

std::string DeviceClassKey(std::string_view className)
{
    return "SOFTWARE\\OLEforRetail\\ServiceOPOS\\" + std::string(className);
}

EntryOwner OwnerOf(const platform::Registry& registry, ObjectKind kind, const std::string& name)
{
    const ObjectClass& object = ClassOf(kind);
    const std::string key = DeviceClassKey(object.name) + "\\" + name;
    if (!registry.KeyExists(key)) return EntryOwner::kNobody;
    const auto owner = registry.Value(key, "");
    return owner && platform::SameName(TextOf(*owner), object.progId) ? EntryOwner::kUs : EntryOwner::kOther;
}

std::string OwnerName(const platform::Registry& registry, ObjectKind kind, const std::string& name)
{
    const auto owner = registry.Value(DeviceClassKey(ClassOf(kind).name) + "\\" + name, "");
    return owner ? TextOf(*owner) : "nobody we know";
}

std::vector<std::string> DeviceNames(const platform::Registry& registry, ObjectKind kind)
{
    const std::string key = DeviceClassKey(ClassOf(kind).name);
    std::vector<std::string> names;
    for (const std::string& device : registry.Subkeys(key).value_or(std::vector<std::string>())) {
        if (OwnerOf(registry, kind, device) == EntryOwner::kUs) names.push_back(device);
    }
    const std::vector<std::string> devices = names;
    for (const auto& value : registry.Values(key).value_or(std::vector<platform::RegistryValue>())) {
        const auto isTheTarget = [target = TextOf(value)](const std::string& device) {
            return platform::SameName(device, target);
        };
        if (!value.name.empty() && std::ranges::any_of(devices, isTheTarget)) names.push_back(value.name);
    }
    return names;
}

std::string ResolvedDeviceName(const platform::Registry& registry, std::string_view className, const std::string& name)
{
    const std::string key = DeviceClassKey(className);
    if (name.empty() || registry.KeyExists(key + "\\" + name)) return name;
    const auto target = registry.Value(key, name);
    return target ? TextOf(*target) : name;
}

}  // namespace marbex::tools
