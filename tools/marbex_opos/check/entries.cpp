// What the registry has under the name of a device, in the three device classes.

#include "marbex_opos/check/check.h"
#include "marbex_opos/devices/profile_check.h"
#include "marbex_opos/nearest.h"
#include "marbex_opos/session/device_names.h"
#include "platform/registry.h"

namespace marbex::tools {

namespace {

constexpr const char* kStep = "device";

void TellMissing(const std::string& name, DeviceStore& store, Steps& steps)
{
    const platform::Registry& registry = platform::SystemRegistry();
    const std::string entry = ResolvedDeviceName(registry, ClassOf(ObjectKind::kPrinter).name, name);
    if (OwnerOf(registry, ObjectKind::kPrinter, entry) == EntryOwner::kOther) {
        steps.Wrong(kStep,
                    entry + " belongs to another maker's service object, " +
                        OwnerName(registry, ObjectKind::kPrinter, entry) + ": tills that open it do not come here",
                    "marbex-opos devices add OTHER-NAME PrinterModel=MODEL");
        return;
    }
    const std::vector<std::string> names = store.Names();
    const std::optional<std::string> meant = Nearest(name, {names.begin(), names.end()});
    steps.Wrong(kStep, store.NoDevice(name),
                meant ? "marbex-opos check " + ShellWord(*meant)
                      : "marbex-opos devices add " + ShellWord(name) + " PrinterModel=MODEL");
}

void CheckCompanion(const DeviceView& device, ObjectKind kind, Steps& steps)
{
    const platform::Registry& registry = platform::SystemRegistry();
    const std::string what(ClassOf(kind).description);
    switch (OwnerOf(registry, kind, device.name)) {
        case EntryOwner::kUs:
            return;
        case EntryOwner::kNobody:
            // Whatever is set, the entries are made to match the model.
            steps.Warn(kStep, "the " + what + " of the printer has no entry: no till can open it",
                       SetCommand(device, ShellWord("PrinterModel=" + std::string(device.profile.PrinterModel))));
            return;
        case EntryOwner::kOther:
            steps.Warn(kStep,
                       "the " + what + " " + device.name + " belongs to another maker's service object, " +
                           OwnerName(registry, kind, device.name) + ": the printer's own cannot be opened",
                       "marbex-opos devices add OTHER-NAME " +
                           ShellWord("PrinterModel=" + std::string(device.profile.PrinterModel)));
    }
}

}  // namespace

std::optional<DeviceView> CheckEntries(const std::string& name, Steps& steps)
{
    DeviceStore store;
    std::optional<DeviceView> device = store.View(name);
    if (!device) {
        TellMissing(name, store, steps);
        return std::nullopt;
    }
    steps.Fine(kStep, device->name + ", " + device->profile.PrinterModel + " on " + PortText(device->profile));
    for (const ObjectKind kind : {ObjectKind::kCashDrawer, ObjectKind::kLineDisplay}) {
        if (HasCompanion(device->profile, kind)) CheckCompanion(*device, kind, steps);
    }
    return device;
}

}  // namespace marbex::tools
