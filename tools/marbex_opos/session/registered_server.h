#pragma once

// What a registration says: the keys of an in-process server under SOFTWARE\Classes.

#include <optional>
#include <string>
#include <string_view>

#include "platform/automation.h"
#include "platform/registry.h"

namespace marbex::tools {

// "{B637B615-C43B-40B8-B9D8-B6E29E80AA6D}"; none when it is not written like that.
std::optional<CLSID> ParseClassId(std::string_view text);

// The class identifier under the ProgID as the registry has it, and the path of its in-process server.
std::optional<std::string> RegisteredClassText(const platform::Registry& registry, const std::string& progId);
std::optional<std::string> RegisteredServerPath(const platform::Registry& registry, const std::string& progId);

}  // namespace marbex::tools
