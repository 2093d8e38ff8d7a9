#include "marbex_opos/devices/profile_check.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "marbex_opos/devices/assignment.h"
#include "marbex_opos/nearest.h"
#include "marbex_opos/opos/value.h"
#include "marbex_opos/session/device_names.h"
#include "platform/text.h"

namespace marbex::tools {

namespace {

using platform::RegistryType;
using platform::RegistryValue;
using support::DeviceProfileStruct;
using support::ProfileField;
using support::ProfileFieldKind;

const char* NameOf(RegistryType type)
{
    switch (type) {
        case RegistryType::kSz:
            return "REG_SZ";
        case RegistryType::kExpandSz:
            return "REG_EXPAND_SZ";
        case RegistryType::kBinary:
            return "REG_BINARY";
        case RegistryType::kDword:
            return "REG_DWORD";
        case RegistryType::kDwordBigEndian:
            return "REG_DWORD_BIG_ENDIAN";
        case RegistryType::kMultiSz:
            return "REG_MULTI_SZ";
        case RegistryType::kQword:
            return "REG_QWORD";
        default:
            return "of an unusual type";
    }
}

RegistryType TypeOf(const ProfileField& field)
{
    switch (field.kind) {
        case ProfileFieldKind::kText:
            return RegistryType::kSz;
        case ProfileFieldKind::kNumber:
            return RegistryType::kDword;
        case ProfileFieldKind::kCharacterSets:
            break;
    }
    return RegistryType::kBinary;
}

bool IsText(RegistryType type)
{
    return type == RegistryType::kSz || type == RegistryType::kExpandSz;
}

std::string Shown(const RegistryValue& value)
{
    if (IsText(value.type)) return Quoted(platform::Utf16FromUtf8(value.data));
    if (value.type == RegistryType::kDword && value.data.size() == 4) {
        uint32_t number = 0;
        for (std::size_t at = 4; at-- > 0;)
            number = number << 8 | static_cast<unsigned char>(value.data[at]);
        return std::to_string(number);
    }
    constexpr std::size_t kMost = 8;
    std::string bytes;
    for (std::size_t at = 0; at < std::min(value.data.size(), kMost); ++at) {
        char hex[4];
        std::snprintf(hex, sizeof hex, "%s%02X", at == 0 ? "" : " ", static_cast<unsigned char>(value.data[at]));
        bytes += hex;
    }
    return bytes + (value.data.size() > kMost ? " ..." : "");
}

// Whether the driver looks at the field of a profile with such a port.
bool IsOfPort(const ProfileField& field, uint32_t portType)
{
    struct PortField {
        std::string_view name;
        uint32_t portType;
    };
    static constexpr auto kPortFields = std::to_array<PortField>({
        {"Com", support::kPortSerial},
        {"Speed", support::kPortSerial},
        {"Format", support::kPortSerial},
        {"Handshake", support::kPortSerial},
        {"IPAddress", support::kPortEthernet},
        {"Port", support::kPortEthernet},
        {"PrinterName", support::kPortUsb},
    });
    const auto found = std::ranges::find(kPortFields, field.name, &PortField::name);
    return found == kPortFields.end() || found->portType == portType;
}

class ProfileChecker {
public:
    ProfileChecker(const platform::Registry& registry, std::string device)
        : device_(std::move(device)),
          values_(registry.Values(DeviceClassKey("POSPrinter") + "\\" + device_).value_or(std::vector<RegistryValue>()))
    {
        std::ranges::sort(values_, {}, &RegistryValue::name);
        for (const ProfileField& field : support::ProfileFields()) {
            const RegistryValue* value = Stored(field);
            if (value == nullptr || !support::LoadField(field, *value, profile_))
                support::SetFieldDefault(field, profile_);
        }
    }

    std::vector<ProfileFinding> Findings()
    {
        for (const ProfileField& field : support::ProfileFields()) {
            if (const RegistryValue* value = Stored(field)) CheckField(field, *value);
        }
        CheckCombinations();
        for (const RegistryValue& value : values_) {
            if (!value.name.empty() && support::FindProfileField(value.name) == nullptr) AddUnknown(value);
        }
        return std::move(findings_);
    }

private:
    const RegistryValue* Stored(const ProfileField& field) const
    {
        const auto found = std::ranges::find_if(
            values_, [&](const RegistryValue& value) { return platform::SameName(value.name, field.name); });
        return found == values_.end() ? nullptr : &*found;
    }

    std::string SetCommand(const std::string& arguments) const
    {
        return "marbex-opos devices set " + ShellWord(device_) + " " + arguments;
    }

    std::string ToDefault(std::string_view name) const
    {
        return SetCommand("--default " + ShellWord(std::string(name)));
    }

    void AddUnknown(const RegistryValue& value)
    {
        std::vector<std::string_view> names;
        for (const ProfileField& field : support::ProfileFields())
            names.push_back(field.name);
        const std::optional<std::string> meant = Nearest(value.name, names);
        if (!meant) {
            findings_.push_back(
                {value.name, Shown(value), false, "is unknown and has no effect", ToDefault(value.name)});
            return;
        }
        std::string assignment = *meant + "=" + (IsText(value.type) ? value.data : Shown(value));
        findings_.push_back({value.name, Shown(value), true, "is unknown: did you mean " + *meant + "?",
                             SetCommand(ShellWord(assignment) + " --default " + ShellWord(value.name))});
    }

    static std::string TypeComplaint(const ProfileField& field, const RegistryValue& value)
    {
        if (value.type == TypeOf(field)) return {};
        return std::string(": is ") + NameOf(value.type) + ", not " + NameOf(TypeOf(field));
    }

    // Setting it again mends a value that is written as another type than its field's; else the default does.
    std::string SameAgain(const ProfileField& field, const RegistryValue& value) const
    {
        DeviceProfileStruct meant{};
        const bool isUsable = IsText(value.type) && support::AssignField(field, value.data, meant).empty();
        return isUsable ? SetCommand(ShellWord(std::string(field.name) + "=" + value.data)) : ToDefault(field.name);
    }

    void CheckField(const ProfileField& field, const RegistryValue& value)
    {
        DeviceProfileStruct read{};
        const std::string name(field.name);
        const bool hasType =
            value.type == TypeOf(field) || (IsText(value.type) && field.kind == ProfileFieldKind::kText);
        if (!support::LoadField(field, value, read)) {
            findings_.push_back({value.name, Shown(value), true,
                                 "does not fit its field" + TypeComplaint(field, value) + "; the default " +
                                     std::string(field.defaultText) + " is used",
                                 SameAgain(field, value)});
        } else if (!hasType) {
            findings_.push_back(
                {value.name, Shown(value), true,
                 TypeComplaint(field, value).substr(2) + "; it is read as " + support::ShowField(field, read),
                 SameAgain(field, value)});
        } else if (IsOfPort(field, profile_.PortType)) {
            CheckRange(field, value, read);
        }
    }

    void CheckRange(const ProfileField& field, const RegistryValue& value, const DeviceProfileStruct& read)
    {
        DeviceProfileStruct scratch{};
        const std::string problem = support::AssignField(field, support::ShowField(field, read), scratch);
        if (problem.empty()) return;
        // Of these the driver skips what it does not know.
        const bool hasNoEffect = field.name == "Fonts" || field.name == "PrinterSubModel" || field.name == "Format";
        findings_.push_back({value.name, Shown(value), !hasNoEffect, "is " + problem, RangeRemedy(field, read)});
    }

    std::string RangeRemedy(const ProfileField& field, const DeviceProfileStruct& read) const
    {
        if (field.name == "PortType" && ModelOf(profile_) != nullptr) {
            return SetCommand("PortType=" + PortTypeName(FirstPortOf(*ModelOf(profile_))));
        }
        if (field.name != "PrinterModel") return ToDefault(field.name);
        std::vector<std::string_view> models;
        for (const support::PrinterModelStruct& model : support::PrinterModels())
            models.emplace_back(model.Name);
        const std::optional<std::string> meant = Nearest(read.PrinterModel, models);
        return meant ? SetCommand(ShellWord("PrinterModel=" + *meant)) : "marbex-opos models";
    }

    void CheckCombinations()
    {
        const std::string unoffered = profile_.PortType <= support::kPortUsb ? UnofferedPort(profile_) : std::string();
        if (!unoffered.empty()) {
            findings_.push_back({"PortType", PortTypeName(profile_.PortType), false,
                                 unoffered.substr(unoffered.find(": ") + 2),
                                 SetCommand("PortType=" + PortTypeName(FirstPortOf(*ModelOf(profile_))))});
        }
        if (profile_.PortType == support::kPortSerial) return;
        for (const char* name : {"TimeoutRX", "TimeoutTX"}) {
            const ProfileField* field = support::FindProfileField(name);
            if (profile_.*field->number != 0) continue;
            findings_.push_back({name, "0", true,
                                 "must not be 0 on " + PortTypeName(profile_.PortType) + ": opening gives 111",
                                 ToDefault(name)});
        }
    }

    std::string device_;
    std::vector<RegistryValue> values_;
    DeviceProfileStruct profile_{};
    std::vector<ProfileFinding> findings_;
};

}  // namespace

std::vector<ProfileFinding> CheckProfile(const platform::Registry& registry, const std::string& device)
{
    return ProfileChecker(registry, device).Findings();
}

std::string ShellWord(const std::string& word)
{
    const bool isPlain = !word.empty() && word.find_first_of(" \t\"'\\$`&|;<>()*?!#~") == std::string::npos;
    if (isPlain) return word;
    std::string quoted = "\"";
    for (const char c : word) {
        if (c == '"' || c == '\\' || c == '$' || c == '`') quoted += '\\';
        quoted += c;
    }
    return quoted + "\"";
}

}  // namespace marbex::tools
