// UPC-A, UPC-E, EAN 13 and EAN 8 by ISO/IEC 15420.

#include <array>

#include "printer/barcode_digits.h"
#include "printer/barcode_symbology.h"

namespace marbex::printer {

namespace {

// Number set A (odd parity, "L"): seven modules a digit. Set C ("R") is its complement, set B ("G") set C reversed.
constexpr std::array<uint8_t, 10> kSetA{0b0001101, 0b0011001, 0b0010011, 0b0111101, 0b0100011,
                                        0b0110001, 0b0101111, 0b0111011, 0b0110111, 0b0001011};
constexpr std::array<uint8_t, 10> kSetB{0b0100111, 0b0110011, 0b0011011, 0b0100001, 0b0011101,
                                        0b0111001, 0b0000101, 0b0010001, 0b0001001, 0b0010111};
constexpr std::array<uint8_t, 10> kSetC{0b1110010, 0b1100110, 0b1101100, 0b1000010, 0b1011100,
                                        0b1001110, 0b1010000, 0b1000100, 0b1001000, 0b1110100};
constexpr int kDigitModules = 7;

// By the first digit of an EAN 13: which of the six left digits are from set B, the first in the highest bit.
constexpr std::array<uint8_t, 10> kEan13SetB{0b000000, 0b001011, 0b001101, 0b001110, 0b010011,
                                             0b011001, 0b011100, 0b010101, 0b010110, 0b011010};

// By the check digit of a UPC-E of number system 0, likewise.
constexpr std::array<uint8_t, 10> kUpcESetB{0b111000, 0b110100, 0b110010, 0b110001, 0b101100,
                                            0b100110, 0b100011, 0b101010, 0b101001, 0b100101};

void DrawGuard(BarRow& row)
{
    row.Append(0b101, 3);
}
void DrawCentreGuard(BarRow& row)
{
    row.Append(0b01010, 5);
}
void DrawUpcEEndGuard(BarRow& row)
{
    row.Append(0b010101, 6);
}

void DrawLeft(std::string_view digits, unsigned fromSetB, BarRow& row)
{
    for (std::size_t i = 0; i < digits.size(); ++i) {
        const bool setB = ((fromSetB >> (digits.size() - 1 - i)) & 1U) != 0;
        const unsigned value = DigitValue(digits[i]);
        row.Append(setB ? kSetB[value] : kSetA[value], kDigitModules);
    }
}

void DrawRight(std::string_view digits, BarRow& row)
{
    for (const char digit : digits)
        row.Append(kSetC[DigitValue(digit)], kDigitModules);
}

// The digit that makes the sum a multiple of ten when every second digit, the last of these counted first, weighs
// three.
char CheckDigit(std::string_view digits)
{
    unsigned sum = 0;
    unsigned weight = 3;
    for (std::size_t i = digits.size(); i-- > 0;) {
        sum += weight * DigitValue(digits[i]);
        weight = 4 - weight;
    }
    return static_cast<char>('0' + (10 - sum % 10) % 10);
}

// Digits in the given number, and one more when it is their check digit.
bool AcceptsDigits(std::string_view data, std::size_t count)
{
    if (!AllDigits(data)) return false;
    if (data.size() == count) return true;
    return data.size() == count + 1 && data[count] == CheckDigit(data.substr(0, count));
}

void Complete(std::string& data, std::size_t count)
{
    if (data.size() == count) data += CheckDigit(data);
}

// The six digits that stand for the UPC-A form of number system 0; empty when its zeros do not allow it.
std::string SuppressZeros(std::string_view data)
{
    const auto digits = [data](std::size_t first, std::size_t count) { return std::string(data.substr(first, count)); };
    const std::string_view fromThree = data.substr(3, 5);
    if (fromThree == "00000" || fromThree == "10000" || fromThree == "20000") {
        return digits(1, 2) + digits(8, 3) + data[3];
    }
    if (data.substr(4, 5) == "00000") return digits(1, 3) + digits(9, 2) + '3';
    if (data.substr(5, 5) == "00000") return digits(1, 4) + digits(10, 1) + '4';
    if (data.substr(6, 4) == "0000" && data[10] >= '5') return digits(1, 5) + digits(10, 1);
    return {};
}

constexpr std::size_t kUpcDigits = 11;
constexpr std::size_t kEan13Digits = 12;
constexpr std::size_t kEan8Digits = 7;

}  // namespace

bool AcceptsUpcA(std::string_view data)
{
    return AcceptsDigits(data, kUpcDigits);
}
void CompleteUpcA(std::string& data)
{
    Complete(data, kUpcDigits);
}

void DrawUpcA(std::string_view data, BarRow& row)
{
    DrawGuard(row);
    DrawLeft(data.substr(0, 6), 0, row);
    DrawCentreGuard(row);
    DrawRight(data.substr(6), row);
    DrawGuard(row);
}

bool AcceptsUpcE(std::string_view data)
{
    return AcceptsDigits(data, kUpcDigits) && data[0] == '0' && !SuppressZeros(data).empty();
}

void DrawUpcE(std::string_view data, BarRow& row)
{
    const char check = CheckDigit(data.substr(0, kUpcDigits));
    DrawGuard(row);
    DrawLeft(SuppressZeros(data), kUpcESetB[DigitValue(check)], row);
    DrawUpcEEndGuard(row);
}

bool AcceptsEan13(std::string_view data)
{
    return AcceptsDigits(data, kEan13Digits);
}
void CompleteEan13(std::string& data)
{
    Complete(data, kEan13Digits);
}

void DrawEan13(std::string_view data, BarRow& row)
{
    DrawGuard(row);
    DrawLeft(data.substr(1, 6), kEan13SetB[DigitValue(data[0])], row);
    DrawCentreGuard(row);
    DrawRight(data.substr(7), row);
    DrawGuard(row);
}

bool AcceptsEan8(std::string_view data)
{
    return AcceptsDigits(data, kEan8Digits);
}
void CompleteEan8(std::string& data)
{
    Complete(data, kEan8Digits);
}

void DrawEan8(std::string_view data, BarRow& row)
{
    DrawGuard(row);
    DrawLeft(data.substr(0, 4), 0, row);
    DrawCentreGuard(row);
    DrawRight(data.substr(4), row);
    DrawGuard(row);
}

}  // namespace marbex::printer
