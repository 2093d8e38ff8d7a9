// Code 93 (AIM BC5), with the full ASCII set by shift characters.

#include <array>

#include "virtual_printer/barcodes/barcode.h"

namespace marbex::virtual_printer {
namespace {

constexpr std::string_view kCharacters = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ-. $/+%";
// The four shift characters follow the 43 others.
constexpr int kShiftDollar = 43;
constexpr int kShiftPercent = 44;
constexpr int kShiftSlash = 45;
constexpr int kShiftPlus = 46;

constexpr std::array<std::string_view, 47> kPatterns{
    "100010100", "101001000", "101000100", "101000010", "100101000", "100100100", "100100010", "101010000",
    "100010010", "100001010", "110101000", "110100100", "110100010", "110010100", "110010010", "110001010",
    "101101000", "101100100", "101100010", "100110100", "100011010", "101011000", "101001100", "101000110",
    "100101100", "100010110", "110110100", "110110010", "110101100", "110100110", "110010110", "110011010",
    "101101100", "101100110", "100110110", "100111010", "100101110", "111010100", "111010010", "111001010",
    "101101110", "101110110", "110101110", "100100110", "111011010", "111010110", "100110010"};
constexpr std::string_view kStartStop = "101011110";

int ValueOf(char character)
{
    return static_cast<int>(kCharacters.find(character));
}

// The values of one ASCII character: itself, or a shift character and a letter.
std::vector<int> ValuesOf(unsigned char c)
{
    if (const auto at = kCharacters.find(static_cast<char>(c)); at != std::string_view::npos) {
        return {static_cast<int>(at)};
    }
    const auto letter = [c](int shift, unsigned first, char from) {
        return std::vector<int>{shift, ValueOf(static_cast<char>(static_cast<unsigned>(from) + c - first))};
    };
    if (c == 0) {
        return {kShiftPercent, ValueOf('U')};
    }
    if (c <= 26) {
        return letter(kShiftDollar, 1, 'A');
    }
    if (c <= 31) {
        return letter(kShiftPercent, 27, 'A');
    }
    if (c >= '!' && c <= ':') {
        return letter(kShiftSlash, '!', 'A');
    }
    if (c >= ';' && c <= '?') {
        return letter(kShiftPercent, ';', 'F');
    }
    if (c == '@') {
        return {kShiftPercent, ValueOf('V')};
    }
    if (c >= '[' && c <= '_') {
        return letter(kShiftPercent, '[', 'K');
    }
    if (c == '`') {
        return {kShiftPercent, ValueOf('W')};
    }
    if (c >= 'a' && c <= 'z') {
        return letter(kShiftPlus, 'a', 'A');
    }
    return letter(kShiftPercent, '{', 'P');  // { | } ~ DEL
}

// Weighted sum from the right, weights 1 to mostWeight over and over.
int CheckValue(const std::vector<int>& values, int mostWeight)
{
    int sum = 0;
    int weight = 1;
    for (auto value = values.rbegin(); value != values.rend(); ++value) {
        sum += *value * weight;
        weight = weight == mostWeight ? 1 : weight + 1;
    }
    return sum % 47;
}

}  // namespace

Symbol EncodeCode93(std::string_view data)
{
    constexpr std::string_view kName = "CODE 93";
    if (data.empty()) {
        return Refused(kName, "no data");
    }
    Symbol symbol;
    symbol.name = kName;
    std::vector<int> values;
    for (const char character : data) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte > 0x7F) {
            return Refused(kName, "a character that is not ASCII");
        }
        for (const int value : ValuesOf(byte)) {
            values.push_back(value);
        }
        symbol.text.push_back(byte < 0x20 || byte == 0x7F ? ' ' : character);
    }
    values.push_back(CheckValue(values, 20));
    values.push_back(CheckValue(values, 15));
    AppendModules(symbol.elements, kStartStop);
    for (const int value : values) {
        AppendModules(symbol.elements, kPatterns[static_cast<std::size_t>(value)]);
    }
    AppendModules(symbol.elements, kStartStop);
    AppendModules(symbol.elements, "1");
    return symbol;
}

}  // namespace marbex::virtual_printer
