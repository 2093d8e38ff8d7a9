#include "marbex_opos/opos/value.h"

#include <cstdio>

#include "platform/text.h"

namespace marbex::tools {

namespace {

bool IsControl(char16_t unit)
{
    return unit < 0x20 || (unit >= 0x7F && unit <= 0x9F);
}
bool IsHighSurrogate(char16_t unit)
{
    return unit >= 0xD800 && unit <= 0xDBFF;
}
bool IsLowSurrogate(char16_t unit)
{
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

std::string Hex(const char* format, char16_t unit)
{
    char text[8];
    std::snprintf(text, sizeof text, format, static_cast<unsigned>(unit));
    return text;
}

std::string EscapedUnit(char16_t unit)
{
    switch (unit) {
        case u'\n':
            return "\\n";
        case u'\r':
            return "\\r";
        case u'\t':
            return "\\t";
        case u'"':
            return "\\\"";
        case u'\\':
            return "\\\\";
        default:
            return Hex("\\x%02X", unit);
    }
}

}  // namespace

std::string Quoted(std::u16string_view text)
{
    std::string quoted = "\"";
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char16_t unit = text[at];
        const bool isPair = IsHighSurrogate(unit) && at + 1 < text.size() && IsLowSurrogate(text[at + 1]);
        if (IsControl(unit) || unit == u'"' || unit == u'\\') {
            quoted += EscapedUnit(unit);
        } else if (isPair) {
            quoted += platform::Utf8FromUtf16(text.substr(at++, 2));
        } else if (IsHighSurrogate(unit) || IsLowSurrogate(unit)) {
            quoted += Hex("\\u%04X", unit);  // half a character has no UTF-8
        } else {
            quoted += platform::Utf8FromUtf16(text.substr(at, 1));
        }
    }
    return quoted + '"';
}

std::string Printed(const Result& result, const NameSets& sets)
{
    if (const auto* number = std::get_if<int32_t>(&result)) return Named(*number, sets);
    if (const auto* text = std::get_if<std::u16string>(&result)) return Quoted(*text);
    return std::holds_alternative<NullText>(result) ? "null" : "";
}

}  // namespace marbex::tools
