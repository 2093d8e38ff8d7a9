#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "printer/charset_encoder.h"
#include "support/printer_tables.h"

namespace marbex::printer {

// Prints the characters outside ASCII of one text: stays in the printer's current character set as long as that holds
// the character, and otherwise selects the next set of the list that does. Lives for one text, which begins in table 0.
class CharsetSwitcher {
public:
    // sets: what the printer offers, the first of them its table 0; must outlive the switcher.
    // fixedCodePage: not 0 when a national table is loaded into table 0; then nothing is ever selected.
    CharsetSwitcher(std::span<const support::CharSetStruct> sets, uint32_t fixedCodePage);

    // Appends the bytes of one character, after those that select its set where a switch is needed, or "?" when no set
    // holds it. A 0x00 byte is written as support::kNulMarker.
    void ConvertCharacter(char16_t character, std::string& output);

private:
    void SwitchAndConvert(char16_t character, std::string& output);

    std::span<const support::CharSetStruct> sets_;
    bool fixed_;
    std::size_t current_ = 0;  // index into sets_
    CodePageEncoder encoder_;  // of the fixed code page or the current set
};

}  // namespace marbex::printer
