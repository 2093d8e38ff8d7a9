#pragma once

// One character of UTF-8 at a time.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace marbex::platform {

inline constexpr char32_t kReplacementCharacter = 0xFFFD;

struct Utf8Character {
    char32_t value = 0;
    std::size_t length = 0;  // bytes taken
    bool wellFormed = false;
};

// The character at the start of text, which must not be empty. A malformed sequence gives kReplacementCharacter for its
// longest beginning that could have become a character, as the Unicode Standard (3.9, "maximal subpart") recommends.
Utf8Character DecodeUtf8(std::string_view text);

void AppendUtf8(std::string& text, char32_t character);
void AppendUtf16(std::u16string& text, char32_t character);

bool IsUtf8(std::string_view text);

// The character without regard to case: lower case in the Latin, Greek and Cyrillic alphabets.
char32_t FoldCase(char32_t character);

// The text without regard to case; malformed sequences stay as they are.
std::string FoldCase(std::string_view text);

}  // namespace marbex::platform
