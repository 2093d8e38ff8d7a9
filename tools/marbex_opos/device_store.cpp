#include "marbex_opos/device_store.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "marbex_opos/object_kind.h"
#include "platform/registry.h"
#include "support/printer_tables.h"

namespace marbex::tools {

namespace {

using platform::RegistryType;
using platform::RegistryValue;
using support::DeviceProfileStruct;
using support::PrinterModelStruct;
using support::ProfileField;

const std::string kServicesKey = "SOFTWARE\\OLEforRetail\\ServiceOPOS\\";

struct PortName {
    std::string_view name;
    char letter;  // in the model table
    uint32_t type;
};

constexpr std::array<PortName, 3> kPortNames{{
    {"serial", 'S', support::kPortSerial},
    {"ethernet", 'E', support::kPortEthernet},
    {"usb", 'U', support::kPortUsb},
}};

const PrinterModelStruct* ModelOf(const DeviceProfileStruct& profile)
{
    for (const PrinterModelStruct& model : support::PrinterModels()) {
        if (platform::SameName(model.Name, profile.PrinterModel)) return &model;
    }
    return nullptr;
}

bool Offers(const PrinterModelStruct& model, const PortName& port)
{
    return std::string_view(model.Ports).find(port.letter) != std::string_view::npos;
}

std::string Unoffered(const DeviceProfileStruct& profile)
{
    const PrinterModelStruct* model = ModelOf(profile);
    if (model == nullptr) return "PrinterModel: no such printer model";
    std::string offered;
    for (const PortName& port : kPortNames) {
        if (!Offers(*model, port)) continue;
        if (port.type == profile.PortType) return {};
        offered += (offered.empty() ? "" : ", ") + std::string(port.name);
    }
    return "PortType: " + std::string(model->Name) + " has only: " + offered;
}

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

std::optional<Assignment> ParseAssignment(std::string_view text, std::string& problem)
{
    const std::size_t sign = text.find('=');
    const std::string_view name = text.substr(0, sign);
    const ProfileField* field = support::FindProfileField(name);
    if (sign == std::string_view::npos || field == nullptr) {
        problem = sign == std::string_view::npos ? std::string(text) + ": write FIELD=VALUE"
                                                 : "no field " + std::string(name) + " (marbex-opos devices fields)";
        return std::nullopt;
    }
    std::string value(text.substr(sign + 1));
    if (field->name == "PortType") {
        for (const PortName& port : kPortNames) {
            if (platform::SameName(port.name, value)) value = std::to_string(port.type);
        }
    }
    return Assignment{field, std::move(value)};
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

std::optional<DeviceView> DeviceStore::View(const std::string& name)
{
    if (!devices_.SelectDevice(name)) return std::nullopt;
    DeviceView view;
    for (const std::string& known : Names()) {
        if (platform::SameName(known, name)) view.name = known;  // as the registry writes it
    }
    devices_.SetDefaults(view.profile);
    devices_.ReadProfile(view.profile);
    const auto logicalNames = registry_.Values(support::kServiceKey);
    for (const RegistryValue& value : logicalNames.value_or(std::vector<RegistryValue>())) {
        if (!value.name.empty() && platform::SameName(TextOf(value), name)) view.logicalNames.push_back(value.name);
    }
    for (const ProfileField& field : support::ProfileFields()) {
        const auto value = registry_.Value(support::kServiceKey + ("\\" + name), field.name);
        DeviceProfileStruct ignored{};
        view.isSet.push_back(value && support::LoadField(field, *value, ignored));
    }
    return view;
}

std::string DeviceStore::Apply(const DeviceChanges& changes, DeviceProfileStruct& profile) const
{
    for (const ProfileField* field : changes.toDefault)
        support::SetFieldDefault(*field, profile);
    for (const Assignment& assignment : changes.assignments) {
        const std::string problem = support::AssignField(*assignment.field, assignment.text, profile);
        if (!problem.empty()) return std::string(assignment.field->name) + ": " + problem;
    }
    if (!changes.logicalName.empty() && !IsGoodKeyName(changes.logicalName)) {
        return "the logical name is empty, too long or holds a backslash";
    }
    return Unoffered(profile);
}

std::string DeviceStore::Add(std::string& name, const DeviceChanges& changes)
{
    std::string problem = RegistryProblem();
    if (!problem.empty()) return problem;
    devices_.EnumerateDevices();
    const std::string key = support::kServiceKey + ("\\" + name);
    if (!name.empty() && !IsGoodKeyName(name)) return "the name is too long or holds a backslash";
    if (!name.empty() && registry_.KeyExists(key)) return "there is a device " + name + " already";

    DeviceChanges complete = changes;
    DeviceProfileStruct profile{};
    for (const ProfileField& field : support::ProfileFields())
        support::SetFieldDefault(field, profile);
    problem = Apply(changes, profile);
    if (!problem.empty() && !Assigns(changes, "PortType") && ModelOf(profile) != nullptr) {
        const auto* port =
            std::ranges::find_if(kPortNames, [&](const PortName& one) { return Offers(*ModelOf(profile), one); });
        complete.assignments.push_back({support::FindProfileField("PortType"), std::to_string(port->type)});
        problem = Apply(complete, profile);
    }
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
    if (!view) return "no device " + name;
    DeviceProfileStruct profile = view->profile;
    problem = Apply(changes, profile);
    if (!problem.empty()) return problem;
    return Write(view->name, changes, profile) ? std::string() : CannotWrite();
}

std::string DeviceStore::Remove(const std::string& name)
{
    std::string problem = RegistryProblem();
    if (!problem.empty()) return problem;
    const std::optional<DeviceView> view = View(name);
    if (!view) return "no device " + name;
    const bool areGone = RemoveCompanion("CashDrawer", view->name, ClassOf(ObjectKind::kCashDrawer).progId) &&
                         RemoveCompanion("LineDisplay", view->name, ClassOf(ObjectKind::kLineDisplay).progId);
    return areGone && devices_.DeleteDevice(view->name) ? std::string() : CannotWrite();
}

bool DeviceStore::Write(const std::string& name, const DeviceChanges& changes, const DeviceProfileStruct& profile)
{
    const std::string key = support::kServiceKey + ("\\" + name);
    for (const ProfileField* field : changes.toDefault) {
        if (registry_.Value(key, field->name) && !registry_.DeleteValue(key, field->name)) return false;
    }
    for (const Assignment& assignment : changes.assignments) {
        if (!registry_.SetValue(key, support::StoreField(*assignment.field, profile))) return false;
    }
    if (!changes.logicalName.empty() &&
        !registry_.SetValue(support::kServiceKey, TextValue(changes.logicalName, name))) {
        return false;
    }
    return MatchCompanions(name, profile);
}

bool DeviceStore::CreateEntry(const std::string& className, const std::string& name, std::string_view progId)
{
    const std::string key = kServicesKey + className + "\\" + name;
    return registry_.CreateKey(key) && registry_.SetValue(key, TextValue("", progId));
}

// Only an entry of this system's own goes.
bool DeviceStore::RemoveCompanion(const std::string& className, const std::string& name, std::string_view progId)
{
    const std::string key = kServicesKey + className + "\\" + name;
    const auto owner = registry_.Value(key, "");
    if (!owner || !platform::SameName(TextOf(*owner), progId)) return true;
    const auto logicalNames = registry_.Values(kServicesKey + className);
    for (const RegistryValue& value : logicalNames.value_or(std::vector<RegistryValue>())) {
        const bool isItsName = !value.name.empty() && platform::SameName(TextOf(value), name);
        if (isItsName && !registry_.DeleteValue(kServicesKey + className, value.name)) return false;
    }
    return registry_.DeleteKey(key);
}

// The drawer and the display of a printer are devices of their own classes under the same name.
bool DeviceStore::MatchCompanions(const std::string& name, const DeviceProfileStruct& profile)
{
    struct Companion {
        ObjectKind kind;
        bool isThere;
    };
    const PrinterModelStruct* model = ModelOf(profile);
    const std::array<Companion, 2> companions{{
        {ObjectKind::kCashDrawer, model != nullptr && model->HasCashDrawer != 0},
        {ObjectKind::kLineDisplay, model != nullptr && model->HasLineDisplay != 0},
    }};
    return std::ranges::all_of(companions, [&](const Companion& companion) {
        const ObjectClass& object = ClassOf(companion.kind);
        const std::string className(object.name);
        return companion.isThere ? CreateEntry(className, name, object.progId)
                                 : RemoveCompanion(className, name, object.progId);
    });
}

}  // namespace marbex::tools
