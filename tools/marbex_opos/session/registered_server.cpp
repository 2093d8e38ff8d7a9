#include "marbex_opos/session/registered_server.h"

#include <algorithm>
#include <charconv>

#include "marbex_opos/session/server_library.h"

namespace marbex::tools {

namespace {

const std::string kClassesKey = "SOFTWARE\\Classes\\";

std::optional<std::string> DefaultValue(const platform::Registry& registry, const std::string& key)
{
    const std::optional<platform::RegistryValue> value = registry.Value(key, "");
    if (!value || value->data.empty()) return std::nullopt;
    return value->data;
}

template <typename Number>
bool TakeHex(std::string_view& text, std::size_t digits, Number& number)
{
    if (text.size() < digits) return false;
    const char* end = text.data() + digits;
    const auto parsed = std::from_chars(text.data(), end, number, 16);
    text.remove_prefix(digits);
    return parsed.ec == std::errc() && parsed.ptr == end;
}

bool TakeSymbol(std::string_view& text, char symbol)
{
    if (!text.starts_with(symbol)) return false;
    text.remove_prefix(1);
    return true;
}

}  // namespace

std::optional<CLSID> ParseClassId(std::string_view text)
{
    CLSID id{};
    bool isGood = TakeSymbol(text, '{') && TakeHex(text, 8, id.Data1) && TakeSymbol(text, '-') &&
                  TakeHex(text, 4, id.Data2) && TakeSymbol(text, '-') && TakeHex(text, 4, id.Data3) &&
                  TakeSymbol(text, '-');
    for (std::size_t at = 0; at < 8 && isGood; ++at) {
        isGood = TakeHex(text, 2, id.Data4[at]) && (at != 1 || TakeSymbol(text, '-'));
    }
    if (!isGood || text != "}") return std::nullopt;
    return id;
}

std::optional<std::string> RegisteredClassText(const platform::Registry& registry, const std::string& progId)
{
    return DefaultValue(registry, kClassesKey + progId + "\\CLSID");
}

std::optional<std::string> RegisteredServerPath(const platform::Registry& registry, const std::string& progId)
{
    const std::optional<std::string> classText = RegisteredClassText(registry, progId);
    if (!classText) return std::nullopt;
    return DefaultValue(registry, kClassesKey + "CLSID\\" + *classText + "\\InprocServer32");
}

CLSID RegisteredClass(const platform::Registry& registry, const std::string& progId, const CLSID& fallback)
{
    const std::optional<std::string> classText = RegisteredClassText(registry, progId);
    return classText ? ParseClassId(*classText).value_or(fallback) : fallback;
}

}  // namespace marbex::tools
