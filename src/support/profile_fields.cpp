#include "support/profile_fields.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <optional>
#include <vector>

#include "platform/text.h"
#include "support/printer_tables.h"

namespace marbex::support {

namespace {

using platform::RegistryType;
using platform::RegistryValue;

template <auto Member>
std::span<char> Text(DeviceProfileStruct& profile)
{
    return profile.*Member;
}

constexpr auto kText = ProfileFieldKind::kText;
constexpr auto kNumber = ProfileFieldKind::kNumber;
using P = DeviceProfileStruct;

constexpr auto kFields = std::to_array<ProfileField>({
    {"PrinterModel", kText, "TALIS", "model name", Text<&P::PrinterModel>},
    {"PrinterSubModel", kText, "", "national table loaded into the printer, empty for none", Text<&P::PrinterSubModel>},
    {"PortType", kNumber, "0", "0 serial, 1 Ethernet, 2 USB", nullptr, &P::PortType},
    {"Com", kNumber, "1", "serial: 1 for COM1", nullptr, &P::Com},
    {"Speed", kNumber, "9600", "serial: baud", nullptr, &P::Speed},
    {"Format", kText, "8N1", "serial: 8N1, 7E1, 7O1, 8E1 or 8O1", Text<&P::Format>},
    {"Handshake", kNumber, "1", "serial: 2 Xon/Xoff, any other hardware", nullptr, &P::Handshake},
    {"LogPath", kText, "C:", "folder of the log files", Text<&P::LogPath>},
    {"LogEnabled", kNumber, "0", "0 no logs, 1 and 2 logs, 3 and above with the bytes sent and received", nullptr,
     &P::LogEnabled},
    {"LogLevel", kNumber, "0", "0 log files, any other the debugger's output", nullptr, &P::LogLevel},
    {"LogLimit", kNumber, "0", "megabytes at which a log file begins anew, 0 never", nullptr, &P::LogLimit},
    {"IPAddress", kText, "192.168.0.1", "Ethernet: address in dotted form", Text<&P::IPAddress>},
    {"Port", kNumber, "9100", "Ethernet: TCP port", nullptr, &P::Port},
    {"PrinterName", kText, "", "USB: name of the printer among those attached", Text<&P::PrinterName>},
    {"TimeoutRX", kNumber, "5000", "milliseconds to receive in", nullptr, &P::TimeoutRX},
    {"TimeoutTX", kNumber, "5000", "milliseconds to send in", nullptr, &P::TimeoutTX},
    {"Settings", kNumber, "0", "sum of flags: 1 kicks the cash drawer after every cut", nullptr, &P::Settings},
    {"ConfirmOutput", kNumber, "0", "1: output is complete when the printer confirms it", nullptr, &P::ConfirmOutput},
    {"Fonts", ProfileFieldKind::kCharacterSets, "0,2,3,4,5,19",
     "character sets offered, the printer's own table first"},
});

std::optional<uint32_t> ParseNumber(std::string_view text)
{
    int base = 10;
    if (text.starts_with("0x") || text.starts_with("0X")) {
        text.remove_prefix(2);
        base = 16;
    }
    uint32_t number = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (read.ec != std::errc() || read.ptr != text.data() + text.size()) return std::nullopt;
    return number;
}

// The set numbers of "0,2,19"; none when it is no such list.
std::optional<std::vector<uint8_t>> ParseSets(std::string_view text)
{
    std::vector<uint8_t> sets;
    while (!text.empty()) {
        std::string_view item = text.substr(0, text.find(','));
        text.remove_prefix(std::min(item.size() + 1, text.size()));
        item.remove_prefix(std::min(item.find_first_not_of(' '), item.size()));
        item = item.substr(0, item.find_last_not_of(' ') + 1);
        const auto number = ParseNumber(item);
        if (!number || *number > 255) return std::nullopt;
        sets.push_back(static_cast<uint8_t>(*number));
    }
    return sets;
}

void PutSets(const std::vector<uint8_t>& sets, DeviceProfileStruct& profile)
{
    std::ranges::fill(profile.Fonts, uint8_t{0});
    profile.Fonts[0] = static_cast<uint8_t>(sets.size());
    std::ranges::copy(sets, profile.Fonts + 1);
}

bool LoadSets(std::string_view bytes, DeviceProfileStruct& profile)
{
    if (bytes.size() > sizeof profile.Fonts) return false;
    std::ranges::fill(profile.Fonts, uint8_t{0});
    std::ranges::transform(bytes, profile.Fonts, [](char c) { return static_cast<uint8_t>(c); });
    const std::size_t present = bytes.empty() ? 0 : bytes.size() - 1;
    profile.Fonts[0] = static_cast<uint8_t>(std::min<std::size_t>(profile.Fonts[0], present));
    return true;
}

bool IsTextType(RegistryType type)
{
    return type == RegistryType::kSz || type == RegistryType::kExpandSz || type == RegistryType::kMultiSz;
}

// What a reading that does not ask for the type gives: of a text its single-byte characters and its terminator.
std::string StoredBytes(const RegistryValue& value)
{
    if (!IsTextType(value.type)) return value.data;
    std::string bytes = platform::NarrowAnsi(platform::Utf16FromUtf8(value.data));
    if (value.type != RegistryType::kMultiSz) bytes += '\0';
    return bytes;
}

bool LoadText(const RegistryValue& value, std::span<char> room)
{
    std::string text = value.data.substr(0, value.data.find('\0'));
    if (!IsTextType(value.type)) {
        if (value.data.size() > room.size()) return false;
        text = platform::Utf8FromUtf16(platform::WidenAnsi(text));
    }
    if (text.size() >= room.size()) return false;
    CopyText(room, text);
    return true;
}

bool LoadNumber(std::string_view bytes, uint32_t& number)
{
    if (bytes.size() > sizeof number) return false;
    number = 0;
    for (std::size_t i = bytes.size(); i-- > 0;)
        number = number << 8 | static_cast<unsigned char>(bytes[i]);
    return true;
}

bool IsDottedAddress(std::string_view text)
{
    for (int part = 0; part < 4; ++part) {
        const std::size_t end = part < 3 ? text.find('.') : text.size();
        if (end == std::string_view::npos || end == 0 || end > 3) return false;
        uint32_t number = 0;
        const auto read = std::from_chars(text.data(), text.data() + end, number);
        if (read.ec != std::errc() || read.ptr != text.data() + end || number > 255) return false;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return true;
}

bool IsLineFormat(std::string_view text)
{
    static constexpr std::array<std::string_view, 5> kFormats{"8N1", "7E1", "7O1", "8E1", "8O1"};
    return std::ranges::any_of(kFormats, [text](std::string_view known) { return platform::SameName(known, text); });
}

bool IsSpeed(uint32_t baud)
{
    static constexpr std::array<uint32_t, 8> kSpeeds{1200, 2400, 4800, 9600, 19200, 38400, 57600, 115200};
    return std::ranges::find(kSpeeds, baud) != kSpeeds.end();
}

template <typename Items, typename Name>
std::string List(const Items& items, const Name& name)
{
    std::string list;
    for (const auto& item : items)
        list += (list.empty() ? "" : ", ") + name(item);
    return list;
}

std::string CheckText(const ProfileField& field, std::string_view text, std::size_t capacity)
{
    if (text.size() >= capacity) return "longer than " + std::to_string(capacity - 1) + " bytes";
    if (text.find('\0') != std::string_view::npos) return "a text cannot hold a zero";
    const auto isModel = [text](const PrinterModelStruct& model) { return platform::SameName(model.Name, text); };
    const auto isSubModel = [text](const SubModelStruct& subModel) { return subModel.Key == text; };
    if (field.name == "PrinterModel" && std::ranges::none_of(PrinterModels(), isModel)) {
        return "not one of " +
               List(PrinterModels(), [](const PrinterModelStruct& one) { return std::string(one.Name); });
    }
    if (field.name == "PrinterSubModel" && std::ranges::none_of(SubModels(), isSubModel)) {
        return "not empty nor, in capitals, one of " +
               List(SubModels().subspan(1), [](const SubModelStruct& one) { return std::string(one.Key); });
    }
    if (field.name == "Format" && !IsLineFormat(text)) return "not one of 8N1, 7E1, 7O1, 8E1, 8O1";
    if (field.name == "IPAddress" && !IsDottedAddress(text)) return "not an address such as 192.168.0.1";
    return {};
}

std::string CheckNumber(const ProfileField& field, uint32_t number)
{
    if (field.name == "PortType" && number > kPortUsb) return "not 0 (serial), 1 (ethernet) or 2 (usb)";
    if (field.name == "Com" && (number == 0 || number > 256)) return "not from 1 to 256";
    if (field.name == "Speed" && !IsSpeed(number))
        return "not one of 1200, 2400, 4800, 9600, 19200, 38400, 57600, 115200";
    if (field.name == "Port" && (number == 0 || number > 65535)) return "not from 1 to 65535";
    return {};
}

}  // namespace

std::span<const ProfileField> ProfileFields()
{
    return kFields;
}

const ProfileField* FindProfileField(std::string_view name)
{
    const auto found = std::ranges::find_if(
        kFields, [name](const ProfileField& field) { return platform::SameName(field.name, name); });
    return found == kFields.end() ? nullptr : &*found;
}

void CopyText(std::span<char> field, std::string_view text)
{
    std::size_t length = std::min(text.size(), field.size() - 1);
    // A byte 10xxxxxx continues a UTF-8 character.
    while (length < text.size() && length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80)
        --length;
    std::ranges::fill(field, '\0');
    std::ranges::copy(text.substr(0, length), field.begin());
}

void SetFieldDefault(const ProfileField& field, DeviceProfileStruct& profile)
{
    switch (field.kind) {
        case ProfileFieldKind::kText:
            CopyText(field.text(profile), field.defaultText);
            break;
        case ProfileFieldKind::kNumber:
            profile.*field.number = ParseNumber(field.defaultText).value_or(0);
            break;
        case ProfileFieldKind::kCharacterSets:
            PutSets(*ParseSets(field.defaultText), profile);
            break;
    }
}

bool LoadField(const ProfileField& field, const RegistryValue& value, DeviceProfileStruct& profile)
{
    switch (field.kind) {
        case ProfileFieldKind::kText:
            return LoadText(value, field.text(profile));
        case ProfileFieldKind::kNumber:
            return LoadNumber(StoredBytes(value), profile.*field.number);
        case ProfileFieldKind::kCharacterSets:
            break;
    }
    return LoadSets(StoredBytes(value), profile);
}

RegistryValue StoreField(const ProfileField& field, const DeviceProfileStruct& profile)
{
    RegistryValue value;
    value.name = field.name;
    if (field.kind == ProfileFieldKind::kNumber) {
        value.type = RegistryType::kDword;
        for (int shift = 0; shift < 32; shift += 8) {
            value.data += static_cast<char>(profile.*field.number >> shift & 0xFF);
        }
    } else if (field.kind == ProfileFieldKind::kCharacterSets) {
        value.type = RegistryType::kBinary;
        const std::size_t count = std::min<std::size_t>(profile.Fonts[0], sizeof profile.Fonts - 1);
        value.data.assign(profile.Fonts, profile.Fonts + 1 + count);
    } else {
        value.type = RegistryType::kSz;
        value.data = ShowField(field, profile);
    }
    return value;
}

std::string ShowField(const ProfileField& field, const DeviceProfileStruct& profile)
{
    if (field.kind == ProfileFieldKind::kNumber) return std::to_string(profile.*field.number);
    if (field.kind == ProfileFieldKind::kText) {
        DeviceProfileStruct copy = profile;
        const std::span<char> text = field.text(copy);
        return {text.begin(), std::ranges::find(text, '\0')};
    }
    std::string list;
    const std::size_t count = std::min<std::size_t>(profile.Fonts[0], sizeof profile.Fonts - 1);
    for (std::size_t i = 1; i <= count; ++i) {
        if (i > 1) list += ',';
        list += std::to_string(profile.Fonts[i]);
    }
    return list;
}

std::string AssignField(const ProfileField& field, std::string_view text, DeviceProfileStruct& profile)
{
    if (field.kind == ProfileFieldKind::kText) {
        const std::span<char> room = field.text(profile);
        std::string problem = CheckText(field, text, room.size());
        if (problem.empty()) CopyText(room, text);
        return problem;
    }
    if (field.kind == ProfileFieldKind::kNumber) {
        const auto number = ParseNumber(text);
        // What is no number is out of every range.
        std::string problem = CheckNumber(field, number.value_or(std::numeric_limits<uint32_t>::max()));
        if (!number && problem.empty()) problem = "not a number from 0 to 4294967295";
        if (problem.empty()) profile.*field.number = *number;
        return problem;
    }
    const auto sets = ParseSets(text);
    if (!sets || sets->size() > 255) return "not set numbers with commas between them";
    for (const uint8_t set : *sets) {
        if (FindCharacterSet(set) != nullptr) continue;
        const auto number = [](const CharSetStruct& one) { return std::to_string(one.SetNumber); };
        return "no character set " + std::to_string(set) + "; there are " + List(CharacterSets(), number);
    }
    PutSets(*sets, profile);
    return {};
}

}  // namespace marbex::support
