#include <algorithm>

#include "platform/reg_file.h"
#include "platform/text.h"
#include "platform/unicode.h"

namespace marbex::platform {

namespace {

std::string Quoted(std::string_view text)
{
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') quoted += '\\';
        quoted += c;
    }
    return quoted + '"';
}

bool FitsInQuotes(std::string_view text)
{
    return std::none_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; });
}

std::string Utf16Bytes(std::u16string_view wide)
{
    std::string bytes;
    bytes.reserve(wide.size() * 2);
    for (const char16_t unit : wide) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

std::string HexNumber(uint32_t number, std::size_t digits)
{
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    while (number != 0 || text.size() < digits) {
        text.insert(text.begin(), kDigits[number & 0xF]);
        number >>= 4;
    }
    return text;
}

// Bytes with commas, in lines of about eighty characters as the registry editor makes them.
std::string HexBytes(std::string_view bytes, std::size_t column)
{
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i > 0) {
            text += ',';
            if (column + 4 > 78) {
                text += "\\\n  ";
                column = 2;
            }
        }
        text += HexNumber(static_cast<unsigned char>(bytes[i]), 2);
        column += 3;
    }
    return text;
}

std::string LiteralOf(const RegistryValue& value, std::size_t column)
{
    const std::string& data = value.data;
    if (value.type == RegistryType::kSz && FitsInQuotes(data)) return Quoted(data);
    if (value.type == RegistryType::kDword && data.size() == 4) {
        uint32_t number = 0;
        for (std::size_t i = 4; i-- > 0;)
            number = number << 8 | static_cast<unsigned char>(data[i]);
        return "dword:" + HexNumber(number, 8);
    }
    std::string bytes = data;
    if (value.type == RegistryType::kSz || value.type == RegistryType::kExpandSz) {
        bytes = Utf16Bytes(Utf16FromUtf8(data + '\0'));
    } else if (value.type == RegistryType::kMultiSz) {
        bytes = Utf16Bytes(Utf16FromUtf8(data));
    }
    std::string kind = "hex";
    if (value.type != RegistryType::kBinary) {
        kind += '(';
        kind += HexNumber(static_cast<uint32_t>(value.type), 1);
        kind += ')';
    }
    kind += ':';
    return kind + HexBytes(bytes, column + kind.size());
}

}  // namespace

std::string WriteRegFile(const RegDocument& document)
{
    std::string text = "Windows Registry Editor Version 5.00\n";
    for (const RegSection& section : document.Sections()) {
        text += "\n" + section.comment + "[" + section.path + "]\n";
        for (const RegEntry& entry : section.entries) {
            const std::string name = entry.value.name.empty() ? "@" : Quoted(entry.value.name);
            text += entry.comment + name + "=";
            text += entry.literal.empty() ? LiteralOf(entry.value, name.size() + 1) : entry.literal;
            text += "\n";
        }
    }
    if (!document.closingComment.empty()) text += "\n" + document.closingComment;

    if (document.carriageReturns) {
        // Literals keep the line ends they were read with.
        std::string withReturns;
        withReturns.reserve(text.size() + text.size() / 16);
        for (const char c : text) {
            if (c == '\n' && !withReturns.ends_with('\r')) withReturns += '\r';
            withReturns += c;
        }
        text = std::move(withReturns);
    }
    if (document.encoding == RegEncoding::kUtf8) return text;
    std::string marked = document.encoding == RegEncoding::kUtf16 ? "\xFF\xFE" : "\xEF\xBB\xBF";
    marked += document.encoding == RegEncoding::kUtf16 ? Utf16Bytes(Utf16FromUtf8(text)) : text;
    return marked;
}

}  // namespace marbex::platform
