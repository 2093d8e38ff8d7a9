#include "virtual_printer/barcodes/barcode.h"

#include <algorithm>
#include <utility>

namespace marbex::virtual_printer {

Symbol EncodeSymbol(uint8_t m, std::span<const uint8_t> data)
{
    const std::string text(data.begin(), data.end());
    switch (m) {
        case 0x41:
            return EncodeUpcA(text);
        case 0x42:
            return EncodeUpcE(text);
        case 0x43:
            return EncodeEan13(text);
        case 0x44:
            return EncodeEan8(text);
        case 0x45:
            return EncodeCode39(text);
        case 0x46:
            return EncodeItf(text);
        case 0x47:
            return EncodeCodabar(text);
        case 0x48:
            return EncodeCode93(text);
        case 0x49:
            return EncodeCode128(text);
        default:
            return Refused("", "no such symbology");
    }
}

bool AllDigits(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

Symbol Refused(std::string_view name, std::string problem)
{
    Symbol symbol;
    symbol.name = name;
    symbol.problem = std::move(problem);
    return symbol;
}

void AppendModules(std::vector<uint8_t>& elements, std::string_view modules)
{
    for (const char module : modules) {
        const bool bar = module == '1';
        const bool lastIsBar = elements.size() % 2 == 1;
        if (!elements.empty() && bar == lastIsBar) {
            ++elements.back();
        } else {
            elements.push_back(1);
        }
    }
}

}  // namespace marbex::virtual_printer
