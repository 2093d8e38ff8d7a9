// The customer display of the models that have one (NESTO, VELA PC, ARGO PC TURBO): what is sold appears while it is
// rung up.
//
//     ./display Till1

#include <marbex/till.h>

#include <iostream>
#include <string>

using marbex::Result;

namespace {

// The text on the left and the price at the right edge, both in ASCII.
std::string Filled(std::string left, const std::string& right, int columns)
{
    left.resize(static_cast<std::size_t>(columns) - right.size(), ' ');
    return left + right;
}

Result Show(marbex::LineDisplay& display)
{
    const int columns = display.Columns();
    Result result = display.Clear();
    if (result == Result::kSuccess) result = display.ShowAt(0, 0, Filled("Flat White", "3,90", columns));
    if (result == Result::kSuccess && display.Rows() > 1)
        result = display.ShowAt(1, 0, Filled("TOTAL", "7,80", columns));
    return result;
}

}  // namespace

int main(int argc, char** argv)
{
    marbex::Printer printer;
    marbex::LineDisplay display(printer);

    Result result = printer.Start(argc > 1 ? argv[1] : "Till1");
    if (result == Result::kSuccess) result = display.Start();
    if (result == Result::kSuccess) result = Show(display);
    if (result != Result::kSuccess) {
        std::cerr << Name(result) << ": " << Advice(result) << '\n';
        return 1;
    }
    std::cout << display.Rows() << " x " << display.Columns() << " characters\n";
    return 0;
}
