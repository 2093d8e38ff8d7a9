#include "marbex_opos/opos/constant_table.h"

#include <algorithm>

#include "platform/registry.h"

namespace marbex::tools {

namespace {

constexpr std::string_view kCommonPrefix = "PIDX_";

}  // namespace

std::optional<int32_t> FindConstant(std::string_view name)
{
    const auto found = std::ranges::find(Constants(), name, &Constant::name);
    if (found == Constants().end()) return std::nullopt;
    return found->value;
}

std::vector<Property> PropertiesOf(ObjectKind kind)
{
    const std::string_view own = ClassOf(kind).propertyPrefix;
    std::vector<Property> properties;
    for (const Constant& constant : Constants()) {
        for (const std::string_view prefix : {own, kCommonPrefix}) {
            if (constant.name.starts_with(prefix)) {
                properties.push_back({constant.name.substr(prefix.size()), constant.value});
            }
        }
    }
    return properties;
}

std::optional<Property> FindProperty(ObjectKind kind, std::string_view name)
{
    for (const Property& property : PropertiesOf(kind)) {
        if (platform::SameName(property.name, name)) return property;
    }
    return std::nullopt;
}

}  // namespace marbex::tools
