#pragma once

#include <string>

#include "platform/registry.h"

namespace marbex::tests {

// A text value of a key below SOFTWARE\\Classes, "(none)" when there is none.
inline std::string RegisteredText(const std::string& key, const char* name = "")
{
    const auto value = platform::SystemRegistry().Value("SOFTWARE\\Classes\\" + key, name);
    return value.has_value() && value->type == platform::RegistryType::kSz ? value->data : "(none)";
}

}  // namespace marbex::tests
