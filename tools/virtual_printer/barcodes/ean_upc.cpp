// UPC-A, UPC-E, EAN-13 and EAN-8 (ISO/IEC 15420).

#include <array>

#include "virtual_printer/barcodes/barcode.h"

namespace marbex::virtual_printer {
namespace {

// Number set A; set C is its complement, set B is set C read backwards.
constexpr std::array<std::string_view, 10> kSetA{"0001101", "0011001", "0010011", "0111101", "0100011",
                                                 "0110001", "0101111", "0111011", "0110111", "0001011"};
// Which of the sets A and B the left digits of EAN-13 take, by the leading digit.
constexpr std::array<std::string_view, 10> kLeftSets{"AAAAAA", "AABABB", "AABBAB", "AABBBA", "ABAABB",
                                                     "ABBAAB", "ABBBAA", "ABABAB", "ABABBA", "ABBABA"};
// The same for UPC-E of number system 0, by the check digit.
constexpr std::array<std::string_view, 10> kUpcESets{"BBBAAA", "BBABAA", "BBAABA", "BBAAAB", "BABBAA",
                                                     "BAABBA", "BAAABB", "BABABA", "BABAAB", "BAABAB"};
constexpr std::string_view kGuard = "101";
constexpr std::string_view kCentreGuard = "01010";
constexpr std::string_view kUpcEEnd = "010101";

std::string Digit(char digit, char set)
{
    std::string modules(kSetA[static_cast<std::size_t>(digit - '0')]);
    if (set != 'A') {
        for (char& module : modules) {
            module = module == '1' ? '0' : '1';
        }
    }
    return set == 'B' ? std::string(modules.rbegin(), modules.rend()) : modules;
}

// Modulo 10, weights 3 and 1 from the right.
char CheckDigit(std::string_view digits)
{
    int sum = 0;
    int weight = 3;
    for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit) {
        sum += (*digit - '0') * weight;
        weight = 4 - weight;
    }
    return static_cast<char>('0' + (10 - sum % 10) % 10);
}

// The data with its check digit; empty, with the reason, when it cannot be had.
std::string Completed(std::string_view data, std::size_t length, std::string& problem)
{
    if (!AllDigits(data) || (data.size() != length && data.size() + 1 != length)) {
        problem = std::to_string(length - 1) + " or " + std::to_string(length) + " digits expected";
        return {};
    }
    std::string full(data.substr(0, length - 1));
    full.push_back(CheckDigit(full));
    if (data.size() == length && full != data) {
        problem = "wrong check digit";
        return {};
    }
    return full;
}

Symbol TwoHalves(std::string_view name, const std::string& text, std::string_view left, std::string_view leftSets,
                 std::string_view right)
{
    Symbol symbol;
    symbol.name = name;
    symbol.text = text;
    AppendModules(symbol.elements, kGuard);
    for (std::size_t i = 0; i < left.size(); ++i) {
        AppendModules(symbol.elements, Digit(left[i], leftSets[i]));
    }
    AppendModules(symbol.elements, kCentreGuard);
    for (const char digit : right) {
        AppendModules(symbol.elements, Digit(digit, 'C'));
    }
    AppendModules(symbol.elements, kGuard);
    return symbol;
}

// The six digits that stand for a UPC-A number of number system 0, empty when its zeros cannot be left out.
std::string ZeroSuppressed(const std::string& upcA)
{
    const std::string maker = upcA.substr(1, 5);
    const std::string product = upcA.substr(6, 5);
    if (maker[2] <= '2' && maker.substr(3) == "00" && product.substr(0, 2) == "00") {
        return maker.substr(0, 2) + product.substr(2) + maker[2];
    }
    if (maker.substr(3) == "00" && product.substr(0, 3) == "000") {
        return maker.substr(0, 3) + product.substr(3) + '3';
    }
    if (maker[4] == '0' && product.substr(0, 4) == "0000") {
        return maker.substr(0, 4) + product[4] + '4';
    }
    if (product.substr(0, 4) == "0000" && product[4] >= '5') {
        return maker + product[4];
    }
    return {};
}

}  // namespace

Symbol EncodeUpcA(std::string_view data)
{
    std::string problem;
    const std::string full = Completed(data, 12, problem);
    return full.empty() ? Refused("UPC-A", problem)
                        : TwoHalves("UPC-A", full, std::string_view(full).substr(0, 6), "AAAAAA", full.substr(6));
}

Symbol EncodeUpcE(std::string_view data)
{
    constexpr std::string_view kName = "UPC-E";
    std::string problem;
    const std::string full = Completed(data, 12, problem);
    if (full.empty()) {
        return Refused(kName, problem);
    }
    if (full[0] != '0') {
        return Refused(kName, "number system 0 expected");
    }
    const std::string six = ZeroSuppressed(full);
    if (six.empty()) {
        return Refused(kName, "its zeros cannot be suppressed");
    }
    Symbol symbol;
    symbol.name = kName;
    symbol.text = "0" + six + full.back();
    const std::string_view sets = kUpcESets[static_cast<std::size_t>(full.back() - '0')];
    AppendModules(symbol.elements, kGuard);
    for (std::size_t i = 0; i < six.size(); ++i) {
        AppendModules(symbol.elements, Digit(six[i], sets[i]));
    }
    AppendModules(symbol.elements, kUpcEEnd);
    return symbol;
}

Symbol EncodeEan13(std::string_view data)
{
    std::string problem;
    const std::string full = Completed(data, 13, problem);
    return full.empty() ? Refused("EAN-13", problem)
                        : TwoHalves("EAN-13", full, std::string_view(full).substr(1, 6),
                                    kLeftSets[static_cast<std::size_t>(full[0] - '0')], full.substr(7));
}

Symbol EncodeEan8(std::string_view data)
{
    std::string problem;
    const std::string full = Completed(data, 8, problem);
    return full.empty() ? Refused("EAN-8", problem)
                        : TwoHalves("EAN-8", full, std::string_view(full).substr(0, 4), "AAAA", full.substr(4));
}

}  // namespace marbex::virtual_printer
