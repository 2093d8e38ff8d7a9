#pragma once

// The printer's own barcodes: from the data of GS k to bars and spaces.

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace marbex::virtual_printer {

struct Symbol {
    std::string_view name;
    std::vector<uint8_t> elements;  // widths in modules: bar, space, bar, ..., bar
    std::string text;               // human-readable
    std::string problem;            // why there are no bars; empty when there are
};

// m: the symbology byte of GS k, 0x41 to 0x49.
Symbol EncodeSymbol(uint8_t m, std::span<const uint8_t> data);

// One a symbology group.
Symbol EncodeUpcA(std::string_view data);  // ISO/IEC 15420
Symbol EncodeUpcE(std::string_view data);
Symbol EncodeEan13(std::string_view data);
Symbol EncodeEan8(std::string_view data);
Symbol EncodeCode39(std::string_view data);   // ISO/IEC 16388
Symbol EncodeItf(std::string_view data);      // ISO/IEC 16390
Symbol EncodeCodabar(std::string_view data);  // EN 798
Symbol EncodeCode93(std::string_view data);   // AIM BC5
Symbol EncodeCode128(std::string_view data);  // ISO/IEC 15417

// Helpers of the encoders.
bool AllDigits(std::string_view text);
Symbol Refused(std::string_view name, std::string problem);
// Appends a pattern of modules ("1" bar, "0" space) to elements, joining it with what stands at their end.
void AppendModules(std::vector<uint8_t>& elements, std::string_view modules);

}  // namespace marbex::virtual_printer
