#pragma once

// The fields of a device profile that are kept in the registry, as a table: what reads, writes, shows or checks a
// profile walks it. DeviceName is not among them; it is told by the keys' names.

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "platform/registry.h"
#include "support/device_profile.h"

namespace marbex::support {

enum class ProfileFieldKind {
    kText,           // REG_SZ
    kNumber,         // REG_DWORD
    kCharacterSets,  // REG_BINARY: a count and as many set numbers; as text the set numbers with commas ("0,2,19")
};

struct ProfileField {
    std::string_view name;  // of the registry value and of the structure's member
    ProfileFieldKind kind;
    std::string_view defaultText;                             // the default as a person would write it
    std::string_view meaning;                                 // for a person, one line
    std::span<char> (*text)(DeviceProfileStruct&) = nullptr;  // the member of a kText
    uint32_t DeviceProfileStruct::*number = nullptr;          // the member of a kNumber
};

// In the order in which a profile is read and written.
std::span<const ProfileField> ProfileFields();

// Without regard to case; null when there is no such field.
const ProfileField* FindProfileField(std::string_view name);

void SetFieldDefault(const ProfileField& field, DeviceProfileStruct& profile);

// Takes a registry value; false, and nothing changes, when it is too long for the field. Its type does not matter: a
// number is made of up to four stored bytes, the lowest first (of a text its ANSI characters and its terminator, so
// that "1" is 0x31), a text of the stored bytes as ANSI characters up to the first zero. Of a kCharacterSets the count
// is lowered to the set numbers that follow it.
bool LoadField(const ProfileField& field, const platform::RegistryValue& value, DeviceProfileStruct& profile);

// The field as the registry keeps it.
platform::RegistryValue StoreField(const ProfileField& field, const DeviceProfileStruct& profile);

// The field as a person would write it.
std::string ShowField(const ProfileField& field, const DeviceProfileStruct& profile);

// Sets the field from what a person wrote; numbers in decimal or, after 0x, hexadecimal. Gives an empty text, or the
// reason why it cannot be right (nothing changes then): stricter than LoadField, which takes what an old profile holds.
std::string AssignField(const ProfileField& field, std::string_view text, DeviceProfileStruct& profile);

// Copies text into a zero-terminated field, cut at a character's border when it is too long; the rest is filled with
// zeros.
void CopyText(std::span<char> field, std::string_view text);

}  // namespace marbex::support
