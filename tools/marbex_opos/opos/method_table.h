#pragma once

// The methods of the three service objects: what a control object knows of them.

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "marbex_opos/opos/object_kind.h"

namespace marbex::tools {

enum class ArgumentKind { kLong, kText, kBool, kDispatch, kLongInOut, kTextInOut };

struct Method {
    std::string_view name;
    std::string_view arguments;  // as a declaration: "long Command, long* pData, string* pString"
    bool alsoWithoutArguments = false;
};

std::span<const Method> MethodsOf(ObjectKind kind);
const Method* FindMethod(ObjectKind kind, std::string_view name);  // without regard to case; null when there is none

// The kinds of a method's arguments, in order.
std::vector<ArgumentKind> ArgumentKinds(const Method& method);

// "PrintNormal(long Station, string Data)", without the control object that the console supplies.
std::string Signature(const Method& method);

}  // namespace marbex::tools
