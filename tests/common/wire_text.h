#pragma once

// Bytes on a wire as text: what cannot be printed, and "<", as <1b>.

#include <iomanip>
#include <sstream>
#include <string>
#include <string_view>

namespace marbex::test {

inline std::string WireText(std::string_view bytes)
{
    std::ostringstream text;
    for (const char byte : bytes) {
        if (byte >= ' ' && byte <= '~' && byte != '<') {
            text << byte;
        } else {
            text << '<' << std::hex << std::setw(2) << std::setfill('0') << (byte & 0xFF) << '>';
        }
    }
    return text.str();
}

inline std::string FromWireText(std::string_view text)
{
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '<') {
            bytes += static_cast<char>(std::stoi(std::string(text.substr(i + 1, 2)), nullptr, 16));
            i += 3;
        } else {
            bytes += text[i];
        }
    }
    return bytes;
}

}  // namespace marbex::test
