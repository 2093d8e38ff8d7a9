#pragma once

// A registry that holds nothing but the system's ANSI code page.

#include <string>
#include <utility>

#include "platform/registry.h"

namespace marbex::test {

class CodePageRegistry : public platform::Registry {
public:
    explicit CodePageRegistry(std::string codePage) : codePage_(std::move(codePage)) {}

    bool KeyExists(std::string_view) const override { return true; }
    std::optional<std::vector<std::string>> Subkeys(std::string_view) const override { return std::nullopt; }
    std::optional<std::vector<platform::RegistryValue>> Values(std::string_view) const override { return std::nullopt; }
    std::optional<platform::RegistryValue> Value(std::string_view, std::string_view name) const override
    {
        if (name != "ACP") return std::nullopt;
        return platform::RegistryValue{"ACP", platform::RegistryType::kSz, codePage_};
    }
    bool CreateKey(std::string_view) override { return false; }
    bool SetValue(std::string_view, const platform::RegistryValue&) override { return false; }
    bool DeleteValue(std::string_view, std::string_view) override { return false; }
    bool DeleteKey(std::string_view) override { return false; }
    std::string LastProblem() const override { return {}; }

private:
    std::string codePage_;
};

}  // namespace marbex::test
