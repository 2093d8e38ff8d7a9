#pragma once

// Every constant of include/opos under its standard name, and the properties among them.

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "marbex_opos/opos/object_kind.h"

namespace marbex::tools {

struct Constant {
    std::string_view name;
    int32_t value;
};

std::span<const Constant> Constants();
std::optional<int32_t> FindConstant(std::string_view name);  // names are exact, as in the standard's headers

struct Property {
    std::string_view name;  // without the prefix of its index: "AsyncMode"
    int32_t index;

    bool IsText() const { return index >= 1000000; }  // where the standard puts the text properties
};

// The class's own properties and those that every class has.
std::vector<Property> PropertiesOf(ObjectKind kind);
std::optional<Property> FindProperty(ObjectKind kind, std::string_view name);  // without regard to case

}  // namespace marbex::tools
