// The symbologies of narrow and wide elements: Code 39 (ISO/IEC 16388), Interleaved 2 of 5 (ISO/IEC 16390) and
// Codabar (EN 798). A wide element is three modules.

#include <array>

#include "virtual_printer/barcodes/barcode.h"

namespace marbex::virtual_printer {
namespace {

constexpr uint8_t kNarrow = 1;
constexpr uint8_t kWide = 3;

struct Pattern {
    char character;
    std::string_view widths;  // bar, space, bar, ...: n narrow, w wide
};

constexpr std::array<Pattern, 44> kCode39{{
    {'0', "nnnwwnwnn"}, {'1', "wnnwnnnnw"}, {'2', "nnwwnnnnw"}, {'3', "wnwwnnnnn"}, {'4', "nnnwwnnnw"},
    {'5', "wnnwwnnnn"}, {'6', "nnwwwnnnn"}, {'7', "nnnwnnwnw"}, {'8', "wnnwnnwnn"}, {'9', "nnwwnnwnn"},
    {'A', "wnnnnwnnw"}, {'B', "nnwnnwnnw"}, {'C', "wnwnnwnnn"}, {'D', "nnnnwwnnw"}, {'E', "wnnnwwnnn"},
    {'F', "nnwnwwnnn"}, {'G', "nnnnnwwnw"}, {'H', "wnnnnwwnn"}, {'I', "nnwnnwwnn"}, {'J', "nnnnwwwnn"},
    {'K', "wnnnnnnww"}, {'L', "nnwnnnnww"}, {'M', "wnwnnnnwn"}, {'N', "nnnnwnnww"}, {'O', "wnnnwnnwn"},
    {'P', "nnwnwnnwn"}, {'Q', "nnnnnnwww"}, {'R', "wnnnnnwwn"}, {'S', "nnwnnnwwn"}, {'T', "nnnnwnwwn"},
    {'U', "wwnnnnnnw"}, {'V', "nwwnnnnnw"}, {'W', "wwwnnnnnn"}, {'X', "nwnnwnnnw"}, {'Y', "wwnnwnnnn"},
    {'Z', "nwwnwnnnn"}, {'-', "nwnnnnwnw"}, {'.', "wwnnnnwnn"}, {' ', "nwwnnnwnn"}, {'*', "nwnnwnwnn"},
    {'$', "nwnwnwnnn"}, {'/', "nwnwnnnwn"}, {'+', "nwnnnwnwn"}, {'%', "nnnwnwnwn"},
}};

constexpr std::array<Pattern, 20> kCodabar{{
    {'0', "nnnnnww"}, {'1', "nnnnwwn"}, {'2', "nnnwnnw"}, {'3', "wwnnnnn"}, {'4', "nnwnnwn"},
    {'5', "wnnnnwn"}, {'6', "nwnnnnw"}, {'7', "nwnnwnn"}, {'8', "nwwnnnn"}, {'9', "wnnwnnn"},
    {'-', "nnnwwnn"}, {'$', "nnwwnnn"}, {':', "wnnnwnw"}, {'/', "wnwnnnw"}, {'.', "wnwnwnn"},
    {'+', "nnwnwnw"}, {'A', "nnwwnwn"}, {'B', "nwnwnnw"}, {'C', "nnnwnww"}, {'D', "nnnwwwn"},
}};

constexpr std::array<std::string_view, 10> kItf{"nnwwn", "wnnnw", "nwnnw", "wwnnn", "nnwnw",
                                                "wnwnn", "nwwnn", "nnnww", "wnnwn", "nwnwn"};

uint8_t Width(char width)
{
    return width == 'w' ? kWide : kNarrow;
}

template <std::size_t N>
bool AppendCharacter(std::vector<uint8_t>& elements, const std::array<Pattern, N>& patterns, char character)
{
    for (const Pattern& pattern : patterns) {
        if (pattern.character == character) {
            if (!elements.empty()) {
                elements.push_back(kNarrow);  // the gap between characters
            }
            for (const char width : pattern.widths) {
                elements.push_back(Width(width));
            }
            return true;
        }
    }
    return false;
}

}  // namespace

Symbol EncodeCode39(std::string_view data)
{
    constexpr std::string_view kName = "CODE 39";
    if (data.empty() || data.find('*') != std::string_view::npos) {
        return Refused(kName, data.empty() ? "no data" : "* stands for start and stop only");
    }
    Symbol symbol;
    symbol.name = kName;
    symbol.text = "*" + std::string(data) + "*";
    for (const char character : symbol.text) {
        if (!AppendCharacter(symbol.elements, kCode39, character)) {
            return Refused(kName, "a character that Code 39 does not have");
        }
    }
    return symbol;
}

Symbol EncodeItf(std::string_view data)
{
    constexpr std::string_view kName = "ITF";
    if (data.empty() || !AllDigits(data) || data.size() % 2 != 0) {
        return Refused(kName, "an even number of digits expected");
    }
    Symbol symbol;
    symbol.name = kName;
    symbol.text = data;
    symbol.elements = {kNarrow, kNarrow, kNarrow, kNarrow};
    for (std::size_t i = 0; i < data.size(); i += 2) {
        const std::string_view bars = kItf[static_cast<std::size_t>(data[i] - '0')];
        const std::string_view spaces = kItf[static_cast<std::size_t>(data[i + 1] - '0')];
        for (std::size_t k = 0; k < bars.size(); ++k) {
            symbol.elements.push_back(Width(bars[k]));
            symbol.elements.push_back(Width(spaces[k]));
        }
    }
    symbol.elements.insert(symbol.elements.end(), {kWide, kNarrow, kNarrow});
    return symbol;
}

Symbol EncodeCodabar(std::string_view data)
{
    constexpr std::string_view kName = "CODABAR";
    const auto isEnd = [](char c) { return c >= 'A' && c <= 'D'; };
    if (data.size() < 3 || !isEnd(data.front()) || !isEnd(data.back())) {
        return Refused(kName, "start and stop characters A to D expected");
    }
    Symbol symbol;
    symbol.name = kName;
    symbol.text = data;
    for (std::size_t i = 0; i < data.size(); ++i) {
        const bool end = i == 0 || i + 1 == data.size();
        if ((isEnd(data[i]) && !end) || !AppendCharacter(symbol.elements, kCodabar, data[i])) {
            return Refused(kName, "a character that Codabar does not have there");
        }
    }
    return symbol;
}

}  // namespace marbex::virtual_printer
