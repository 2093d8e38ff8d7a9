#include "platform/posix/usb_sysfs.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>

namespace marbex::platform {

namespace {

namespace fs = std::filesystem;

std::string FirstLine(const fs::path& file)
{
    std::string line;
    std::ifstream stream(file);
    std::getline(stream, line);
    while (!line.empty() && std::isspace(static_cast<unsigned char>(line.back())) != 0)
        line.pop_back();
    return line;
}

bool IsPrinterName(const std::string& name)
{
    return name.starts_with("lp") && name.size() > 2 && name.size() < 8 &&
           std::all_of(name.begin() + 2, name.end(), [](unsigned char c) { return std::isdigit(c) != 0; });
}

}  // namespace

std::vector<KernelUsbPrinter> FindKernelUsbPrinters(const std::string& classFolder, const std::string& deviceFolder)
{
    std::vector<KernelUsbPrinter> printers;
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(classFolder, ignored)) {
        KernelUsbPrinter printer;
        printer.name = entry.path().filename().string();
        if (!IsPrinterName(printer.name)) continue;
        const fs::path interface = fs::canonical(entry.path() / "device", ignored);
        if (interface.empty()) continue;
        printer.node = (fs::path(deviceFolder) / printer.name).string();
        printer.instance = interface.filename().string();
        printer.vendor = FirstLine(interface.parent_path() / "idVendor");
        printer.device = FirstLine(interface.parent_path() / "idProduct");
        printer.product = FirstLine(interface.parent_path() / "product");
        std::replace(printer.product.begin(), printer.product.end(), '\\', '_');
        if (printer.vendor.size() == 4 && printer.device.size() == 4) printers.push_back(std::move(printer));
    }
    const auto number = [](const KernelUsbPrinter& printer) { return std::stoi(printer.name.substr(2)); };
    std::sort(printers.begin(), printers.end(), [&](const auto& a, const auto& b) { return number(a) < number(b); });
    return printers;
}

}  // namespace marbex::platform
