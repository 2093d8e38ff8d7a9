#include "marbex_opos/console/scanner.h"

#include <charconv>
#include <limits>

#include "marbex_opos/opos/constant_table.h"
#include "platform/registry.h"
#include "platform/text.h"

namespace marbex::tools {

namespace {

constexpr std::size_t kExcerpt = 20;  // bytes of a line that a message repeats

bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r';
}
bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}
bool IsNameStart(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}
bool IsNamePart(char c)
{
    return IsNameStart(c) || IsDigit(c);
}

// The digits up to the first character that is none of the base.
std::string_view Digits(std::string_view text, int base)
{
    std::size_t length = 0;
    while (length < text.size()) {
        const char c = text[length];
        const bool isLetter = base == 16 && ((c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'));
        if (!IsDigit(c) && !isLetter) break;
        ++length;
    }
    return text.substr(0, length);
}

}  // namespace

void Scanner::SkipBlanks()
{
    while (!rest_.empty() && IsBlank(rest_.front()))
        rest_.remove_prefix(1);
}

bool Scanner::AtEnd()
{
    SkipBlanks();
    return rest_.empty();
}

void Scanner::Fail() const
{
    if (rest_.empty()) throw SyntaxProblem("unexpected end of the statement");
    std::size_t length = std::min(rest_.size(), kExcerpt);
    while (length < rest_.size() && (static_cast<unsigned char>(rest_[length]) & 0xC0) == 0x80)
        ++length;
    throw SyntaxProblem("unexpected " + Quoted(platform::Utf16FromUtf8(rest_.substr(0, length))));
}

bool Scanner::Take(std::string_view symbol)
{
    SkipBlanks();
    if (!rest_.starts_with(symbol)) return false;
    rest_.remove_prefix(symbol.size());
    return true;
}

bool Scanner::TakeWord(std::string_view word)
{
    const std::string_view before = rest_;
    if (platform::SameName(Name(), word)) return true;
    rest_ = before;
    return false;
}

void Scanner::Need(std::string_view symbol)
{
    if (!Take(symbol)) Fail();
}

void Scanner::NeedEnd()
{
    if (!AtEnd()) Fail();
}

std::string_view Scanner::Name()
{
    SkipBlanks();
    if (rest_.empty() || !IsNameStart(rest_.front())) return {};
    std::size_t length = 1;
    while (length < rest_.size() && IsNamePart(rest_[length]))
        ++length;
    const std::string_view name = rest_.substr(0, length);
    rest_.remove_prefix(length);
    return name;
}

Value Scanner::TakeValue()
{
    SkipBlanks();
    if (rest_.starts_with('"')) return TakeText();
    if (TakeWord("true")) return true;
    if (TakeWord("false")) return false;
    int32_t value = TakeTerm();
    while (Take("|"))
        value |= TakeTerm();
    return value;
}

Result Scanner::TakeResult()
{
    if (TakeWord("null")) return NullText{};
    const Value value = TakeValue();
    if (const auto* text = std::get_if<std::u16string>(&value)) return *text;
    const auto* truth = std::get_if<bool>(&value);
    return truth != nullptr ? static_cast<int32_t>(*truth) : std::get<int32_t>(value);
}

int32_t Scanner::TakeTerm()
{
    SkipBlanks();
    if (rest_.empty() || !IsNameStart(rest_.front())) return TakeNumber();
    const std::string name(Name());
    const std::optional<int32_t> value = FindConstant(name);
    if (!value) throw SyntaxProblem("no constant " + name);
    return *value;
}

int32_t Scanner::TakeNumber()
{
    const std::string_view start = rest_;
    const bool isNegative = Take("-");
    const bool isHex = rest_.starts_with("0x") || rest_.starts_with("0X");
    if (isHex) rest_.remove_prefix(2);
    const std::string_view digits = Digits(rest_, isHex ? 16 : 10);
    const bool runsOn = digits.size() < rest_.size() && IsNamePart(rest_[digits.size()]);
    if (digits.empty() || runsOn) {
        rest_ = start;
        Fail();
    }
    rest_.remove_prefix(digits.size());

    // Hexadecimal numbers are written as bit patterns, so the upper half of 32 bits is theirs too.
    constexpr int64_t kLowest = std::numeric_limits<int32_t>::min();
    constexpr int64_t kHighest = std::numeric_limits<int32_t>::max();
    const int64_t highest = isHex && !isNegative ? std::numeric_limits<uint32_t>::max() : kHighest;
    int64_t value = 0;
    const auto parsed = std::from_chars(digits.data(), digits.data() + digits.size(), value, isHex ? 16 : 10);
    if (isNegative) value = -value;
    if (parsed.ec != std::errc() || value > highest || value < kLowest) {
        throw SyntaxProblem("the number does not fit 32 bits");
    }
    return static_cast<int32_t>(value);
}

int32_t Scanner::TakeMilliseconds()
{
    SkipBlanks();
    const int32_t value = TakeNumber();
    if (value < 0) throw SyntaxProblem("a time cannot be negative");
    return value;
}

std::u16string Scanner::TakeText()
{
    Need("\"");
    std::u16string text;
    while (true) {
        const std::size_t plain = rest_.find_first_of("\"\\");
        if (plain == std::string_view::npos) throw SyntaxProblem("the text has no closing quote");
        text += platform::Utf16FromUtf8(rest_.substr(0, plain));
        const char symbol = rest_[plain];
        rest_.remove_prefix(plain + 1);
        if (symbol == '"') return text;
        text += TakeEscape();
    }
}

char16_t Scanner::TakeEscape()
{
    if (rest_.empty()) throw SyntaxProblem("the text has no closing quote");
    const char letter = rest_.front();
    rest_.remove_prefix(1);
    switch (letter) {
        case 'n':
            return u'\n';
        case 'r':
            return u'\r';
        case 't':
            return u'\t';
        case 'e':
            return u'\x1B';
        case '\\':
        case '"':
            return static_cast<char16_t>(letter);
        case 'x':
            return TakeHex(2);
        case 'u':
            return TakeHex(4);
        default:
            throw SyntaxProblem(std::string("no escape \\") + letter);
    }
}

char16_t Scanner::TakeHex(std::size_t digits)
{
    const std::string_view text = Digits(rest_.substr(0, digits), 16);
    if (text.size() != digits) throw SyntaxProblem("an escape has too few hexadecimal digits");
    unsigned value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value, 16);
    rest_.remove_prefix(digits);
    return static_cast<char16_t>(value);
}

}  // namespace marbex::tools
