#include "device/ansi_characters.h"

#include <algorithm>
#include <array>
#include <bit>

namespace marbex::device {

namespace {

struct ByteRange {
    uint8_t first;
    uint8_t last;
};

constexpr bool Contains(const std::array<ByteRange, 3>& ranges, uint8_t byte)
{
    return std::any_of(ranges.begin(), ranges.end(),
                       [byte](ByteRange range) { return byte >= range.first && byte <= range.last; });
}

constexpr bool IsLetter(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

constexpr bool IsForeign(char c)
{
    return static_cast<uint8_t>(c) >= 0x80;
}

// Eight bytes as a number, the first the lowest.
uint64_t LoadEight(const char* from)
{
    uint64_t word = 0;
    for (int i = 0; i < 8; ++i)
        word |= uint64_t{static_cast<uint8_t>(from[i])} << (8 * i);
    return word;
}

constexpr uint64_t EveryByte(uint8_t value)
{
    return 0x0101010101010101u * value;
}

// The top bit of the lowest zero byte; bits above that one may be set without meaning.
constexpr uint64_t MarkLowestZeroByte(uint64_t word)
{
    return (word - EveryByte(0x01)) & ~word & EveryByte(0x80);
}

}  // namespace

// Windows' double-byte ANSI code pages: https://www.unicode.org/Public/MAPPINGS/VENDORS/MICSFT/WINDOWS/
struct AnsiCharacters::DoubleBytePage {
    uint32_t codePage;
    std::array<ByteRange, 3> lead;
    std::array<ByteRange, 3> trail;
};

namespace {

constexpr uint32_t kGb18030 = 54936;

constexpr std::array<AnsiCharacters::DoubleBytePage, 6> kDoubleBytePages{{
    {932, {{{0x81, 0x9F}, {0xE0, 0xFC}, {0xFF, 0x00}}}, {{{0x40, 0x7E}, {0x80, 0xFC}, {0xFF, 0x00}}}},
    {936, {{{0x81, 0xFE}, {0xFF, 0x00}, {0xFF, 0x00}}}, {{{0x40, 0x7E}, {0x80, 0xFE}, {0xFF, 0x00}}}},
    {949, {{{0x81, 0xFE}, {0xFF, 0x00}, {0xFF, 0x00}}}, {{{0x41, 0x5A}, {0x61, 0x7A}, {0x81, 0xFE}}}},
    {950, {{{0x81, 0xFE}, {0xFF, 0x00}, {0xFF, 0x00}}}, {{{0x40, 0x7E}, {0xA1, 0xFE}, {0xFF, 0x00}}}},
    {1361, {{{0x84, 0xD3}, {0xD8, 0xDE}, {0xE0, 0xF9}}}, {{{0x31, 0x7E}, {0x81, 0xFE}, {0xFF, 0x00}}}},
    {kGb18030, {{{0x81, 0xFE}, {0xFF, 0x00}, {0xFF, 0x00}}}, {{{0x40, 0x7E}, {0x80, 0xFE}, {0xFF, 0x00}}}},
}};

}  // namespace

AnsiCharacters::AnsiCharacters(uint32_t codePage) : page_(nullptr)
{
    for (const DoubleBytePage& page : kDoubleBytePages) {
        if (page.codePage == codePage) page_ = &page;
    }
}

std::size_t AnsiCharacters::PlainRun(std::string_view text)
{
    std::size_t i = 0;
    for (; i + 8 <= text.size(); i += 8) {
        const uint64_t word = LoadEight(text.data() + i);
        const uint64_t stops = (word & EveryByte(0x80)) | MarkLowestZeroByte(word ^ EveryByte('\r')) |
                               MarkLowestZeroByte(word ^ EveryByte(0x1B));
        if (stops != 0) return i + static_cast<std::size_t>(std::countr_zero(stops)) / 8;
    }
    while (i < text.size() && !IsForeign(text[i]) && text[i] != '\r' && text[i] != '\x1B')
        ++i;
    return i;
}

// Of one character outside ASCII. A first byte without its second is a character of its own, a malformed one.
std::size_t AnsiCharacters::ForeignLength(std::string_view text) const
{
    const auto isLead = [this](char c) { return Contains(page_->lead, static_cast<uint8_t>(c)); };
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    if (page_ == nullptr || text.size() < 2 || !isLead(text[0])) return 1;
    if (Contains(page_->trail, static_cast<uint8_t>(text[1]))) return 2;
    const bool four =
        page_->codePage == kGb18030 && text.size() >= 4 && isDigit(text[1]) && isLead(text[2]) && isDigit(text[3]);
    return four ? 4 : 1;
}

std::size_t AnsiCharacters::ForeignRun(std::string_view text) const
{
    std::size_t i = 0;
    while (i < text.size() && IsForeign(text[i]))
        i += ForeignLength(text.substr(i));
    return i;
}

std::size_t AnsiCharacters::FindLetter(std::string_view text) const
{
    std::size_t i = 0;
    while (i < text.size() && !IsLetter(text[i]))
        i += IsForeign(text[i]) ? ForeignLength(text.substr(i)) : 1;
    return i < text.size() ? i : std::string_view::npos;
}

}  // namespace marbex::device
