// The cash drawer, which hangs on the printer: the printer is open, claimed and enabled before it, and for as long as
// it.
//
//     ./drawer Till1

#include <marbex/till.h>

#include <iostream>

using marbex::Result;
using std::chrono::milliseconds;

int main(int argc, char** argv)
{
    marbex::Printer printer;
    marbex::CashDrawer drawer(printer);

    Result result = printer.Start(argc > 1 ? argv[1] : "Till1");
    if (result == Result::kSuccess) result = drawer.Start();
    // Some drawers want a longer pulse.
    if (result == Result::kSuccess) result = drawer.SetPulse(milliseconds(120), milliseconds(240));
    if (result == Result::kSuccess) result = printer.Print("Cash                               60,00 €\n");
    if (result == Result::kSuccess) result = drawer.OpenDrawer();
    if (result != Result::kSuccess) {
        std::cerr << Name(result) << ": " << Advice(result) << '\n';
        return 1;
    }
    std::cout << "the drawer has been kicked; it has no sensor, look whether it is open\n";
    return 0;
}
