#include "marbex_opos/devices/device_store.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "marbex_opos/nearest.h"
#include "marbex_opos/process_settings.h"
#include "marbex_opos/session/device_names.h"

namespace marbex::tools {

namespace {

using platform::RegistryType;
using platform::RegistryValue;
using support::DeviceProfileStruct;
using support::ProfileField;

constexpr std::array<ObjectKind, 2> kCompanions{ObjectKind::kCashDrawer, ObjectKind::kLineDisplay};

bool Assigns(const DeviceChanges& changes, std::string_view field)
{
    return std::ranges::any_of(changes.assignments, [&](const Assignment& one) { return one.field->name == field; });
}

bool IsGoodKeyName(std::string_view name)
{
    constexpr std::size_t kLongest = 127;  // what a profile's DeviceName holds
    const bool hasControl =
        std::ranges::any_of(name, [](char c) { return std::iscntrl(static_cast<unsigned char>(c)); });
    return !name.empty() && name.size() <= kLongest && name.find('\\') == std::string_view::npos && !hasControl;
}

std::string_view TextOf(const RegistryValue& value)
{
    return std::string_view(value.data).substr(0, value.data.find('\0'));
}

RegistryValue TextValue(std::string_view name, std::string_view text)
{
    return {std::string(name), RegistryType::kSz, std::string(text)};
}

}  // namespace

bool HasCompanion(const DeviceProfileStruct& profile, ObjectKind kind)
{
    const support::PrinterModelStruct* model = ModelOf(profile);
    if (model == nullptr) return false;
    return kind == ObjectKind::kCashDrawer ? model->HasCashDrawer != 0 : model->HasLineDisplay != 0;
}

DeviceStore::DeviceStore(platform::Registry& registry) : registry_(registry), devices_(registry) {}

std::string DeviceStore::RegistryProblem() const
{
    if (registry_.Subkeys("")) return {};
    return registry_.LastProblem();
}

std::string DeviceStore::CannotWrite() const
{
    const std::string problem = registry_.LastProblem();
    return "the registry cannot be written" + (problem.empty() ? std::string() : ": " + problem);
}

std::vector<std::string> DeviceStore::Names()
{
    devices_.EnumerateDevices();
    std::vector<std::string> names;
    std::string name;
    while (devices_.GetDeviceName(names.size(), name))
        names.push_back(name);
    return names;
}

std::vector<std::string> DeviceStore::LogicalNamesOf(const std::string& name) const
{
    std::vector<std::string> names;
    for (const RegistryValue& value : registry_.Values(support::kServiceKey).value_or(std::vector<RegistryValue>())) {
        if (!value.name.empty() && platform::SameName(TextOf(value), name)) names.push_back(value.name);
    }
    return names;
}

std::string DeviceStore::NoDevice(const std::string& name)
{
    const std::string missing = "there is no device " + name + " in " + RegistryPlace();
    const std::vector<std::string> names = Names();
    if (!names.empty()) return missing + "; there are: " + Joined(names);
    return missing + (MissingRegistry().empty() ? ", which has none" : ", which is not there");
}

std::optional<DeviceView> DeviceStore::View(const std::string& called)
{
    const std::string name = ResolvedDeviceName(registry_, "POSPrinter", called);
    if (!devices_.SelectDevice(name)) return std::nullopt;
    DeviceView view;
    for (const std::string& known : Names()) {
        if (platform::SameName(known, name)) view.name = known;  // as the registry writes it
    }
    devices_.SetDefaults(view.profile);
    devices_.ReadProfile(view.profile);
    view.logicalNames = LogicalNamesOf(name);
    for (const ProfileField& field : support::ProfileFields()) {
        const auto value = registry_.Value(support::kServiceKey + ("\\" + name), field.name);
        DeviceProfileStruct ignored{};
        view.isSet.push_back(value && support::LoadField(field, *value, ignored));
    }
    return view;
}

// Whether the device may be called so in one class of devices, its own entry there left out of account.
std::string DeviceStore::CheckName(ObjectKind kind, const std::string& name, const std::string& device) const
{
    const ObjectClass& object = ClassOf(kind);
    const std::string key = DeviceClassKey(object.name);
    const std::string otherMaker = ", a device of another maker";
    const EntryOwner owner = OwnerOf(registry_, kind, name);
    if (owner != EntryOwner::kNobody && !platform::SameName(name, device)) {
        return "the name " + name + " is that of another " + std::string(object.description) +
               (owner == EntryOwner::kOther ? otherMaker : std::string());
    }
    const auto named = registry_.Value(key, name);
    const std::string target(named ? TextOf(*named) : std::string_view());
    const EntryOwner targetOwner = target.empty() ? EntryOwner::kNobody : OwnerOf(registry_, kind, target);
    if (targetOwner == EntryOwner::kNobody || platform::SameName(target, device)) return {};
    return "the name " + name + " stands for the " + std::string(object.description) + " " + target + " already" +
           (targetOwner == EntryOwner::kOther ? otherMaker : std::string());
}

std::string DeviceStore::CheckLogicalName(const std::string& name, const std::string& device,
                                          const DeviceProfileStruct& profile) const
{
    if (name.empty()) return {};
    if (!IsGoodKeyName(name)) return "the logical name is empty, too long or holds a backslash";
    if (platform::SameName(name, device)) return "the device is called " + device + " already";
    std::string problem = CheckName(ObjectKind::kPrinter, name, device);
    for (const ObjectKind kind : kCompanions) {
        if (problem.empty() && HasCompanion(profile, kind)) problem = CheckName(kind, name, device);
    }
    return problem;
}

std::string DeviceStore::Apply(const DeviceChanges& changes, DeviceProfileStruct& profile)
{
    bool concernsPort = false;
    const auto note = [&](std::string_view field) {
        concernsPort = concernsPort || field == "PrinterModel" || field == "PortType";
    };
    for (const std::string& name : changes.toDefault) {
        const ProfileField* field = support::FindProfileField(name);
        if (field == nullptr) continue;
        support::SetFieldDefault(*field, profile);
        note(field->name);
    }
    for (const Assignment& assignment : changes.assignments) {
        const std::string problem = support::AssignField(*assignment.field, assignment.text, profile);
        if (!problem.empty()) return std::string(assignment.field->name) + ": " + problem;
        note(assignment.field->name);
    }
    return concernsPort ? UnofferedPort(profile) : std::string();
}

std::string DeviceStore::Add(std::string& name, const DeviceChanges& changes)
{
    std::string problem = RegistryProblem();
    if (!problem.empty()) return problem;
    devices_.EnumerateDevices();
    if (!name.empty() && !IsGoodKeyName(name)) return "the name is too long or holds a backslash";
    if (!name.empty() && OwnerOf(registry_, ObjectKind::kPrinter, name) == EntryOwner::kUs) {
        return "there is a device " + name + " already; marbex-opos devices set changes it";
    }
    if (!name.empty()) problem = CheckName(ObjectKind::kPrinter, name, {});
    if (!problem.empty()) return problem;

    DeviceChanges complete = changes;
    DeviceProfileStruct profile{};
    for (const ProfileField& field : support::ProfileFields())
        support::SetFieldDefault(field, profile);
    problem = Apply(changes, profile);
    if (!problem.empty() && !Assigns(changes, "PortType") && ModelOf(profile) != nullptr) {
        const std::string port = std::to_string(FirstPortOf(*ModelOf(profile)));
        complete.assignments.push_back({support::FindProfileField("PortType"), port});
        problem = Apply(complete, profile);
    }
    if (problem.empty()) problem = CheckLogicalName(changes.logicalName, name, profile);
    if (!problem.empty()) return problem;

    if (!Assigns(complete, "PrinterModel")) {
        complete.assignments.push_back({support::FindProfileField("PrinterModel"), profile.PrinterModel});
    }
    const bool isMade =
        name.empty() ? devices_.CreateNewDevice(name) : CreateEntry("POSPrinter", name, support::kPrinterProgId);
    return isMade && Write(name, complete, profile) ? std::string() : CannotWrite();
}

std::string DeviceStore::Change(const std::string& name, const DeviceChanges& changes)
{
    std::string problem = RegistryProblem();
    if (!problem.empty()) return problem;
    const std::optional<DeviceView> view = View(name);
    if (!view) return NoDevice(name);
    for (const std::string& field : changes.toDefault) {
        const bool isThere = registry_.Value(support::kServiceKey + ("\\" + view->name), field).has_value();
        if (support::FindProfileField(field) == nullptr && (field.empty() || !isThere)) return NoField(field);
    }
    DeviceProfileStruct profile = view->profile;
    problem = Apply(changes, profile);
    if (problem.empty()) problem = CheckLogicalName(changes.logicalName, view->name, profile);
    if (!problem.empty()) return problem;
    return Write(view->name, changes, profile) ? std::string() : CannotWrite();
}

std::string DeviceStore::Remove(const std::string& name)
{
    std::string problem = RegistryProblem();
    if (!problem.empty()) return problem;
    const std::optional<DeviceView> view = View(name);
    if (!view) return NoDevice(name);
    RememberLeftAlone(view->name, view->profile);
    const bool areGone = MatchCompanions(view->name, nullptr);
    return areGone && devices_.DeleteDevice(view->name) ? std::string() : CannotWrite();
}

bool DeviceStore::Write(const std::string& name, const DeviceChanges& changes, const DeviceProfileStruct& profile)
{
    const std::string key = support::kServiceKey + ("\\" + name);
    for (const std::string& value : changes.toDefault) {
        if (registry_.Value(key, value) && !registry_.DeleteValue(key, value)) return false;
    }
    for (const Assignment& assignment : changes.assignments) {
        if (!registry_.SetValue(key, support::StoreField(*assignment.field, profile))) return false;
    }
    if (!changes.logicalName.empty() &&
        !registry_.SetValue(support::kServiceKey, TextValue(changes.logicalName, name))) {
        return false;
    }
    RememberLeftAlone(name, profile);
    return MatchCompanions(name, &profile) && NameCompanions(name, profile);
}

// The drawer and the display go by the printer's logical names too.
bool DeviceStore::NameCompanions(const std::string& name, const DeviceProfileStruct& profile)
{
    for (const ObjectKind kind : kCompanions) {
        const std::string key = DeviceClassKey(ClassOf(kind).name);
        const bool isOurs = OwnerOf(registry_, kind, name) == EntryOwner::kUs;
        if (!HasCompanion(profile, kind) || !isOurs) continue;
        for (const std::string& logicalName : LogicalNamesOf(name)) {
            if (!CheckName(kind, logicalName, name).empty()) continue;
            if (!registry_.SetValue(key, TextValue(logicalName, name))) return false;
        }
    }
    return true;
}

bool DeviceStore::CreateEntry(const std::string& className, const std::string& name, std::string_view progId)
{
    const std::string key = DeviceClassKey(className) + "\\" + name;
    return registry_.CreateKey(key) && registry_.SetValue(key, TextValue("", progId));
}

bool DeviceStore::RemoveEntry(const std::string& className, const std::string& name)
{
    const auto logicalNames = registry_.Values(DeviceClassKey(className));
    for (const RegistryValue& value : logicalNames.value_or(std::vector<RegistryValue>())) {
        const bool isItsName = !value.name.empty() && platform::SameName(TextOf(value), name);
        if (isItsName && !registry_.DeleteValue(DeviceClassKey(className), value.name)) return false;
    }
    return registry_.DeleteKey(DeviceClassKey(className) + "\\" + name);
}

// profile: null when the printer goes.
bool DeviceStore::MatchCompanions(const std::string& name, const DeviceProfileStruct* profile)
{
    return std::ranges::all_of(kCompanions, [&](ObjectKind kind) {
        const ObjectClass& object = ClassOf(kind);
        const std::string className(object.name);
        const EntryOwner owner = OwnerOf(registry_, kind, name);
        if (profile != nullptr && HasCompanion(*profile, kind))
            return owner != EntryOwner::kNobody || CreateEntry(className, name, object.progId);
        return owner != EntryOwner::kUs || RemoveEntry(className, name);
    });
}

void DeviceStore::RememberLeftAlone(const std::string& name, const DeviceProfileStruct& profile)
{
    leftAlone_.clear();
    for (const ObjectKind kind : kCompanions) {
        if (!HasCompanion(profile, kind) || OwnerOf(registry_, kind, name) != EntryOwner::kOther) continue;
        leftAlone_.push_back("the " + std::string(ClassOf(kind).name) + " entry " + name + " belongs to " +
                             OwnerName(registry_, kind, name) + " and was left alone");
    }
}

}  // namespace marbex::tools
