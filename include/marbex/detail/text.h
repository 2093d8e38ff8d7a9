#pragma once

// UTF-8, as applications have it, to and from UTF-16, as the service objects take it. What is not well-formed becomes
// U+FFFD, one for each byte or unit, and prints as "?".

#include <cstddef>
#include <string>
#include <string_view>

namespace marbex::detail {

inline constexpr char32_t kReplacement = 0xFFFD;

inline void AppendUtf16(std::u16string& text, char32_t character)
{
    if (character < 0x10000) {
        text += static_cast<char16_t>(character);
    } else {
        text += static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10));
        text += static_cast<char16_t>(0xDC00 + ((character - 0x10000) & 0x3FF));
    }
}

inline void AppendUtf8(std::string& text, char32_t character)
{
    if (character < 0x80) {
        text += static_cast<char>(character);
        return;
    }
    const int following = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
    constexpr unsigned kLead[] = {0, 0xC0, 0xE0, 0xF0};
    text += static_cast<char>(kLead[following] | (character >> (6 * following)));
    for (int i = following - 1; i >= 0; --i)
        text += static_cast<char>(0x80 | ((character >> (6 * i)) & 0x3F));
}

// The character that begins at place, which moves behind it.
inline char32_t NextOfUtf8(std::string_view text, std::size_t& place)
{
    const auto byteAt = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    const unsigned lead = byteAt(place++);
    if (lead < 0x80) return lead;
    const int following = lead >= 0xF0 && lead < 0xF8 ? 3 : lead >= 0xE0 ? 2 : 1;
    if (lead < 0xC2 || lead >= 0xF8 || text.size() - place < static_cast<std::size_t>(following)) return kReplacement;
    char32_t character = lead & (0x3FU >> following);
    for (int i = 0; i < following; ++i) {
        const unsigned next = byteAt(place + static_cast<std::size_t>(i));
        if ((next & 0xC0) != 0x80) return kReplacement;
        character = (character << 6) | (next & 0x3F);
    }
    constexpr char32_t kSmallest[] = {0, 0x80, 0x800, 0x10000};
    if (character < kSmallest[following] || character > 0x10FFFF || (character & 0x1FF800) == 0xD800)
        return kReplacement;
    place += static_cast<std::size_t>(following);
    return character;
}

inline std::u16string ToUtf16(std::string_view text)
{
    std::u16string wide;
    for (std::size_t place = 0; place < text.size();)
        AppendUtf16(wide, NextOfUtf8(text, place));
    return wide;
}

inline std::string ToUtf8(std::u16string_view wide)
{
    std::string text;
    for (std::size_t i = 0; i < wide.size(); ++i) {
        char32_t character = wide[i];
        const bool isPair = (character & 0xFC00) == 0xD800 && i + 1 < wide.size() && (wide[i + 1] & 0xFC00) == 0xDC00;
        if (isPair) {
            character = 0x10000 + ((character & 0x3FF) << 10) + (wide[++i] & 0x3FFU);
        } else if ((character & 0xF800) == 0xD800) {
            character = kReplacement;
        }
        AppendUtf8(text, character);
    }
    return text;
}

}  // namespace marbex::detail
