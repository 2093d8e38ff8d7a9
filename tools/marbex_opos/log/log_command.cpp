#include "marbex_opos/commands.h"
#include "marbex_opos/devices/device_store.h"
#include "marbex_opos/devices/profile_check.h"
#include "marbex_opos/log/log_merge.h"
#include "marbex_opos/nearest.h"
#include "marbex_opos/output.h"
#include "marbex_opos/process_settings.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/registry.h"

namespace marbex::tools {

namespace {

constexpr uint32_t kLookAgain = 200;  // ms

// Control sequences of ISO/IEC 6429.
constexpr std::string_view kRed = "\x1B[31m";
constexpr std::string_view kYellow = "\x1B[33m";
constexpr std::string_view kCyan = "\x1B[36m";
constexpr std::string_view kGrey = "\x1B[90m";
constexpr std::string_view kPlain = "\x1B[0m";

std::string_view ColourOf(const LogEntry& entry)
{
    if (entry.isError) return kRed;
    if (entry.origin == LogOrigin::kSent || entry.origin == LogOrigin::kReceived) return kCyan;
    return entry.origin == LogOrigin::kLink ? kGrey : std::string_view();
}

std::string_view MarkOf(LogOrigin origin)
{
    switch (origin) {
        case LogOrigin::kSent:
            return "->";
        case LogOrigin::kReceived:
            return "<-";
        case LogOrigin::kLink:
            return "--";
        case LogOrigin::kService:
            break;
    }
    return "  ";
}

std::string Line(const LogEntry& entry, bool inColours)
{
    const std::string_view colour = inColours ? ColourOf(entry) : std::string_view();
    std::string line = entry.stamp + " " + std::string(MarkOf(entry.origin)) + " ";
    line.append(colour).append(entry.text).append(colour.empty() ? "" : kPlain);
    if (entry.reason.empty()) return line + "\n";
    line.append("   ")
        .append(inColours ? kYellow : "")
        .append("(" + entry.reason + ")")
        .append(inColours ? kPlain : "");
    return line + "\n";
}

// The device whose log it is; none, after saying why, when it has none.
std::optional<DeviceView> DeviceToShow(const std::string& name)
{
    platform::CaptureDebugOutput([](std::string_view) {});
    DeviceStore store;
    const std::string problem = store.RegistryProblem();
    const std::vector<std::string> names = store.Names();
    if (!problem.empty()) {
        Complain(problem);
        return std::nullopt;
    }
    if (name.empty() && names.size() != 1) {
        Complain(names.empty() ? "no devices in " + RegistryPlace() : "of which device? There are: " + Joined(names));
        return std::nullopt;
    }
    std::optional<DeviceView> device = store.View(name.empty() ? names.front() : name);
    if (!device) Complain(store.NoDevice(name));
    return device;
}

}  // namespace

int ShowLog(const LogOptions& options)
{
    const std::optional<DeviceView> device = DeviceToShow(options.device);
    if (!device) return 1;
    const std::string folder = platform::NativePath(device->profile.LogPath);
    const std::string set = "marbex-opos devices set " + ShellWord(device->name);
    LogMerge log(folder);
    if (device->profile.LogEnabled == 0) {
        PrintError(device->name + " writes no log now; for one with every byte: " + ToType(set + " LogEnabled=3") +
                   "\n");
    } else if (device->profile.LogLevel != 0) {
        PrintError(device->name + " does not log to files; to change that: " + ToType(set + " LogLevel=0") + "\n");
    }
    if (!log.IsThere() && !options.follow) return Complain("there is no log in " + folder);
    const bool inColours = OutputTakesColours();
    while (true) {
        std::string lines;
        const std::vector<LogEntry> entries = log.Next();
        for (const LogEntry& entry : entries) {
            if (!options.errors || entry.isError) lines += Line(entry, inColours);
        }
        Print(lines);
        if (!entries.empty()) continue;
        if (!options.follow) return 0;
        platform::SystemClock().Sleep(kLookAgain);
    }
}

}  // namespace marbex::tools
