#include <nlohmann/json.hpp>

#include "marbex_opos/check/check.h"
#include "marbex_opos/commands.h"
#include "marbex_opos/output.h"
#include "marbex_opos/process_settings.h"
#include "platform/files.h"

namespace marbex::tools {

namespace {

struct Part {
    std::string name;
    Steps steps;
};

// The machine first, then the devices.
struct Findings {
    Part machine;
    std::vector<Part> devices;

    StepState Worst() const
    {
        StepState worst = machine.steps.Worst();
        for (const Part& device : devices)
            worst = std::max(worst, device.steps.Worst());
        return worst;
    }
};

std::string_view Word(StepState state)
{
    switch (state) {
        case StepState::kFine:
            return "fine";
        case StepState::kWarning:
            return "warning";
        case StepState::kWrong:
            break;
    }
    return "wrong";
}

void PrintPart(const Part& part)
{
    Print(part.name + "\n");
    for (const Step& step : part.steps.List()) {
        Print("  " + Padded(Word(step.state), 8) + " " + Padded(step.name, 13) + " " + step.text + "\n");
        if (!step.next.empty()) Print(std::string(25, ' ') + "next: " + ToType(step.next) + "\n");
    }
}

// Keys in the order in which they are written.
nlohmann::ordered_json ToJson(const Steps& steps)
{
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const Step& step : steps.List()) {
        nlohmann::ordered_json one{{"step", step.name}, {"state", Word(step.state)}, {"text", step.text}};
        if (!step.next.empty()) one["next"] = ToType(step.next);
        list.push_back(one);
    }
    return list;
}

void PrintJson(const Findings& findings)
{
    nlohmann::ordered_json json{{"state", Word(findings.Worst())}, {"steps", ToJson(findings.machine.steps)}};
    json["devices"] = nlohmann::ordered_json::array();
    for (const Part& device : findings.devices) {
        json["devices"].push_back(
            {{"device", device.name}, {"state", Word(device.steps.Worst())}, {"steps", ToJson(device.steps)}});
    }
    // Names in another encoding than they should be must not leave a monitor without its answer.
    Print(json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n");
}

Findings Check(const CheckOptions& options)
{
    Findings findings{{"this machine", {}}, {}};
    CheckRegistry(findings.machine.steps);
    if (findings.machine.steps.Worst() != StepState::kFine) return findings;
    CheckServer(options.server, findings.machine.steps);
    CheckRegistryViews(findings.machine.steps);
    const std::vector<std::string> names = DeviceStore().Names();
    if (!options.device.empty()) {
        findings.devices.push_back({options.device, CheckDevice(options.device)});
    } else if (names.empty()) {
        findings.machine.steps.Wrong("devices", "there are none", "marbex-opos devices add Till1 PrinterModel=MODEL");
    } else if (options.all || names.size() == 1) {
        for (const std::string& name : names)
            findings.devices.push_back({name, CheckDevice(name)});
    } else {
        std::string list;
        for (const std::string& name : names)
            list += (list.empty() ? "" : ", ") + name;
        findings.machine.steps.Fine("devices", list + " (marbex-opos check DEVICE, or --all)");
    }
    return findings;
}

}  // namespace

int CheckTill(const CheckOptions& options)
{
    // What the platform would say about the registry is a step here.
    platform::CaptureDebugOutput([](std::string_view) {});
    const Findings findings = Check(options);
    if (options.json) {
        PrintJson(findings);
    } else {
        PrintPart(findings.machine);
        for (const Part& device : findings.devices)
            PrintPart(device);
    }
    const StepState worst = findings.Worst();
    return worst == StepState::kWrong ? 1 : worst == StepState::kWarning ? 2 : 0;
}

}  // namespace marbex::tools
