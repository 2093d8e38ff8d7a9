#include "printer/charset_encoder.h"

#include <algorithm>
#include <atomic>

#include "platform/text.h"
#include "printer/charset_tables.h"

namespace marbex::printer {

namespace internal {

// A code page turned round: the byte of every character, 0 for a character that is not in it. The upper half of a page
// draws on few blocks of 256 characters, so two steps cover all of them in about two kilobytes a page.
struct ReverseTable {
    static constexpr std::size_t kMostBlocks = 9;  // block 0 is the empty one; 862 needs the other eight

    uint32_t codePage = 0;
    std::array<uint8_t, 256> blockOf{};  // by the character's high byte
    std::array<std::array<uint8_t, 256>, kMostBlocks> blocks{};

    constexpr uint8_t Find(char16_t character) const { return blocks[blockOf[character >> 8]][character & 0xFF]; }
};

}  // namespace internal

namespace {

using internal::ReverseTable;

constexpr ReverseTable TurnRound(const UnicodeTable& table)
{
    ReverseTable reverse;
    reverse.codePage = table.codePage;
    uint8_t blocksUsed = 1;
    for (std::size_t i = 0; i < table.upperHalf.size(); ++i) {
        const char16_t character = table.upperHalf[i];
        uint8_t& block = reverse.blockOf[character >> 8];
        if (block == 0) block = blocksUsed++;
        uint8_t& byte = reverse.blocks[block][character & 0xFF];
        if (byte == 0) byte = static_cast<uint8_t>(0x80 + i);
    }
    return reverse;
}

constexpr auto kReverseTables = [] {
    std::array<ReverseTable, kUnicodeTables.size()> tables;
    std::transform(kUnicodeTables.begin(), kUnicodeTables.end(), tables.begin(), TurnRound);
    return tables;
}();

const ReverseTable* FindReverseTable(uint32_t codePage)
{
    const auto found = std::find_if(kReverseTables.begin(), kReverseTables.end(),
                                    [codePage](const ReverseTable& table) { return table.codePage == codePage; });
    return found == kReverseTables.end() ? nullptr : &*found;
}

// What the platform answered for characters met before. Asking it takes long enough to be felt on a till that prints a
// whole receipt in a script of the platform's pages. An entry is one word (code page, character, up to four bytes), so
// threads can share the memory without a lock; two characters that fall on one place push each other out.
class PlatformMemory {
public:
    bool Find(uint32_t codePage, char16_t character, EncodedCharacter& encoded) const
    {
        const uint64_t word = Place(codePage, character).load(std::memory_order_relaxed);
        if (word >> 32 != Key(codePage, character)) return false;
        encoded = {};
        for (auto rest = static_cast<uint32_t>(word); rest != 0; rest >>= 8) {
            encoded.bytes[encoded.length++] = static_cast<char>(rest & 0xFF);
        }
        return true;
    }

    void Remember(uint32_t codePage, char16_t character, const EncodedCharacter& encoded)
    {
        if (codePage > 0xFFFF || encoded.length > 4) return;
        uint64_t word = uint64_t{Key(codePage, character)} << 32;
        for (std::size_t i = 0; i < encoded.length; ++i) {
            const auto byte = static_cast<uint8_t>(encoded.bytes[i]);
            if (byte == 0) return;  // the first 0x00 of a word ends the bytes
            word |= uint64_t{byte} << (8 * i);
        }
        Place(codePage, character).store(word, std::memory_order_relaxed);
    }

private:
    static constexpr std::size_t kPlaces = 4096;

    static uint32_t Key(uint32_t codePage, char16_t character) { return codePage << 16 | character; }

    static std::size_t Index(uint32_t codePage, char16_t character)
    {
        return (character + codePage * 0x9E5u) % kPlaces;
    }

    std::atomic<uint64_t>& Place(uint32_t codePage, char16_t character) { return words_[Index(codePage, character)]; }
    const std::atomic<uint64_t>& Place(uint32_t codePage, char16_t character) const
    {
        return words_[Index(codePage, character)];
    }

    std::array<std::atomic<uint64_t>, kPlaces> words_{};
};

PlatformMemory platformMemory;

EncodedCharacter EncodeByPlatform(uint32_t codePage, char16_t character)
{
    EncodedCharacter encoded;
    if (platformMemory.Find(codePage, character, encoded)) return encoded;
    std::string bytes;
    if (platform::ToCodePage(codePage, {&character, 1}, bytes) == platform::CodePageResult::kOk &&
        bytes.size() <= encoded.bytes.size() && !bytes.starts_with('?')) {
        std::copy(bytes.begin(), bytes.end(), encoded.bytes.begin());
        encoded.length = static_cast<uint8_t>(bytes.size());
    }
    platformMemory.Remember(codePage, character, encoded);
    return encoded;
}

}  // namespace

CodePageEncoder::CodePageEncoder(uint32_t codePage) : codePage_(codePage), table_(FindReverseTable(codePage)) {}

EncodedCharacter CodePageEncoder::Encode(char16_t character) const
{
    if (table_ == nullptr) return EncodeByPlatform(codePage_, character);
    EncodedCharacter encoded;
    const uint8_t byte = table_->Find(character);
    encoded.bytes[0] = static_cast<char>(byte);
    encoded.length = byte != 0 ? 1 : 0;
    return encoded;
}

std::size_t EncodeToCodePage(uint32_t codePage, std::u16string_view text, char defaultChar, std::string& bytes)
{
    const std::size_t before = bytes.size();
    const ReverseTable* table = FindReverseTable(codePage);
    if (table == nullptr) {
        std::string converted;
        if (platform::ToCodePage(codePage, text, converted) == platform::CodePageResult::kOk) bytes += converted;
        return bytes.size() - before;
    }
    for (const char16_t character : text) {
        const uint8_t byte = character < 0x80 ? static_cast<uint8_t>(character) : table->Find(character);
        bytes.push_back(byte != 0 || character == 0 ? static_cast<char>(byte) : defaultChar);
    }
    return text.size();
}

}  // namespace marbex::printer
