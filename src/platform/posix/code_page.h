#pragma once

// One code page, over the C library's iconv. Immutable once made, but for a lock of its own where iconv needs one.

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

// The code page of a Windows number, made at its first use and kept for the life of the process; null when the C
// library does not have it. Any thread.
const CodePage* FindCodePage(uint32_t number);

// The makers of the kinds of pages.

// widen maps the 256 bytes, kUndefinedUnit those without a character.
inline constexpr char16_t kUndefinedUnit = 0xFFFF;
std::unique_ptr<CodePage> MakeSingleBytePage(const char16_t (&widen)[256]);
// single holds the characters of one byte, kUndefinedUnit for lead bytes and undefined ones.
std::unique_ptr<CodePage> MakeMultiBytePage(const char* iconvName, const char16_t (&single)[256]);
std::unique_ptr<CodePage> MakeUtf8Page();

}  // namespace marbex::platform
