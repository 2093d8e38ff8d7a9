#pragma once

// What tells one printer of the family from another, seen from the printer's side.

#include <cstdint>
#include <span>
#include <string_view>

namespace marbex::virtual_printer {

struct Model {
    std::string_view name;    // as a profile names it
    uint16_t identity;        // below 0x100: the answer to GS I 1; else that answer is 0xFF and GS I 0xFF tells this
    uint16_t printableDots;   // at 8 dots a millimetre
    bool cutter = true;       // has a cutter: ESC i, ESC m
    bool presenter = false;   // carries the cut ticket to the customer: GS e
    bool drawer = false;      // has a drawer connector
    uint8_t displayRows = 0;  // rows of 20 characters of the line display, 0 without one
    bool displayOnOwnLine = false;  // the display has a serial line of its own; else it shares the printer's
    std::string_view displayCharset = "CP437";
    uint16_t wideDots = 0;  // printable width of the wide mechanism, 0 when there is none; such a printer can be asked
    bool tellsPrinting = false;  // the full status tells whether a picture is still being printed, and a paper jam
    bool takesStartUp = false;   // understands FS < name >
    uint32_t buffer = 4096;      // bytes taken from the link before they are printed
};

// The eighteen models, in the order of their indices.
std::span<const Model> Models();
const Model* FindModel(std::string_view name);  // regardless of case; null when there is none

}  // namespace marbex::virtual_printer
