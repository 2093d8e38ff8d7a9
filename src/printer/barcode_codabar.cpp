// Codabar by EN 798.

#include <array>

#include "printer/barcode_symbology.h"

namespace marbex::printer {

namespace {

struct Pattern {
    char character;
    uint16_t modules;  // wide elements are two modules
    int count;
};

constexpr std::array kPatterns{
    Pattern{'0', 0b101010011, 9},   Pattern{'1', 0b101011001, 9},   Pattern{'2', 0b101001011, 9},
    Pattern{'3', 0b110010101, 9},   Pattern{'4', 0b101101001, 9},   Pattern{'5', 0b110101001, 9},
    Pattern{'6', 0b100101011, 9},   Pattern{'7', 0b100101101, 9},   Pattern{'8', 0b100110101, 9},
    Pattern{'9', 0b110100101, 9},   Pattern{'-', 0b101001101, 9},   Pattern{'$', 0b101100101, 9},
    Pattern{':', 0b1101011011, 10}, Pattern{'/', 0b1101101011, 10}, Pattern{'.', 0b1101101101, 10},
    Pattern{'+', 0b1011011011, 10}, Pattern{'a', 0b1011001001, 10}, Pattern{'b', 0b1001001011, 10},
    Pattern{'c', 0b1010010011, 10}, Pattern{'d', 0b1010011001, 10},
};

constexpr bool IsStartStop(char character)
{
    return character >= 'A' && character <= 'D';
}

}  // namespace

bool AcceptsCodabar(std::string_view data)
{
    return data.size() >= 3 && IsStartStop(data.front()) && IsStartStop(data.back()) &&
           data.find_first_not_of("0123456789ABCD-./:$+") == std::string_view::npos;
}

void DrawCodabar(std::string_view data, BarRow& row)
{
    for (const char character : data) {
        // The letters are lower case in the table.
        const char key = IsStartStop(character) ? static_cast<char>(character - 'A' + 'a') : character;
        const auto pattern = std::ranges::find(kPatterns, key, &Pattern::character);
        row.Append(pattern->modules, pattern->count);
        row.AppendElement(false, 1);
    }
}

}  // namespace marbex::printer
