#pragma once

// Characters into the bytes of a Windows code page. The eleven pages that the printers hold in their own memory have
// tables here; every other page is the platform's. Nothing is replaced by a similar character. Any thread.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace marbex::printer {

namespace internal {
struct ReverseTable;
}  // namespace internal

// The bytes of one character; none when the code page does not hold it.
struct EncodedCharacter {
    std::array<char, 7> bytes{};
    uint8_t length = 0;

    explicit operator bool() const { return length != 0; }
    std::string_view View() const { return {bytes.data(), length}; }
};

// One code page, ready to encode. A small value.
class CodePageEncoder {
public:
    explicit CodePageEncoder(uint32_t codePage);

    // A character outside ASCII, or one half of a surrogate pair, which no code page holds. A lone "?" counts as
    // failure: it is what converters put for a character they do not know. Constant time for the built-in pages; for
    // the others a character met before is remembered.
    EncodedCharacter Encode(char16_t character) const;

private:
    uint32_t codePage_;
    const internal::ReverseTable* table_;  // null for the platform's pages
};

// Appends text to bytes and returns how many bytes were added. With the built-in pages each character that the page
// does not hold becomes defaultChar; with the others such a character makes the whole call fail: 0, and bytes as they
// were.
std::size_t EncodeToCodePage(uint32_t codePage, std::u16string_view text, char defaultChar, std::string& bytes);

}  // namespace marbex::printer
