// A receipt, printed line by line. Every call returns when the printer has taken what it was given, or says why not.
//
//     g++ -std=c++17 receipt.cpp $(pkg-config --cflags --libs marbex-opos) -o receipt
//     ./receipt Till1

#include <marbex/till.h>

#include <iostream>
#include <string>

using marbex::Result;
namespace style = marbex::style;

namespace {

constexpr std::size_t kColumns = 42;

// Characters, not bytes: what follows the first byte of a character in UTF-8 begins with the bits 10.
std::size_t LengthOf(const std::string& text)
{
    std::size_t length = 0;
    for (const char byte : text)
        length += (byte & 0xC0) != 0x80;
    return length;
}

std::string Line(const std::string& left, const std::string& right)
{
    const std::size_t used = LengthOf(left) + LengthOf(right);
    return left + std::string(used < kColumns ? kColumns - used : 1, ' ') + right + "\n";
}

// Prints and cuts; stops at the first call that fails.
Result PrintReceipt(marbex::Printer& printer)
{
    const std::string lines[] = {
        std::string(style::kCenter) + style::kBig + "Corner Coffee\n",
        std::string(style::kCenter) + "Torstraße 118, Berlin\n\n",
        Line("2 x Flat White", "7,80 €"),
        Line("1 x Grüner Tee", "12,50 €"),
        Line("3 x Crème brûlée", "10,20 €"),
        std::string(kColumns, '-') + "\n",
        style::kBold + Line("SUMME", "30,50 €"),
        "\nΕυχαριστούμε! Спасибо!\n",
    };
    for (const std::string& line : lines) {
        if (const Result result = printer.Print(line); result != Result::kSuccess) return result;
    }
    return printer.Cut();
}

}  // namespace

int main(int argc, char** argv)
{
    marbex::Printer printer;
    Result result = printer.Start(argc > 1 ? argv[1] : "Till1");
    if (result == Result::kSuccess) result = PrintReceipt(printer);
    if (result != Result::kSuccess) {
        std::cerr << Name(result) << ": " << Advice(result) << '\n';
        return 1;
    }
    std::cout << "printed by " << printer.Description() << '\n';
    return 0;
}
