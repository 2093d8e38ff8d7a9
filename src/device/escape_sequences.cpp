#include "device/escape_sequences.h"

#include <algorithm>
#include <array>
#include <limits>

namespace marbex::device {

namespace {

struct Suffix {
    std::string_view letters;
    EscapeAction action;
};

// In the order in which they are tried; the first whose letters begin the text is taken.
constexpr std::array<Suffix, 27> kSuffixes{{
    {"P", EscapeAction::kCut},        {"fP", EscapeAction::kIgnore},  // feed and cut
    {"sP", EscapeAction::kIgnore},                                    // feed, cut and stamp
    {"sL", EscapeAction::kIgnore},                                    // stamp
    {"B", EscapeAction::kIgnore},                                     // stored bitmap
    {"tL", EscapeAction::kIgnore},                                    // top logo
    {"bL", EscapeAction::kIgnore},                                    // bottom logo
    {"lF", EscapeAction::kFeedLines}, {"uF", EscapeAction::kIgnore},  // feed units
    {"E", EscapeAction::kEmbed},      {"fT", EscapeAction::kIgnore},  // typeface
    {"bC", EscapeAction::kBold},      {"uC", EscapeAction::kUnderline},       {"iC", EscapeAction::kItalic},
    {"rC", EscapeAction::kIgnore},   // alternate colour
    {"rvC", EscapeAction::kIgnore},  // reverse video
    {"sC", EscapeAction::kIgnore},   // shading
    {"C", EscapeAction::kSize},       {"hC", EscapeAction::kHorizontalScale}, {"vC", EscapeAction::kVerticalScale},
    {"fC", EscapeAction::kIgnore},   // colour
    {"tbC", EscapeAction::kIgnore},  // subscript
    {"tpC", EscapeAction::kIgnore},  // superscript
    {"cA", EscapeAction::kCentre},    {"rA", EscapeAction::kRight},           {"M", EscapeAction::kLeftMargin},
    {"N", EscapeAction::kNormal},
}};

constexpr bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

// As atol reads it: blanks, a sign, digits up to the first byte that is none; saturating.
int32_t ReadNumber(std::string_view field)
{
    const auto* at =
        std::find_if(field.begin(), field.end(), [](char c) { return c != ' ' && (c < '\t' || c > '\r'); });
    const bool negative = at != field.end() && *at == '-';
    if (at != field.end() && (*at == '-' || *at == '+')) ++at;
    int64_t number = 0;
    for (; at != field.end() && IsDigit(*at); ++at) {
        number = std::min<int64_t>(number * 10 + (*at - '0'), int64_t{1} << 32);
    }
    if (negative) number = -number;
    return static_cast<int32_t>(
        std::clamp<int64_t>(number, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()));
}

}  // namespace

EscapeSequence ReadEscapeSequence(std::string_view text, const AnsiCharacters& characters, bool knowsLeftMargin)
{
    constexpr std::size_t kIntroduction = 2;
    EscapeSequence sequence;
    const std::string_view rest = text.substr(kIntroduction);
    const std::size_t fieldLength = characters.FindLetter(rest);
    if (fieldLength == std::string_view::npos) {
        sequence.length = text.size();
        return sequence;
    }
    sequence.numberGiven = fieldLength != 0;
    sequence.number = ReadNumber(rest.substr(0, fieldLength));
    sequence.length = kIntroduction + fieldLength;

    const std::string_view letters = rest.substr(fieldLength);
    const auto suffix = std::find_if(kSuffixes.begin(), kSuffixes.end(), [&](const Suffix& candidate) {
        return letters.starts_with(candidate.letters) &&
               (knowsLeftMargin || candidate.action != EscapeAction::kLeftMargin);
    });
    if (suffix != kSuffixes.end()) {
        sequence.action = suffix->action;
        sequence.length += suffix->letters.size();
    }
    return sequence;
}

}  // namespace marbex::device
