#pragma once

// The characters that the printer holds in its tables.

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace marbex::virtual_printer {

inline constexpr char32_t kNoCharacter = U'\uFFFD';

// The 256 characters of a single-byte character set, by its iconv name; kNoCharacter where it has none.
using CharacterTable = std::array<char32_t, 256>;
const CharacterTable& SingleByteTable(std::string_view charset);

// The table that ESC t n selects; null when the printer has no table of that number.
const CharacterTable* PrinterTable(uint8_t number);

enum class DoubleByteMode : uint8_t { kOff = 0, kGb18030 = 1, kKorean949 = 2 };

// Puts the bytes of a double-byte character together.
class DoubleByteAssembler {
public:
    struct Result {
        bool complete = false;
        char32_t character = kNoCharacter;
    };
    explicit DoubleByteAssembler(DoubleByteMode mode) : mode_(mode) {}
    Result Put(uint8_t byte);
    bool Unfinished() const { return !bytes_.empty(); }
    std::string Take() { return std::exchange(bytes_, {}); }

private:
    DoubleByteMode mode_;
    std::string bytes_;
};

// One character of a charset of glibc's iconv; nothing when the bytes are not one.
std::optional<char32_t> Decode(std::string_view charset, std::string_view bytes);

void AppendUtf8(std::string& text, char32_t character);

}  // namespace marbex::virtual_printer
