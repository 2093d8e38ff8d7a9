// Interleaved 2 of 5 by ISO/IEC 16390.

#include <array>

#include "printer/barcode_digits.h"
#include "printer/barcode_symbology.h"

namespace marbex::printer {

namespace {

// Five elements a digit, two of them wide (1).
constexpr std::array<uint8_t, 10> kElements{0b00110, 0b10001, 0b01001, 0b11000, 0b00101,
                                            0b10100, 0b01100, 0b00011, 0b10010, 0b01010};
constexpr int kElementCount = 5;
constexpr uint32_t kWideModules = 3;

}  // namespace

bool AcceptsItf(std::string_view data)
{
    return !data.empty() && data.size() % 2 == 0 && AllDigits(data);
}

void DrawItf(std::string_view data, BarRow& row)
{
    row.Append(0b1010, 4);
    for (std::size_t i = 0; i < data.size(); i += 2) {
        const unsigned bars = kElements[DigitValue(data[i])];
        const unsigned spaces = kElements[DigitValue(data[i + 1])];
        for (int element = kElementCount - 1; element >= 0; --element) {
            row.AppendElement(true, ((bars >> element) & 1U) != 0 ? kWideModules : 1);
            row.AppendElement(false, ((spaces >> element) & 1U) != 0 ? kWideModules : 1);
        }
    }
    row.Append(0b11101, 5);
}

}  // namespace marbex::printer
