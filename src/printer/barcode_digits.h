#pragma once

#include <algorithm>
#include <string_view>

namespace marbex::printer {

inline bool IsDigit(char character)
{
    return character >= '0' && character <= '9';
}
inline bool AllDigits(std::string_view data)
{
    return std::ranges::all_of(data, IsDigit);
}
inline unsigned DigitValue(char digit)
{
    return static_cast<unsigned>(digit - '0');
}

}  // namespace marbex::printer
