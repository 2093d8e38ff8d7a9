#include "marbex_opos/names.h"

#include <algorithm>

#include "marbex_opos/object_kind.h"

namespace marbex::tools {

namespace {

char Lower(char letter)
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

}  // namespace

bool SameName(std::string_view left, std::string_view right)
{
    return left.size() == right.size() && StartsWithName(left, right);
}

bool StartsWithName(std::string_view text, std::string_view prefix)
{
    return text.size() >= prefix.size() &&
           std::equal(prefix.begin(), prefix.end(), text.begin(), [](char a, char b) { return Lower(a) == Lower(b); });
}

std::optional<ObjectKind> FindObject(std::string_view name)
{
    for (const ObjectClass& object : kObjectClasses) {
        if (SameName(object.name, name)) return object.kind;
    }
    return std::nullopt;
}

}  // namespace marbex::tools
