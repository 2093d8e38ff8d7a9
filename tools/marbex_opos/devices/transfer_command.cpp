#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "marbex_opos/commands.h"
#include "marbex_opos/devices/device_store.h"
#include "marbex_opos/devices/document_registry.h"
#include "marbex_opos/devices/profile_check.h"
#include "marbex_opos/devices/transfer.h"
#include "marbex_opos/nearest.h"
#include "marbex_opos/output.h"
#include "marbex_opos/process_settings.h"
#include "platform/files.h"

namespace marbex::tools {

namespace {

constexpr uint64_t kLargestFile = 64 << 20;

std::filesystem::path PathOf(const std::string& file)
{
    return std::filesystem::path(std::u8string(file.begin(), file.end()));
}

std::string SystemReason()
{
    return errno != 0 ? std::string(": ") + std::strerror(errno) : std::string();
}

// A whole file or none: what was there before stays until the new one is complete.
bool WriteFile(const std::string& file, const std::string& bytes)
{
    const std::filesystem::path path = PathOf(file);
    std::filesystem::path unfinished = path;
    unfinished += ".part";
    errno = 0;
    std::ofstream out(unfinished, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    std::error_code problem;
    if (out) std::filesystem::rename(unfinished, path, problem);
    if (out && !problem) return true;
    std::error_code ignored;
    std::filesystem::remove(unfinished, ignored);
    return false;
}

std::string NumberOf(std::size_t count, const char* noun)
{
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string Described(const ValueChange& change)
{
    const std::string name = change.name.empty() ? "(default)" : change.name;
    const std::string now = change.now ? ShownValue(*change.now) : std::string();
    if (!change.then) return name + ": " + now + " -> (its default)";
    if (!change.now) return name + ": " + ShownValue(*change.then);
    return name + ": " + now + " -> " + ShownValue(*change.then);
}

void Show(const ImportPlan& plan)
{
    for (const KeyChange& change : plan.changes) {
        Print(change.what + (change.isNew ? ": new\n" : "\n"));
        for (const ValueChange& value : change.values)
            Print("  " + Described(value) + "\n");
    }
    for (const std::string& sentence : plan.leftAlone)
        Complain(sentence);
}

// What the profiles of the file hold that the driver would silently replace by its defaults.
void WarnOfOddValues(const platform::Registry& file, const ImportPlan& plan)
{
    for (const std::string& device : plan.devices) {
        for (const ProfileFinding& finding : CheckProfile(file, device)) {
            if (finding.isWrong) Complain(device + ": " + finding.value + " " + finding.shown + ": " + finding.what);
        }
    }
}

}  // namespace

int ExportDevices(const std::string& file, const std::vector<std::string>& wanted)
{
    platform::CaptureDebugOutput([](std::string_view) {});
    DeviceStore store;
    const std::string problem = store.RegistryProblem();
    if (!problem.empty()) return Complain(problem);
    std::vector<std::string> names;
    for (const std::string& name : wanted) {
        const std::optional<DeviceView> view = store.View(name);
        if (!view) return Complain(store.NoDevice(name));
        names.push_back(view->name);
    }
    if (names.empty()) names = store.Names();
    if (names.empty()) return Complain("there are no devices in " + RegistryPlace());
    if (!WriteFile(file, platform::WriteRegFile(ExportedDevices(platform::SystemRegistry(), names)))) {
        return Complain(file + " cannot be written" + SystemReason());
    }
    Print("exported " + Joined(names) + " to " + file + "\n");
    return 0;
}

int ImportDevices(const std::string& file, bool dryRun)
{
    platform::CaptureDebugOutput([](std::string_view) {});
    const std::string problem = DeviceStore().RegistryProblem();
    if (!problem.empty()) return Complain(problem);
    errno = 0;
    const std::optional<std::string> bytes = platform::ReadWholeFile(file, kLargestFile);
    if (!bytes) return Complain(file + " cannot be read" + SystemReason());
    const auto parsed = platform::ParseRegFile(*bytes);
    if (const auto* wrong = std::get_if<platform::RegParseProblem>(&parsed)) {
        return Complain(file + ":" + std::to_string(wrong->line) + ": " + wrong->message);
    }
    const auto& document = std::get<platform::RegDocument>(parsed);
    platform::Registry& registry = platform::SystemRegistry();
    const ImportPlan plan = PlanImport(registry, document);
    if (plan.devices.empty()) {
        return Complain(file + " holds no device of " + std::string(ClassOf(ObjectKind::kPrinter).progId));
    }
    Show(plan);
    WarnOfOddValues(DocumentRegistry(document), plan);
    if (plan.changes.empty()) {
        Print("nothing to change: " + Joined(plan.devices) + (plan.devices.size() == 1 ? " is" : " are") +
              " as the file says\n");
        return 0;
    }
    if (dryRun) {
        Print("nothing was changed (--dry-run)\n");
        return 0;
    }
    if (!Apply(plan, registry)) {
        const std::string reason = registry.LastProblem();
        return Complain("the registry cannot be written" + (reason.empty() ? std::string() : ": " + reason) +
                        "; import the file again when it can");
    }
    Print("imported " + NumberOf(plan.devices.size(), "device") + ": " + Joined(plan.devices) + "\n");
    return 0;
}

}  // namespace marbex::tools
