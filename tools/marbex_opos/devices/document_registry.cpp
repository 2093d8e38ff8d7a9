#include "marbex_opos/devices/document_registry.h"

namespace marbex::tools {

namespace {

constexpr std::string_view kHive = "HKEY_LOCAL_MACHINE";
constexpr std::string_view kSoftware = "SOFTWARE\\";
constexpr std::string_view kOpos = "OLEforRetail";
constexpr std::string_view kBranchOf32Bits = "WOW6432Node\\";

std::string Joined(std::string_view hive, std::string_view path)
{
    return std::string(hive) + (path.empty() ? "" : "\\") + std::string(path);
}

}  // namespace

DocumentRegistry::DocumentRegistry(const platform::RegDocument& document) : document_(document)
{
    const std::string software = Joined(kHive, kSoftware);
    inBranchOf32Bits_ = !document.KeyExists(software + std::string(kOpos)) &&
                        document.KeyExists(software + std::string(kBranchOf32Bits) + std::string(kOpos));
}

std::string DocumentRegistry::PathInFile(std::string_view path) const
{
    if (!inBranchOf32Bits_ || !platform::SameName(path.substr(0, kSoftware.size()), kSoftware)) {
        return Joined(kHive, path);
    }
    return Joined(kHive, kSoftware) + std::string(kBranchOf32Bits) + std::string(path.substr(kSoftware.size()));
}

bool DocumentRegistry::KeyExists(std::string_view path) const
{
    return document_.KeyExists(PathInFile(path));
}

std::optional<std::vector<std::string>> DocumentRegistry::Subkeys(std::string_view path) const
{
    if (!KeyExists(path)) return std::nullopt;
    return document_.Subkeys(PathInFile(path));
}

std::optional<std::vector<platform::RegistryValue>> DocumentRegistry::Values(std::string_view path) const
{
    if (!KeyExists(path)) return std::nullopt;
    std::vector<platform::RegistryValue> values;
    if (const platform::RegSection* section = document_.Find(PathInFile(path))) {
        for (const platform::RegEntry& entry : section->entries)
            values.push_back(entry.value);
    }
    return values;
}

std::optional<platform::RegistryValue> DocumentRegistry::Value(std::string_view path, std::string_view name) const
{
    const platform::RegEntry* entry = document_.FindEntry(PathInFile(path), name);
    if (entry == nullptr) return std::nullopt;
    return entry->value;
}

}  // namespace marbex::tools
