// Code 128 (ISO/IEC 15417), with the code sets chosen by the data: {A, {B, {C, {S shift, {1 to {4 functions, {{ a
// brace.

#include <array>
#include <optional>

#include "virtual_printer/barcodes/barcode.h"

namespace marbex::virtual_printer {
namespace {

// Widths of the six elements of each value.
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
    "113141", "114131", "311141", "411131", "211412", "211214", "211232"};
constexpr std::string_view kStop = "2331112";

constexpr int kShift = 98;
constexpr int kStartA = 103;

// Turns the data into values, one code set at a time.
class Reader {
public:
    explicit Reader(std::string_view data) : data_(data) {}

    std::string Read(std::vector<int>& values, std::string& text)
    {
        if (data_.size() < 3 || data_[0] != '{' || data_[1] < 'A' || data_[1] > 'C') {
            return "{A, {B or {C and data expected";
        }
        set_ = data_[1];
        values.push_back(kStartA + (set_ - 'A'));
        for (at_ = 2; at_ < data_.size();) {
            std::string problem = data_[at_] == '{' ? Brace(values, text) : Plain(values, text);
            if (!problem.empty()) {
                return problem;
            }
        }
        return values.size() > 1 ? "" : "no data";
    }

private:
    std::string Brace(std::vector<int>& values, std::string& text)
    {
        if (at_ + 1 == data_.size()) {
            return "a { at the end";
        }
        const char what = data_[at_ + 1];
        if (what == '{') {
            at_ += 2;
            return Character('{', values, text);
        }
        at_ += 2;
        if (what >= 'A' && what <= 'C') {
            if (what != set_) {
                set_ = what;
                values.push_back(what == 'A' ? 101 : what == 'B' ? 100 : 99);
            }
            return {};
        }
        if (what == 'S' && set_ != 'C') {
            values.push_back(kShift);
            shifted_ = true;
            return {};
        }
        if (const auto value = Function(what)) {
            values.push_back(*value);
            return {};
        }
        return "a { command that the code set does not have";
    }

    std::optional<int> Function(char what) const
    {
        switch (what) {
            case '1':
                return 102;
            case '2':
                return set_ == 'C' ? std::nullopt : std::optional(97);
            case '3':
                return set_ == 'C' ? std::nullopt : std::optional(96);
            case '4':
                return set_ == 'C' ? std::nullopt : std::optional(set_ == 'A' ? 101 : 100);
            default:
                return std::nullopt;
        }
    }

    std::string Plain(std::vector<int>& values, std::string& text)
    {
        if (set_ != 'C') {
            return Character(data_[at_++], values, text);
        }
        if (at_ + 1 == data_.size() || !AllDigits(data_.substr(at_, 2))) {
            return "digits in pairs expected in code set C";
        }
        values.push_back((data_[at_] - '0') * 10 + (data_[at_ + 1] - '0'));
        text.append(data_.substr(at_, 2));
        at_ += 2;
        return {};
    }

    std::string Character(char character, std::vector<int>& values, std::string& text)
    {
        const auto byte = static_cast<unsigned char>(character);
        const char set = shifted_ ? static_cast<char>('A' + 'B' - set_) : set_;
        shifted_ = false;
        if (byte > 0x7F || set == 'C' || (set == 'A' && byte >= 0x60) || (set == 'B' && byte < 0x20)) {
            return "a character that the code set does not have";
        }
        values.push_back(byte < 0x20 ? byte + 64 : byte - 32);
        text.push_back(byte < 0x20 || byte == 0x7F ? ' ' : character);
        return {};
    }

    std::string_view data_;
    std::size_t at_ = 0;
    char set_ = 'A';
    bool shifted_ = false;
};

void AppendWidths(std::vector<uint8_t>& elements, std::string_view widths)
{
    for (const char width : widths) {
        elements.push_back(static_cast<uint8_t>(width - '0'));
    }
}

}  // namespace

Symbol EncodeCode128(std::string_view data)
{
    Symbol symbol;
    symbol.name = "CODE 128";
    std::vector<int> values;
    symbol.problem = Reader(data).Read(values, symbol.text);
    if (!symbol.problem.empty()) {
        return symbol;
    }
    int sum = values[0];
    for (std::size_t i = 1; i < values.size(); ++i) {
        sum += values[i] * static_cast<int>(i);
    }
    values.push_back(sum % 103);
    for (const int value : values) {
        AppendWidths(symbol.elements, kWidths[static_cast<std::size_t>(value)]);
    }
    AppendWidths(symbol.elements, kStop);
    return symbol;
}

}  // namespace marbex::virtual_printer
