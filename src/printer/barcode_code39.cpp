// Code 39 by ISO/IEC 16388, and Code 32 (the Italian pharmaceutical number) drawn with it.

#include <array>
#include <charconv>

#include "printer/barcode_digits.h"
#include "printer/barcode_symbology.h"

namespace marbex::printer {

namespace {

constexpr std::string_view kCharacters = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ-. $/+%*";
constexpr char kStartStop = '*';

// Nine elements a character, bar first, bar and space in turn; 1 is a wide one.
constexpr std::array<uint16_t, 44> kElements{
    0b000110100, 0b100100001, 0b001100001, 0b101100000, 0b000110001, 0b100110000, 0b001110000, 0b000100101,  // 0-7
    0b100100100, 0b001100100,                                                                                // 8-9
    0b100001001, 0b001001001, 0b101001000, 0b000011001, 0b100011000, 0b001011000, 0b000001101, 0b100001100,  // A-H
    0b001001100, 0b000011100, 0b100000011, 0b001000011, 0b101000010, 0b000010011, 0b100010010, 0b001010010,  // I-P
    0b000000111, 0b100000110, 0b001000110, 0b000010110, 0b110000001, 0b011000001, 0b111000000, 0b010010001,  // Q-X
    0b110010000, 0b011010000,                                                                                // Y-Z
    0b010000101, 0b110000100, 0b011000100,               // - . blank
    0b010101000, 0b010100010, 0b010001010, 0b000101010,  // $ / + %
    0b010010100,                                         // *
};
static_assert(kCharacters.size() == kElements.size());

constexpr int kElementCount = 9;
constexpr uint32_t kWideModules = 3;

void DrawCharacter(char character, BarRow& row)
{
    const uint16_t elements = kElements[kCharacters.find(character)];
    for (int element = 0; element < kElementCount; ++element) {
        const bool wide = ((elements >> (kElementCount - 1 - element)) & 1) != 0;
        row.AppendElement(element % 2 == 0, wide ? kWideModules : 1);
    }
    row.AppendElement(false, 1);
}

constexpr std::string_view kCode32Digits = "0123456789BCDFGHJKLMNPQRSTUVWXYZ";
constexpr std::size_t kCode32Characters = 6;

}  // namespace

bool AcceptsCode39(std::string_view data)
{
    const std::string_view allowed = kCharacters.substr(0, kCharacters.find(kStartStop));
    return !data.empty() && data.find_first_not_of(allowed) == std::string_view::npos;
}

void DrawCode39(std::string_view data, BarRow& row)
{
    DrawCharacter(kStartStop, row);
    for (const char character : data)
        DrawCharacter(character, row);
    DrawCharacter(kStartStop, row);
}

void CompleteCode32(std::string& data)
{
    if (data.size() != 8 || !AllDigits(data)) return;
    unsigned sum = 0;
    for (std::size_t i = 0; i < data.size(); i += 2) {
        const unsigned doubled = 2 * DigitValue(data[i + 1]);
        sum += DigitValue(data[i]) + doubled / 10 + doubled % 10;
    }
    data += static_cast<char>('0' + sum % 10);
}

void DrawCode32(std::string_view data, BarRow& row)
{
    if (data.size() != 9 || !AllDigits(data)) return;
    uint32_t value = 0;
    std::from_chars(data.data(), data.data() + data.size(), value);
    std::array<char, kCode32Characters> characters{};
    for (std::size_t i = kCode32Characters; i-- > 0;) {
        characters[i] = kCode32Digits[value % 32];
        value /= 32;
    }
    DrawCode39({characters.data(), characters.size()}, row);
}

}  // namespace marbex::printer
