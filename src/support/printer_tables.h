#pragma once

// The constant tables of the family: models, character sets, sub-models.

#include <cstdint>
#include <span>
#include <string_view>

namespace marbex::support {

struct PrinterModelStruct {
    char Name[50];
    char DisplayName[50];
    char Picture[255];
    char Ports[50];  // S serial, U USB, E Ethernet, comma-separated
    uint32_t HasCashDrawer;
    uint32_t HasLineDisplay;
};

// Eighteen rows; the position of a row is the model index of the whole system.
std::span<const PrinterModelStruct> PrinterModels();

struct CharSetStruct {
    uint8_t SetNumber;          // by which a profile names the set
    uint8_t TableCode;          // the n of the selecting command
    std::string_view CodePage;  // Windows code page, in decimal
    std::string_view DisplayName;
    std::string_view SelectPrefix;      // the bytes before TableCode, as they stand on the wire (0x00 included)
    std::string_view SelectPrefixText;  // the same with each 0x00 written as the NUL marker
    uint32_t CodePageNumber;            // CodePage as a number
};

std::span<const CharSetStruct> CharacterSets();
const CharSetStruct* FindCharacterSet(uint8_t setNumber);  // null when no row has it

struct SubModelStruct {
    std::string_view DisplayName;
    std::string_view Key;  // compared, with case, with the profile's PrinterSubModel
    uint32_t CodePage;
};

std::span<const SubModelStruct> SubModels();

// How a 0x00 byte is written in converted print data; the encoder turns every occurrence back.
inline constexpr std::string_view kNulMarker = "MaRkEr00NuLl";

}  // namespace marbex::support
