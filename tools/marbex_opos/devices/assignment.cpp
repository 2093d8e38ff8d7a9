#include "marbex_opos/devices/assignment.h"

#include <algorithm>
#include <array>

#include "marbex_opos/nearest.h"
#include "platform/registry.h"

namespace marbex::tools {

namespace {

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

bool Offers(const support::PrinterModelStruct& model, const PortName& port)
{
    return std::string_view(model.Ports).find(port.letter) != std::string_view::npos;
}

}  // namespace

std::string NoField(std::string_view name)
{
    std::vector<std::string_view> fields;
    for (const support::ProfileField& field : support::ProfileFields())
        fields.push_back(field.name);
    const std::optional<std::string> meant = Nearest(name, fields);
    return "no field " + std::string(name) + (meant ? ": did you mean " + *meant + "?" : std::string()) +
           " (marbex-opos devices fields)";
}

std::optional<Assignment> ParseAssignment(std::string_view text, std::string& problem)
{
    const std::size_t sign = text.find('=');
    if (sign == std::string_view::npos) {
        problem = std::string(text) + ": write FIELD=VALUE";
        return std::nullopt;
    }
    const support::ProfileField* field = support::FindProfileField(text.substr(0, sign));
    if (field == nullptr) {
        problem = NoField(text.substr(0, sign));
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

const support::PrinterModelStruct* ModelOf(const support::DeviceProfileStruct& profile)
{
    for (const support::PrinterModelStruct& model : support::PrinterModels()) {
        if (platform::SameName(model.Name, profile.PrinterModel)) return &model;
    }
    return nullptr;
}

std::string PortTypeName(uint32_t portType)
{
    for (const PortName& port : kPortNames) {
        if (port.type == portType) return std::string(port.name);
    }
    return std::to_string(portType);
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

uint32_t FirstPortOf(const support::PrinterModelStruct& model)
{
    return std::ranges::find_if(kPortNames, [&](const PortName& one) { return Offers(model, one); })->type;
}

std::string UnofferedPort(const support::DeviceProfileStruct& profile)
{
    const support::PrinterModelStruct* model = ModelOf(profile);
    if (model == nullptr) return {};
    std::vector<std::string> offered;
    for (const PortName& port : kPortNames) {
        if (!Offers(*model, port)) continue;
        if (port.type == profile.PortType) return {};
        offered.emplace_back(port.name);
    }
    return "PortType: " + std::string(model->Name) + " has only: " + Joined(offered);
}

}  // namespace marbex::tools
