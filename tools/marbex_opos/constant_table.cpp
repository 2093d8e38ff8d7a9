#include "marbex_opos/constant_table.h"

#include <algorithm>
#include <array>

#include "marbex_opos/names.h"
#include "opos/cash_drawer.h"
#include "opos/common.h"
#include "opos/line_display.h"
#include "opos/printer.h"

namespace marbex::tools {

namespace {

// The rows are taken from the headers when the build is configured.
constexpr auto kConstants = std::to_array<Constant>({
#include "opos_constant_rows.inc"
});

constexpr std::string_view kCommonPrefix = "PIDX_";

}  // namespace

std::span<const Constant> Constants()
{
    return kConstants;
}

std::optional<int32_t> FindConstant(std::string_view name)
{
    const auto* found = std::ranges::find(kConstants, name, &Constant::name);
    if (found == kConstants.end()) return std::nullopt;
    return found->value;
}

std::vector<Property> PropertiesOf(ObjectKind kind)
{
    const std::string_view own = ClassOf(kind).propertyPrefix;
    std::vector<Property> properties;
    for (const Constant& constant : kConstants) {
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
        if (SameName(property.name, name)) return property;
    }
    return std::nullopt;
}

}  // namespace marbex::tools
