// Pictures and bar codes.
//
//     ./pictures Till1 logo.png

#include <marbex/till.h>

#include <iostream>

using marbex::Alignment;
using marbex::BarCode;
using marbex::Result;
using marbex::Symbology;

namespace {

Result PrintAll(marbex::Printer& printer, const char* logo)
{
    // As it is; then a quarter turned and 160 dots (20 mm) wide.
    Result result = printer.PrintPicture(logo);
    if (result == Result::kSuccess) result = printer.RotatePictures(marbex::Rotation::kRight90);
    if (result == Result::kSuccess) result = printer.PrintPicture(logo, Alignment::kLeft, 160);
    if (result == Result::kSuccess) result = printer.RotatePictures(marbex::Rotation::kNormal);
    if (result != Result::kSuccess) return result;

    BarCode voucher;
    voucher.symbology = Symbology::kCode128;
    voucher.data = "Voucher 20417-0314";
    voucher.height = 72;
    result = printer.Print(voucher);
    if (result != Result::kSuccess) return result;

    // Data that the symbology does not allow is refused before anything is printed.
    BarCode article;
    article.symbology = Symbology::kEan13;
    article.data = "4006381333932";
    if (printer.Print(article) == Result::kIllegal) {
        std::cout << article.data << " has a wrong check digit\n";
        article.data = "4006381333931";
    }
    result = printer.Print(article);
    return result == Result::kSuccess ? printer.Cut() : result;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc < 3) {
        std::cerr << "usage: pictures DEVICE PICTURE\n";
        return 64;
    }
    marbex::Printer printer;
    Result result = printer.Start(argv[1]);
    if (result == Result::kSuccess) result = PrintAll(printer, argv[2]);
    if (result != Result::kSuccess) {
        std::cerr << Name(result) << ": " << Advice(result) << '\n';
        return 1;
    }
    return 0;
}
