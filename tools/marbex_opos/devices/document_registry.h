#pragma once

#include "platform/reg_file.h"
#include "platform/registry.h"

namespace marbex::tools {

// The local-machine hive of a .reg file, to read as if it were the registry of this machine. What stands only in the
// branch of 32-bit programs is found in its usual place. Every change is refused.
class DocumentRegistry final : public platform::Registry {
public:
    explicit DocumentRegistry(const platform::RegDocument& document);  // which must outlive it

    bool KeyExists(std::string_view path) const override;
    std::optional<std::vector<std::string>> Subkeys(std::string_view path) const override;
    std::optional<std::vector<platform::RegistryValue>> Values(std::string_view path) const override;
    std::optional<platform::RegistryValue> Value(std::string_view path, std::string_view name) const override;

    bool CreateKey(std::string_view) override { return false; }
    bool SetValue(std::string_view, const platform::RegistryValue&) override { return false; }
    bool DeleteValue(std::string_view, std::string_view) override { return false; }
    bool DeleteKey(std::string_view) override { return false; }
    std::string LastProblem() const override { return {}; }

private:
    std::string PathInFile(std::string_view path) const;

    const platform::RegDocument& document_;
    bool inBranchOf32Bits_ = false;
};

}  // namespace marbex::tools
