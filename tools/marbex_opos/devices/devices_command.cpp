#include <string>

#include "marbex_opos/commands.h"
#include "marbex_opos/devices/device_store.h"
#include "marbex_opos/devices/profile_check.h"
#include "marbex_opos/nearest.h"
#include "marbex_opos/output.h"
#include "marbex_opos/process_settings.h"
#include "platform/files.h"
#include "support/printer_tables.h"

namespace marbex::tools {

namespace {

// What the platform would write to the debugger's output about the registry, the person is told once, in one line.
DeviceStore OpenStore()
{
    platform::CaptureDebugOutput([](std::string_view) {});
    return DeviceStore();
}

void Show(const DeviceView& view)
{
    const std::vector<ProfileFinding> findings = CheckProfile(platform::SystemRegistry(), view.name);
    const auto row = [&](std::string_view name, const std::string& value, const char* state, std::string_view meaning) {
        Print("  " + Padded(name, 16) + " " + Padded(value, 24) + " " + Padded(state, 8) + " " + std::string(meaning) +
              "\n");
        for (const ProfileFinding& finding : findings) {
            if (platform::SameName(finding.value, name)) Print("  ^ " + finding.what + "\n");
        }
    };
    Print(view.name + "\n");
    if (!view.logicalNames.empty()) Print("  also called      " + Joined(view.logicalNames) + "\n");
    std::size_t at = 0;
    for (const support::ProfileField& field : support::ProfileFields()) {
        std::string value = support::ShowField(field, view.profile);
        if (field.kind == support::ProfileFieldKind::kText) value = "\"" + value + "\"";
        row(field.name, value, view.isSet[at++] ? "set" : "default", field.meaning);
    }
    for (const ProfileFinding& finding : findings) {
        if (support::FindProfileField(finding.value) == nullptr) row(finding.value, finding.shown, "unknown", "");
    }
}

// The changes that the command line asks for; false, after saying why, when it cannot be understood.
bool Understand(const DeviceOptions& options, DeviceChanges& changes)
{
    changes.logicalName = options.logicalName;
    for (const std::string& text : options.assignments) {
        std::string problem;
        const std::optional<Assignment> assignment = ParseAssignment(text, problem);
        if (!assignment) {
            Complain(problem);
            return false;
        }
        changes.assignments.push_back(*assignment);
    }
    changes.toDefault = options.toDefault;
    return true;
}

int Report(const DeviceStore& store, const std::string& problem, const std::string& done)
{
    if (!problem.empty()) return Complain(problem);
    Print(done + "\n");
    for (const std::string& sentence : store.LeftAlone())
        Complain(sentence);
    return 0;
}

}  // namespace

int ListDevices(bool onlyNames)
{
    DeviceStore store = OpenStore();
    const std::string problem = store.RegistryProblem();
    if (!problem.empty()) return Complain(problem);
    const std::vector<std::string> names = store.Names();
    for (const std::string& name : names) {
        const std::optional<DeviceView> view = store.View(name);
        if (!view) continue;
        if (onlyNames) {
            Print(name + "\n");
            continue;
        }
        std::string also;
        if (!view->logicalNames.empty()) also = "also called " + Joined(view->logicalNames);
        Print(Padded(name, 24) + " " + Padded(view->profile.PrinterModel, 16) + " " +
              Padded(PortText(view->profile), 28) + " " + also + "\n");
    }
    if (onlyNames) return 0;
    const std::string missing = MissingRegistry();
    // To standard error, so that a script reads devices and nothing else.
    if (names.empty()) PrintError("no devices in " + (missing.empty() ? RegistryPlace() : missing) + "\n");
    if (!names.empty()) {
        PrintError(std::to_string(names.size()) + (names.size() == 1 ? " device in " : " devices in ") +
                   RegistryPlace() + "\n");
    }
    return 0;
}

int ShowDevice(const std::string& name)
{
    DeviceStore store = OpenStore();
    const std::string problem = store.RegistryProblem();
    if (!problem.empty()) return Complain(problem);
    const std::optional<DeviceView> view = store.View(name);
    if (!view) return Complain(store.NoDevice(name));
    Show(*view);
    return 0;
}

int ListFields(bool onlyNames)
{
    for (const support::ProfileField& field : support::ProfileFields()) {
        if (onlyNames) {
            Print(std::string(field.name) + "\n");
            continue;
        }
        Print(Padded(field.name, 16) + " " + Padded(field.defaultText, 16) + " " + std::string(field.meaning) + "\n");
    }
    if (onlyNames) return 0;
    Print("\nCharacter sets for Fonts:\n");
    for (const support::CharSetStruct& set : support::CharacterSets()) {
        const std::string number = std::to_string(set.SetNumber);
        Print("  " + std::string(3 - number.size(), ' ') + number + "  " + std::string(set.DisplayName) + "\n");
    }
    return 0;
}

int AddDevice(const DeviceOptions& options)
{
    DeviceChanges changes;
    if (!Understand(options, changes)) return 1;
    DeviceStore store = OpenStore();
    std::string name = options.name;
    const std::string problem = store.Add(name, changes);
    return Report(store, problem, "added " + name);
}

int ChangeDevice(const DeviceOptions& options)
{
    DeviceChanges changes;
    if (!Understand(options, changes)) return 1;
    DeviceStore store = OpenStore();
    const std::string problem = store.Change(options.name, changes);
    return Report(store, problem, "changed " + options.name);
}

int RemoveDevice(const std::string& name)
{
    DeviceStore store = OpenStore();
    const std::string problem = store.Remove(name);
    return Report(store, problem, "removed " + name);
}

int ListModels(bool onlyNames)
{
    for (const support::PrinterModelStruct& model : support::PrinterModels()) {
        if (onlyNames) Print(std::string(model.Name) + "\n");
    }
    if (onlyNames) return 0;
    const auto row = [](std::string_view model, std::string_view ports, std::string_view drawer,
                        std::string_view display) {
        Print(Padded(model, 16) + " " + Padded(ports, 8) + " " + Padded(drawer, 12) + " " + std::string(display) +
              "\n");
    };
    row("MODEL", "PORTS", "CASH DRAWER", "LINE DISPLAY");
    for (const support::PrinterModelStruct& model : support::PrinterModels()) {
        row(model.Name, model.Ports, model.HasCashDrawer != 0 ? "yes" : "no", model.HasLineDisplay != 0 ? "yes" : "no");
    }
    Print("\nPorts: S serial, U USB, E Ethernet\n");
    return 0;
}

}  // namespace marbex::tools
