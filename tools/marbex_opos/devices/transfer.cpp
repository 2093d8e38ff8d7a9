#include "marbex_opos/devices/transfer.h"

#include <algorithm>

#include "marbex_opos/devices/document_registry.h"
#include "marbex_opos/opos/object_kind.h"
#include "marbex_opos/session/device_names.h"
#include "support/profile_fields.h"

namespace marbex::tools {

namespace {

using platform::RegDocument;
using platform::Registry;
using platform::RegistryValue;

constexpr const char* kHive = "HKEY_LOCAL_MACHINE\\";

std::string_view TextOf(const RegistryValue& value)
{
    return std::string_view(value.data).substr(0, value.data.find('\0'));
}

std::vector<RegistryValue> ValuesOf(const Registry& registry, const std::string& key)
{
    return registry.Values(key).value_or(std::vector<RegistryValue>());
}

bool Same(const std::optional<RegistryValue>& one, const RegistryValue& other)
{
    return one && one->type == other.type && one->data == other.data;
}

std::vector<std::string> DevicesOf(const Registry& registry, ObjectKind kind)
{
    std::vector<std::string> devices =
        registry.Subkeys(DeviceClassKey(ClassOf(kind).name)).value_or(std::vector<std::string>());
    std::erase_if(devices, [&](const std::string& name) { return OwnerOf(registry, kind, name) != EntryOwner::kUs; });
    return devices;
}

bool Holds(const std::vector<std::string>& names, std::string_view wanted)
{
    return std::ranges::any_of(names, [&](const std::string& name) { return platform::SameName(name, wanted); });
}

// The logical names in the class that lead to one of the devices.
std::vector<RegistryValue> LogicalNames(const Registry& registry, ObjectKind kind,
                                        const std::vector<std::string>& devices)
{
    std::vector<RegistryValue> names = ValuesOf(registry, DeviceClassKey(ClassOf(kind).name));
    std::erase_if(names,
                  [&](const RegistryValue& value) { return value.name.empty() || !Holds(devices, TextOf(value)); });
    return names;
}

bool IsAscii(std::string_view text)
{
    return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// Takes the key's values over as they are in there; false when a key that has them already has them as well.
void Compare(const Registry& registry, const std::vector<RegistryValue>& wanted, KeyChange& change)
{
    for (const RegistryValue& value : wanted) {
        const std::optional<RegistryValue> now = registry.Value(change.key, value.name);
        if (!Same(now, value)) change.values.push_back({value.name, now, value});
    }
}

void PlanDevice(const Registry& registry, const Registry& file, ObjectKind kind, const std::string& name,
                ImportPlan& plan)
{
    const std::string className(ClassOf(kind).name);
    KeyChange change{DeviceClassKey(className) + "\\" + name, className + " " + name, false, {}};
    const EntryOwner owner = OwnerOf(registry, kind, name);
    if (owner == EntryOwner::kOther) {
        plan.leftAlone.push_back("the " + className + " entry " + name + " belongs to " +
                                 OwnerName(registry, kind, name) + " and is left alone");
        return;
    }
    change.isNew = owner == EntryOwner::kNobody;
    const std::vector<RegistryValue> wanted = ValuesOf(file, change.key);
    Compare(registry, wanted, change);
    for (const RegistryValue& value : ValuesOf(registry, change.key)) {
        const bool stays = std::ranges::any_of(
            wanted, [&](const RegistryValue& other) { return platform::SameName(other.name, value.name); });
        if (!stays) change.values.push_back({value.name, value, std::nullopt});
    }
    if (!change.values.empty()) plan.changes.push_back(std::move(change));
}

void PlanClass(const Registry& registry, const Registry& file, ObjectKind kind, ImportPlan& plan)
{
    const std::string className(ClassOf(kind).name);
    const std::vector<std::string> devices = DevicesOf(file, kind);
    for (const std::string& name : file.Subkeys(DeviceClassKey(className)).value_or(std::vector<std::string>())) {
        if (Holds(devices, name)) continue;
        plan.leftAlone.push_back("the " + className + " entry " + name + " of the file belongs to " +
                                 OwnerName(file, kind, name) + " and is left out");
    }
    for (const std::string& name : devices)
        PlanDevice(registry, file, kind, name, plan);
    KeyChange names{DeviceClassKey(className), className + " names", false, {}};
    Compare(registry, LogicalNames(file, kind, devices), names);
    if (!names.values.empty()) plan.changes.push_back(std::move(names));
    if (kind == ObjectKind::kPrinter) plan.devices = devices;
}

}  // namespace

RegDocument ExportedDevices(const Registry& registry, const std::vector<std::string>& names)
{
    RegDocument document;
    document.carriageReturns = true;
    bool isAscii = true;
    const auto add = [&](const std::string& key, const RegistryValue& value) {
        document.Set(kHive + key, {value, {}, {}});
        isAscii = isAscii && IsAscii(key) && IsAscii(value.name) &&
                  (value.type == platform::RegistryType::kBinary || IsAscii(value.data));
    };
    for (const ObjectClass& object : kObjectClasses) {
        std::vector<std::string> devices = DevicesOf(registry, object.kind);
        std::erase_if(devices, [&](const std::string& name) { return !names.empty() && !Holds(names, name); });
        const std::string classKey = DeviceClassKey(object.name);
        for (const RegistryValue& value : LogicalNames(registry, object.kind, devices))
            add(classKey, value);
        for (const std::string& name : devices) {
            for (const RegistryValue& value : ValuesOf(registry, classKey + "\\" + name))
                add(classKey + "\\" + name, value);
        }
    }
    document.encoding = isAscii ? platform::RegEncoding::kUtf8 : platform::RegEncoding::kUtf16;
    return document;
}

ImportPlan PlanImport(const Registry& registry, const RegDocument& document)
{
    const DocumentRegistry file(document);
    ImportPlan plan;
    for (const ObjectClass& object : kObjectClasses)
        PlanClass(registry, file, object.kind, plan);
    return plan;
}

bool Apply(const ImportPlan& plan, Registry& registry)
{
    return std::ranges::all_of(plan.changes, [&](const KeyChange& change) {
        if (!registry.CreateKey(change.key)) return false;
        return std::ranges::all_of(change.values, [&](const ValueChange& value) {
            return value.then ? registry.SetValue(change.key, *value.then)
                              : registry.DeleteValue(change.key, value.name);
        });
    });
}

std::string ShownValue(const RegistryValue& value)
{
    using platform::RegistryType;
    support::DeviceProfileStruct profile{};
    const support::ProfileField* field = support::FindProfileField(value.name);
    const bool isText = value.type == RegistryType::kSz || value.type == RegistryType::kExpandSz;
    if (field != nullptr && field->kind == support::ProfileFieldKind::kCharacterSets &&
        value.type == RegistryType::kBinary && support::LoadField(*field, value, profile)) {
        return support::ShowField(*field, profile);
    }
    if (isText) return "\"" + std::string(TextOf(value)) + "\"";
    if (value.type == RegistryType::kDword && value.data.size() == 4) {
        uint32_t number = 0;
        for (std::size_t at = 4; at-- > 0;)
            number = number << 8 | static_cast<unsigned char>(value.data[at]);
        return std::to_string(number);
    }
    return std::to_string(value.data.size()) + " bytes";
}

}  // namespace marbex::tools
