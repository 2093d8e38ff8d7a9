#include "marbex_opos/opos/object_kind.h"

#include "platform/registry.h"

namespace marbex::tools {

std::optional<ObjectKind> FindObject(std::string_view name)
{
    for (const ObjectClass& object : kObjectClasses) {
        if (platform::SameName(object.name, name)) return object.kind;
    }
    return std::nullopt;
}

}  // namespace marbex::tools
