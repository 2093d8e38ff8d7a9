#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "virtual_printer/printer.h"

namespace marbex::virtual_printer {

// "1B 40 'text'" in C++: bytes written as numbers and text, joined.
inline std::string Joined(std::initializer_list<std::string_view> parts)
{
    std::string all;
    for (const std::string_view part : parts) {
        all.append(part);
    }
    return all;
}

// A string with zeros in it.
template <std::size_t N>
std::string_view Z(const char (&literal)[N])
{
    return {literal, N - 1};
}

}  // namespace marbex::virtual_printer
