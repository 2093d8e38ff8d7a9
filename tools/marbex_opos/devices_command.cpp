#include <cstdio>
#include <string>

#include "marbex_opos/commands.h"
#include "marbex_opos/device_store.h"
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

std::string Joined(const std::vector<std::string>& names)
{
    std::string joined;
    for (const std::string& name : names) {
        if (!joined.empty()) joined += ", ";
        joined += name;
    }
    return joined;
}

std::string PortText(const support::DeviceProfileStruct& profile)
{
    switch (profile.PortType) {
        case support::kPortSerial:
            return "COM" + std::to_string(profile.Com) + " " + std::to_string(profile.Speed) + " " + profile.Format +
                   (profile.Handshake == 2 ? " Xon/Xoff" : "");
        case support::kPortEthernet:
            return "TCP " + std::string(profile.IPAddress) + ":" + std::to_string(profile.Port);
        case support::kPortUsb:
            return "USB \"" + std::string(profile.PrinterName) + "\"";
        default:
            return "port type " + std::to_string(profile.PortType);
    }
}

void Show(const DeviceView& view)
{
    std::printf("%s\n", view.name.c_str());
    if (!view.logicalNames.empty()) std::printf("  also called      %s\n", Joined(view.logicalNames).c_str());
    std::size_t at = 0;
    for (const support::ProfileField& field : support::ProfileFields()) {
        std::string value = support::ShowField(field, view.profile);
        if (field.kind == support::ProfileFieldKind::kText) value = "\"" + value + "\"";
        std::printf("  %-16s %-24s %-8s %s\n", std::string(field.name).c_str(), value.c_str(),
                    view.isSet[at++] ? "set" : "default", std::string(field.meaning).c_str());
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
    for (const std::string& name : options.toDefault) {
        const support::ProfileField* field = support::FindProfileField(name);
        if (field == nullptr) {
            Complain("no field " + name + " (marbex-opos devices fields)");
            return false;
        }
        changes.toDefault.push_back(field);
    }
    return true;
}

int Report(const std::string& problem, const std::string& done)
{
    if (!problem.empty()) return Complain(problem);
    std::printf("%s\n", done.c_str());
    return 0;
}

}  // namespace

int ListDevices()
{
    DeviceStore store = OpenStore();
    const std::string problem = store.RegistryProblem();
    if (!problem.empty()) return Complain(problem);
    for (const std::string& name : store.Names()) {
        const std::optional<DeviceView> view = store.View(name);
        if (!view) continue;
        std::string also;
        if (!view->logicalNames.empty()) also = "also called " + Joined(view->logicalNames);
        std::printf("%-24s %-16s %-28s %s\n", name.c_str(), view->profile.PrinterModel, PortText(view->profile).c_str(),
                    also.c_str());
    }
    return 0;
}

int ShowDevice(const std::string& name)
{
    DeviceStore store = OpenStore();
    const std::string problem = store.RegistryProblem();
    if (!problem.empty()) return Complain(problem);
    const std::optional<DeviceView> view = store.View(name);
    if (!view) return Complain("no device " + name);
    Show(*view);
    return 0;
}

int ListFields()
{
    for (const support::ProfileField& field : support::ProfileFields()) {
        std::printf("%-16s %-16s %s\n", std::string(field.name).c_str(), std::string(field.defaultText).c_str(),
                    std::string(field.meaning).c_str());
    }
    std::printf("\nCharacter sets for Fonts:\n");
    for (const support::CharSetStruct& set : support::CharacterSets()) {
        std::printf("  %3u  %s\n", static_cast<unsigned>(set.SetNumber), std::string(set.DisplayName).c_str());
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
    return Report(problem, "added " + name);
}

int ChangeDevice(const DeviceOptions& options)
{
    DeviceChanges changes;
    if (!Understand(options, changes)) return 1;
    DeviceStore store = OpenStore();
    return Report(store.Change(options.name, changes), "changed " + options.name);
}

int RemoveDevice(const std::string& name)
{
    DeviceStore store = OpenStore();
    return Report(store.Remove(name), "removed " + name);
}

int ListModels()
{
    std::printf("%-16s %-8s %-12s %s\n", "MODEL", "PORTS", "CASH DRAWER", "LINE DISPLAY");
    for (const support::PrinterModelStruct& model : support::PrinterModels()) {
        std::printf("%-16s %-8s %-12s %s\n", model.Name, model.Ports, model.HasCashDrawer != 0 ? "yes" : "no",
                    model.HasLineDisplay != 0 ? "yes" : "no");
    }
    std::printf("\nPorts: S serial, U USB, E Ethernet\n");
    return 0;
}

}  // namespace marbex::tools
