#pragma once

// The three device classes that the server offers, as a control object knows them.

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

#include "platform/automation.h"

namespace marbex::tools {

enum class ObjectKind { kPrinter, kCashDrawer, kLineDisplay };

struct ObjectClass {
    ObjectKind kind;
    std::string_view name;  // the device class, and the object's name in statements
    std::string_view progId;
    CLSID classId;                    // what the server was built with; a registration under the ProgID comes first
    std::string_view propertyPrefix;  // of the class's own property indices
    std::string_view description;     // for a person
};

inline constexpr std::array<ObjectClass, 3> kObjectClasses{{
    {ObjectKind::kPrinter,
     "POSPrinter",
     "Service.MarbexOposPrnDriver",
     {0xB637B615, 0xC43B, 0x40B8, {0xB9, 0xD8, 0xB6, 0xE2, 0x9E, 0x80, 0xAA, 0x6D}},
     "PIDXPtr_",
     "receipt printer"},
    {ObjectKind::kCashDrawer,
     "CashDrawer",
     "Service.MarbexOposCashDrawerDriver",
     {0xD957B9D0, 0x46FE, 0x4C18, {0x91, 0x36, 0x28, 0x35, 0x70, 0x78, 0xA9, 0x5D}},
     "PIDXCash_",
     "cash drawer"},
    {ObjectKind::kLineDisplay,
     "LineDisplay",
     "Service.MarbexOposLineDisplayDriver",
     {0x3B9304F2, 0x526B, 0x4F11, {0x9A, 0x2F, 0xD8, 0x5E, 0xE3, 0x6B, 0xD2, 0x09}},
     "PIDXDisp_",
     "line display"},
}};

constexpr const ObjectClass& ClassOf(ObjectKind kind)
{
    return kObjectClasses[static_cast<std::size_t>(kind)];
}

std::optional<ObjectKind> FindObject(std::string_view name);  // without regard to case

}  // namespace marbex::tools
