// Code 128 by ISO/IEC 15417.

#include <array>

#include "printer/barcode_digits.h"
#include "printer/barcode_symbology.h"

namespace marbex::printer {

namespace {

constexpr int kModules = 11;
constexpr uint16_t kStop = 0b1100011101011;
constexpr int kStopModules = 13;

// Widths of the six elements of a symbol character, bar first, by its value (table 1 of the standard).
constexpr std::array<std::string_view, 106> kWidths{
    "212222", "222122", "222221", "121223", "121322", "131222", "122213", "122312", "132212", "221213", "221312",
    "231212", "112232", "122132", "122231", "113222", "123122", "123221", "223211", "221132", "221231", "213212",
    "223112", "312131", "311222", "321122", "321221", "312212", "322112", "322211", "212123", "212321", "232121",
    "111323", "131123", "131321", "112313", "132113", "132311", "211313", "231113", "231311", "112133", "112331",
    "132131", "113123", "113321", "133121", "313121", "211331", "231131", "213113", "213311", "213131", "311123",
    "311321", "331121", "312113", "312311", "332111", "314111", "221411", "431111", "111224", "111422", "121124",
    "121421", "141122", "141221", "112214", "112412", "122114", "122411", "142112", "142211", "241211", "221114",
    "413111", "241112", "134111", "111242", "121142", "121241", "114212", "124112", "124211", "411212", "421112",
    "421211", "212141", "214121", "412121", "111143", "111341", "131141", "114113", "114311", "411113", "411311",
    "113141", "114131", "311141", "411131", "211412", "211214", "211232",
};

constexpr uint16_t PatternOf(std::string_view widths)
{
    unsigned pattern = 0;
    bool black = true;
    for (const char width : widths) {
        for (int module = 0; module < width - '0'; ++module)
            pattern = pattern << 1 | (black ? 1U : 0U);
        black = !black;
    }
    return static_cast<uint16_t>(pattern);
}

constexpr std::array<uint16_t, kWidths.size()> MakePatterns()
{
    std::array<uint16_t, kWidths.size()> patterns{};
    for (std::size_t i = 0; i < patterns.size(); ++i)
        patterns[i] = PatternOf(kWidths[i]);
    return patterns;
}
constexpr std::array<uint16_t, kWidths.size()> kPatterns = MakePatterns();

constexpr unsigned kShift = 98;  // the next character is from the other of the sets A and B
constexpr unsigned kCodeC = 99;
constexpr unsigned kCodeB = 100;
constexpr unsigned kCodeA = 101;
constexpr unsigned kStartA = 103;

constexpr bool IsCodeSet(char letter)
{
    return letter == 'A' || letter == 'B' || letter == 'C';
}

// Draws symbol characters and keeps the weighted sum for the check character.
class SymbolWriter {
public:
    explicit SymbolWriter(BarRow& row) : row_(row) {}

    void Write(unsigned value)
    {
        // The start character and the first after it both weigh one.
        sum_ = (sum_ + (count_ == 0 ? 1 : count_) * value) % 103;
        ++count_;
        row_.Append(kPatterns[value], kModules);
    }

    void Finish()
    {
        row_.Append(kPatterns[sum_], kModules);
        row_.Append(kStop, kStopModules);
    }

private:
    BarRow& row_;
    unsigned sum_ = 0;
    unsigned count_ = 0;
};

// One character in code set A or B. One that only the other set has is shifted, so that the row says what the data
// says.
void WriteCharacter(char codeSet, char character, SymbolWriter& writer)
{
    const unsigned code = static_cast<uint8_t>(character);
    const bool onlyInA = code < 0x20;
    const bool onlyInB = code >= 0x60;
    if (codeSet == 'A' ? onlyInB : onlyInA) writer.Write(kShift);
    writer.Write(onlyInA ? code + 0x40 : code - 0x20);
}

}  // namespace

bool HasCode128Start(std::string_view data)
{
    return data.size() >= 2 && data[0] == '{' && IsCodeSet(data[1]);
}

bool AcceptsCode128(std::string_view data)
{
    return data.size() >= 3 && data.size() <= 255 && HasCode128Start(data) &&
           std::ranges::all_of(data, [](char c) { return static_cast<uint8_t>(c) < 0x80; });
}

void DrawCode128(std::string_view data, BarRow& row)
{
    SymbolWriter writer(row);
    char codeSet = data[1];
    writer.Write(kStartA + static_cast<unsigned>(codeSet - 'A'));
    for (std::size_t i = 2; i < data.size(); ++i) {
        const char next = i + 1 < data.size() ? data[i + 1] : '\0';
        if (data[i] == '{' && IsCodeSet(next)) {
            ++i;
            if (next == codeSet) continue;
            codeSet = next;
            writer.Write(codeSet == 'A' ? kCodeA : codeSet == 'B' ? kCodeB : kCodeC);
        } else if (codeSet == 'C') {
            // What does not begin a pair of digits has no symbol in this set.
            if (!IsDigit(data[i]) || !IsDigit(next)) continue;
            writer.Write(10 * DigitValue(data[i]) + DigitValue(next));
            ++i;
        } else {
            WriteCharacter(codeSet, data[i], writer);
            if (data[i] == '{' && next == '{') ++i;
        }
    }
    writer.Finish();
}

std::string Code128Text(std::string_view data)
{
    std::string text(data.substr(std::min<std::size_t>(2, data.size())));
    const auto replaceAll = [&text](std::string_view what, std::string_view by) {
        for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size())) {
            text.replace(at, what.size(), by);
        }
    };
    replaceAll("{A", "");
    replaceAll("{B", "");
    replaceAll("{C", "");
    replaceAll("{{", "{");
    return text;
}

}  // namespace marbex::printer
