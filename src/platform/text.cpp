#include "platform/text.h"

#include "platform/code_page.h"
#include "platform/unicode.h"

namespace marbex::platform {

namespace {

const CodePage& AnsiPage()
{
    const CodePage* page = FindCodePage(AnsiCodePage());
    return page != nullptr ? *page : *FindCodePage(kWesternNumber);
}

// Gives each character of text, and lone surrogates as they are, to take until it returns false.
template <typename Take>
bool ForEachCharacter(std::u16string_view text, Take take)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t character = text[i];
        if (character >= 0xD800 && character <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
            text[i + 1] <= 0xDFFF) {
            ++i;
            character = 0x10000 + ((character & 0x3FF) << 10) + (text[i] & 0x3FFu);
        }
        if (!take(character)) return false;
    }
    return true;
}

bool IsSurrogate(char32_t character)
{
    return character >= 0xD800 && character <= 0xDFFF;
}

}  // namespace

std::u16string WidenAnsi(std::string_view text)
{
    std::u16string wide;
    AnsiPage().Widen(text, wide);
    return wide;
}

void WidenAnsi(std::string_view text, std::u16string& wide)
{
    AnsiPage().Widen(text, wide);
}

std::string NarrowAnsi(std::u16string_view text)
{
    const CodePage& page = AnsiPage();
    std::string bytes;
    bytes.reserve(text.size());
    ForEachCharacter(text, [&](char32_t character) {
        if (IsSurrogate(character)) {
            // A lone surrogate is no character in any page; the Unicode ones have a character that says so.
            if (!page.Append(kReplacementCharacter, bytes)) bytes += '?';
        } else if (!page.Append(character, bytes)) {
            const int undefined = character < 0x10000 ? page.UndefinedByteOf(static_cast<char16_t>(character)) : -1;
            bytes += undefined >= 0 ? static_cast<char>(undefined) : '?';
            if (character >= 0x10000) bytes += '?';
        }
        return true;
    });
    return bytes;
}

CodePageResult ToCodePage(uint32_t codePage, std::u16string_view text, std::string& bytes)
{
    const CodePage* page = FindCodePage(codePage);
    if (page == nullptr) return CodePageResult::kUnknownCodePage;
    const std::size_t before = bytes.size();
    const bool held = ForEachCharacter(
        text, [&](char32_t character) { return !IsSurrogate(character) && page->Append(character, bytes); });
    if (held) return CodePageResult::kOk;
    bytes.resize(before);
    return CodePageResult::kUnmappable;
}

}  // namespace marbex::platform
