#pragma once

// One code page, made of what the operating system knows about it. Immutable once made, but for what a converter of the
// system needs. Any thread.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace marbex::platform {

class CodePage {
public:
    virtual ~CodePage() = default;

    // Appends text to wide.
    virtual void Widen(std::string_view text, std::u16string& wide) const = 0;

    // Appends one character (not a surrogate); false, and nothing is appended, when the page does not hold it.
    virtual bool Append(char32_t character, std::string& bytes) const = 0;

    // The byte that the page leaves undefined and that widens to this unit; -1 when there is none.
    virtual int UndefinedByteOf(char16_t unit) const = 0;
};

// The code page of a Windows number, made at its first use and kept for the life of the process; null when the system
// does not have it, which is never so for kWesternNumber. Any thread.
const CodePage* FindCodePage(uint32_t number);

inline constexpr uint32_t kWesternNumber = 1252;
inline constexpr uint32_t kUtf8Number = 65001;

// The makers of the kinds of pages.

// widen maps the 256 bytes, kUndefinedUnit those without a character.
inline constexpr char16_t kUndefinedUnit = 0xFFFF;
std::unique_ptr<CodePage> MakeSingleBytePage(const char16_t (&widen)[256]);

// Code page 1252 has a table of its own, so that there is a page to fall back to whatever the system has installed.
std::unique_ptr<CodePage> MakeWesternPage();

std::unique_ptr<CodePage> MakeUtf8Page();

// The longest character of any page: GB18030.
inline constexpr std::size_t kLongestCharacter = 4;

// What the operating system converts one character at a time. Used by one thread at a time.
class CharacterConverter {
public:
    virtual ~CharacterConverter() = default;

    enum class Decoded { kCharacter, kIncomplete, kMalformed };
    // Appends the one character that all of bytes make, 2 to kLongestCharacter of them, to wide. kIncomplete: more
    // bytes may make one.
    virtual Decoded Decode(std::string_view bytes, std::u16string& wide) = 0;

    // Writes the bytes of one character (not a surrogate) into room; their count, 0 when the page does not hold it. No
    // substitutes.
    virtual std::size_t Encode(char32_t character, char (&room)[kLongestCharacter]) = 0;
};

// Marks, in a table of single bytes, those that begin a longer character.
inline constexpr char16_t kLeadUnit = 0xFFFE;

// single holds the characters of one byte, kLeadUnit for lead bytes and kUndefinedUnit for undefined ones. The page
// holds only what comes back as itself: what converter says of a character is checked by turning its bytes round.
std::unique_ptr<CodePage> MakeMultiBytePage(std::unique_ptr<CharacterConverter> converter,
                                            const char16_t (&single)[256]);

}  // namespace marbex::platform
