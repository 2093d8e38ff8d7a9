#pragma once

// The OPOS escape sequences of print data: ESC, "|", an optional decimal number and one to three letters.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "device/ansi_characters.h"

namespace marbex::device {

enum class EscapeAction : uint8_t {
    kUnknown,
    kIgnore,  // known and consumed, without effect on these printers
    kCut,
    kFeedLines,
    kEmbed,
    kBold,
    kUnderline,
    kItalic,
    kSize,
    kHorizontalScale,
    kVerticalScale,
    kCentre,
    kRight,
    kLeftMargin,
    kNormal,
};

struct EscapeSequence {
    EscapeAction action = EscapeAction::kUnknown;
    bool numberGiven = false;  // the number field is not empty, whatever stands in it
    int32_t number = 0;        // 0 when not given or not a number; saturated at its limits
    std::size_t length = 0;    // bytes of it; of an unknown one up to its first letter, or to the end without a letter
};

// Reads the sequence at the start of text, which begins with ESC and "|". knowsLeftMargin: "M" is one of them.
EscapeSequence ReadEscapeSequence(std::string_view text, const AnsiCharacters& characters, bool knowsLeftMargin);

}  // namespace marbex::device
