// Code 93 by AIM USS-93.

#include <array>
#include <vector>

#include "printer/barcode_symbology.h"
#include "support/service_log.h"

namespace marbex::printer {

namespace {

// Nine modules a symbol character, by its value.
constexpr std::array<uint16_t, 47> kPatterns{
    0b100010100, 0b101001000, 0b101000100, 0b101000010, 0b100101000, 0b100100100, 0b100100010, 0b101010000,  // 0-7
    0b100010010, 0b100001010,                                                                                // 8-9
    0b110101000, 0b110100100, 0b110100010, 0b110010100, 0b110010010, 0b110001010, 0b101101000, 0b101100100,  // A-H
    0b101100010, 0b100110100, 0b100011010, 0b101011000, 0b101001100, 0b101000110, 0b100101100, 0b100010110,  // I-P
    0b110110100, 0b110110010, 0b110101100, 0b110100110, 0b110010110, 0b110011010, 0b101101100, 0b101100110,  // Q-X
    0b100110110, 0b100111010,                                                                                // Y-Z
    0b100101110, 0b111010100, 0b111010010, 0b111001010, 0b101101110, 0b101110110, 0b110101110,  // - . blank $ / + %
    0b100100110, 0b111011010, 0b111010110, 0b100110010,                                         // the four shifts
};
constexpr uint16_t kStartStop = 0b101011110;
constexpr int kModules = 9;

constexpr std::string_view kValues = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ-. $/+%";
constexpr unsigned kShiftDollar = 43;
constexpr unsigned kShiftPercent = 44;
constexpr unsigned kShiftSlash = 45;
constexpr unsigned kShiftPlus = 46;
constexpr unsigned kNoShift = 0;

struct FullAscii {
    unsigned shift;
    char symbol;
};

// The full ASCII set: a symbol character of its own, or a shift and a letter.
constexpr FullAscii FullAsciiOf(char character)
{
    const auto in = [character](char first, char last) { return character >= first && character <= last; };
    const auto letter = [character](char first, char symbol) { return static_cast<char>(character - first + symbol); };
    if (character == 0x00) return {kShiftPercent, 'U'};
    if (in(0x01, 0x1A)) return {kShiftDollar, letter(0x01, 'A')};
    if (in(0x1B, 0x1F)) return {kShiftPercent, letter(0x1B, 'A')};
    if (kValues.find(character) != std::string_view::npos) return {kNoShift, character};
    if (in('!', ',')) return {kShiftSlash, letter('!', 'A')};
    if (character == ':') return {kShiftSlash, 'Z'};
    if (in(';', '?')) return {kShiftPercent, letter(';', 'F')};
    if (character == '@') return {kShiftPercent, 'V'};
    if (in('[', '_')) return {kShiftPercent, letter('[', 'K')};
    if (character == '`') return {kShiftPercent, 'W'};
    if (in('a', 'z')) return {kShiftPlus, letter('a', 'A')};
    return {kShiftPercent, letter('{', 'P')};
}

constexpr std::array<FullAscii, 128> MakeFullAsciiTable()
{
    std::array<FullAscii, 128> table{};
    for (std::size_t i = 0; i < table.size(); ++i)
        table[i] = FullAsciiOf(static_cast<char>(i));
    return table;
}
constexpr std::array<FullAscii, 128> kFullAscii = MakeFullAsciiTable();

// The check character: the weighted sum modulo 47, weights 1, 2 ... from the right, beginning anew after the highest.
unsigned CheckValue(const std::vector<unsigned>& values, unsigned highestWeight)
{
    unsigned sum = 0;
    unsigned weight = 1;
    for (std::size_t i = values.size(); i-- > 0;) {
        sum += weight * values[i];
        weight = weight == highestWeight ? 1 : weight + 1;
    }
    return sum % 47;
}

}  // namespace

bool AcceptsCode93(std::string_view data)
{
    return !data.empty() && data.size() <= 255 &&
           std::ranges::all_of(data, [](char c) { return static_cast<uint8_t>(c) < 0x80; });
}

void DrawCode93(std::string_view data, BarRow& row)
{
    std::vector<unsigned> values;
    values.reserve(2 * data.size() + 2);
    for (const char character : data) {
        support::LogWrite("[DrawBarcode] %c", character);
        const FullAscii& entry = kFullAscii[static_cast<uint8_t>(character)];
        if (entry.shift != kNoShift) values.push_back(entry.shift);
        values.push_back(static_cast<unsigned>(kValues.find(entry.symbol)));
    }
    values.push_back(CheckValue(values, 20));  // C
    values.push_back(CheckValue(values, 15));  // K

    row.Append(kStartStop, kModules);
    for (const unsigned value : values)
        row.Append(kPatterns[value], kModules);
    row.Append(kStartStop, kModules);
    row.Append(1, 1);  // termination bar
}

std::string Code93Text(std::string_view data)
{
    constexpr char kFrame = '\xFE';
    std::string text;
    text.reserve(data.size() + 2);
    text += kFrame;
    text += data;
    text += kFrame;
    return text;
}

}  // namespace marbex::printer
