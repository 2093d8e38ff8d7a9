#pragma once

// Where characters begin and end in text of an ANSI code page. In the double-byte pages the second byte of a character
// may look like an ASCII letter, and GB 18030 has characters of four bytes too; in all the others, UTF-8 included, a
// byte below 0x80 is always an ASCII character.

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace marbex::device {

class AnsiCharacters {
public:
    explicit AnsiCharacters(uint32_t codePage);

    // The following take text that begins at the start of a character; the results are numbers of bytes.

    // ASCII characters other than CR and ESC at the start of text. The same for every code page.
    static std::size_t PlainRun(std::string_view text);

    // Characters outside ASCII at the start of text.
    std::size_t ForeignRun(std::string_view text) const;

    // What stands before the first ASCII letter; npos when there is none.
    std::size_t FindLetter(std::string_view text) const;

    struct DoubleBytePage;

private:
    std::size_t ForeignLength(std::string_view text) const;

    const DoubleBytePage* page_;  // null for all other pages
};

}  // namespace marbex::device
