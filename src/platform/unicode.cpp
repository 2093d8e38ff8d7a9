#include "platform/unicode.h"

#include <algorithm>

#include "platform/registry.h"
#include "platform/text.h"

namespace marbex::platform {

namespace {

struct LeadByte {
    std::size_t following;  // 0: not the beginning of a longer sequence
    char32_t bits;
    unsigned char secondMin, secondMax;  // the Unicode Standard, table 3-7
};

LeadByte ReadLeadByte(unsigned char byte)
{
    if (byte >= 0xC2 && byte <= 0xDF) return {1, byte & 0x1Fu, 0x80, 0xBF};
    if (byte == 0xE0) return {2, 0x0, 0xA0, 0xBF};
    if (byte == 0xED) return {2, 0xD, 0x80, 0x9F};
    if (byte >= 0xE1 && byte <= 0xEF) return {2, byte & 0x0Fu, 0x80, 0xBF};
    if (byte == 0xF0) return {3, 0x0, 0x90, 0xBF};
    if (byte >= 0xF1 && byte <= 0xF3) return {3, byte & 0x07u, 0x80, 0xBF};
    if (byte == 0xF4) return {3, 0x4, 0x80, 0x8F};
    return {0, 0, 0, 0};
}

bool IsHighSurrogate(char16_t unit)
{
    return unit >= 0xD800 && unit <= 0xDBFF;
}
bool IsLowSurrogate(char16_t unit)
{
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

}  // namespace

Utf8Character DecodeUtf8(std::string_view text)
{
    const auto first = static_cast<unsigned char>(text.front());
    if (first < 0x80) return {first, 1, true};
    const LeadByte lead = ReadLeadByte(first);
    if (lead.following == 0) return {kReplacementCharacter, 1, false};
    char32_t value = lead.bits;
    for (std::size_t i = 1; i <= lead.following; ++i) {
        if (i == text.size()) return {kReplacementCharacter, i, false};
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte < (i == 1 ? lead.secondMin : 0x80) || byte > (i == 1 ? lead.secondMax : 0xBF)) {
            return {kReplacementCharacter, i, false};
        }
        value = (value << 6) | (byte & 0x3Fu);
    }
    return {value, lead.following + 1, true};
}

void AppendUtf8(std::string& text, char32_t character)
{
    const auto byte = [&text](char32_t value) { text += static_cast<char>(static_cast<unsigned char>(value)); };
    if (character < 0x80) {
        byte(character);
    } else if (character < 0x800) {
        byte(0xC0 | (character >> 6));
        byte(0x80 | (character & 0x3F));
    } else if (character < 0x10000) {
        byte(0xE0 | (character >> 12));
        byte(0x80 | ((character >> 6) & 0x3F));
        byte(0x80 | (character & 0x3F));
    } else {
        byte(0xF0 | (character >> 18));
        byte(0x80 | ((character >> 12) & 0x3F));
        byte(0x80 | ((character >> 6) & 0x3F));
        byte(0x80 | (character & 0x3F));
    }
}

void AppendUtf16(std::u16string& text, char32_t character)
{
    if (character < 0x10000) {
        text += static_cast<char16_t>(character);
    } else {
        text += static_cast<char16_t>(0xD7C0 + (character >> 10));
        text += static_cast<char16_t>(0xDC00 + (character & 0x3FF));
    }
}

bool IsUtf8(std::string_view text)
{
    while (!text.empty()) {
        const Utf8Character character = DecodeUtf8(text);
        if (!character.wellFormed) return false;
        text.remove_prefix(character.length);
    }
    return true;
}

char32_t FoldCase(char32_t c)
{
    if (c < 0x80) return c >= 'A' && c <= 'Z' ? c + 32 : c;
    if (c >= 0xC0 && c <= 0xDE && c != 0xD7) return c + 32;
    if (c == 0x178) return 0xFF;
    if ((c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E)) return (c & 1) != 0 ? c + 1 : c;
    if (c >= 0x100 && c <= 0x177 && c != 0x130 && c != 0x131 && c != 0x138) return c | 1;
    if (c == 0x386) return 0x3AC;
    if (c >= 0x388 && c <= 0x38A) return c + 37;
    if (c == 0x38C) return 0x3CC;
    if (c == 0x38E || c == 0x38F) return c + 63;
    if (c >= 0x391 && c <= 0x3AB && c != 0x3A2) return c + 32;
    if (c >= 0x400 && c <= 0x40F) return c + 80;
    if (c >= 0x410 && c <= 0x42F) return c + 32;
    if (c >= 0x460 && c <= 0x481) return c | 1;
    return c;
}

std::string FoldCase(std::string_view text)
{
    std::string folded;
    folded.reserve(text.size());
    while (!text.empty()) {
        const Utf8Character character = DecodeUtf8(text);
        if (character.wellFormed) {
            AppendUtf8(folded, FoldCase(character.value));
        } else {
            folded += text.substr(0, character.length);
        }
        text.remove_prefix(character.length);
    }
    return folded;
}

bool SameName(std::string_view one, std::string_view other)
{
    return one == other || FoldCase(one) == FoldCase(other);
}

std::string Utf8FromUtf16(std::u16string_view text)
{
    std::string utf8;
    utf8.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i];
        if (IsHighSurrogate(unit) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
            ++i;
            AppendUtf8(utf8, 0x10000 + ((static_cast<char32_t>(unit) & 0x3FF) << 10) + (text[i] & 0x3FFu));
        } else {
            AppendUtf8(utf8, IsHighSurrogate(unit) || IsLowSurrogate(unit) ? kReplacementCharacter : unit);
        }
    }
    return utf8;
}

std::u16string Utf16FromUtf8(std::string_view text)
{
    std::u16string utf16;
    utf16.reserve(text.size());
    while (!text.empty()) {
        const Utf8Character character = DecodeUtf8(text);
        AppendUtf16(utf16, character.value);
        text.remove_prefix(character.length);
    }
    return utf16;
}

}  // namespace marbex::platform
