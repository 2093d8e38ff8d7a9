#pragma once

// What differs between models in the conversion of print data; a member of every model's description.

#include <string_view>

namespace marbex::device {

// What the paper-cut escape sequence (ESC|nP) becomes. None of the bytes is 0x00.
struct CutSequence {
    std::string_view partial;  // a number is given and it is below 100
    std::string_view full;     // no number, or 100 and more
    bool endsLine = true;      // the paper stands at the start of a line afterwards
};

inline constexpr CutSequence kCutAfterFourFeeds{"\n\n\n\n\x1Bm", "\n\n\n\n\x1Bi"};
inline constexpr CutSequence kCutAfterFiveFeeds{"\n\n\n\n\n\x1Bm", "\n\n\n\n\n\x1Bi"};
inline constexpr CutSequence kCutAfterSixFeeds{"\n\n\n\n\n\n\x1Bm", "\n\n\n\n\n\n\x1Bi"};
inline constexpr CutSequence kPartialCutAfterFiveFeeds{"\n\n\n\n\n\x1Bm", "\n\n\n\n\n\x1Bm"};
// With a presenter: the cut, a line feed, and GS e 3 3, which holds the paper out.
inline constexpr CutSequence kPartialCutAndPresent{"\n\x1Bm\n\x1D\x65\x03\x03", "\n\x1Bm\n\x1D\x65\x03\x03"};
inline constexpr CutSequence kFullCutAndPresent{"\n\x1Bi\n\x1D\x65\x03\x03", "\n\x1Bi\n\x1D\x65\x03\x03"};
inline constexpr CutSequence kThreeFeedsNoCut{"\n\n\n", "\n\n\n"};
inline constexpr CutSequence kNoCut{"", "", false};

struct ConverterTraits {
    const char* tag = "";  // of the Begin and End lines, without brackets
    CutSequence cut = kCutAfterFourFeeds;
    bool setsLeftMargin = false;  // knows ESC|nM, the left margin in dots
};

}  // namespace marbex::device
