#include <charconv>

#include "platform/tcp.h"

namespace marbex::platform {

std::optional<uint32_t> ParseIpv4(std::string_view text)
{
    const char* at = text.data();
    const char* const end = at + text.size();
    uint32_t address = 0;
    for (int part = 0; part < 4; ++part) {
        if (part > 0 && (at == end || *at++ != '.')) return std::nullopt;
        uint8_t number = 0;
        const auto [next, error] = std::from_chars(at, end, number);
        // A leading zero makes a number octal for some and decimal for others.
        if (error != std::errc() || (*at == '0' && next - at > 1)) return std::nullopt;
        address = address << 8 | number;
        at = next;
    }
    return at == end ? std::optional(address) : std::nullopt;
}

}  // namespace marbex::platform
