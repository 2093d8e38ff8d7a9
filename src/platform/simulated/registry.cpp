#include "platform/registry.h"

#include <utility>

#include "platform/reg_file.h"
#include "platform/simulated/machine/call.h"
#include "platform/simulated/machine/storage.h"

namespace marbex::platform {
namespace {

using simulated::Call;

RegDocument& Hive()
{
    static auto& hive = *new RegDocument;
    return hive;
}

std::string FullPath(std::string_view path)
{
    while (path.starts_with('\\'))
        path.remove_prefix(1);
    while (path.ends_with('\\'))
        path.remove_suffix(1);
    std::string full = "HKEY_LOCAL_MACHINE";
    if (!path.empty()) full.append("\\").append(path);
    return full;
}

class SimulatedRegistry final : public Registry {
public:
    bool KeyExists(std::string_view path) const override
    {
        const Call call("look into the registry");
        return !call.Fails() && Hive().KeyExists(FullPath(path));
    }

    std::optional<std::vector<std::string>> Subkeys(std::string_view path) const override
    {
        if (!KeyExists(path)) return std::nullopt;
        return Hive().Subkeys(FullPath(path));
    }

    std::optional<std::vector<RegistryValue>> Values(std::string_view path) const override
    {
        if (!KeyExists(path)) return std::nullopt;
        std::vector<RegistryValue> values;
        if (const RegSection* section = Hive().Find(FullPath(path))) {
            for (const RegEntry& entry : section->entries)
                values.push_back(entry.value);
        }
        return values;
    }

    std::optional<RegistryValue> Value(std::string_view path, std::string_view name) const override
    {
        const Call call("value of the registry");
        const RegEntry* entry = Hive().FindEntry(FullPath(path), name);
        if (entry == nullptr || call.Fails()) return std::nullopt;
        return entry->value;
    }

    bool CreateKey(std::string_view path) override
    {
        if (!KeyExists(path)) Hive().Ensure(FullPath(path));
        return true;
    }

    bool SetValue(std::string_view path, const RegistryValue& value) override
    {
        if (!KeyExists(path)) return false;
        Hive().Set(FullPath(path), RegEntry{value, {}, {}});
        return true;
    }

    bool DeleteValue(std::string_view path, std::string_view name) override
    {
        const Call call("change of the registry");
        return !call.Fails() && Hive().DeleteEntry(FullPath(path), name);
    }

    bool DeleteKey(std::string_view path) override
    {
        const Call call("change of the registry");
        return !call.Fails() && Hive().DeleteKey(FullPath(path));
    }

    std::string LastProblem() const override { return {}; }
};

}  // namespace

Registry& SystemRegistry()
{
    static auto& registry = *new SimulatedRegistry;
    return registry;
}

}  // namespace marbex::platform

namespace marbex::simulated {

bool Storage::LoadRegistry(std::string_view regFile)
{
    auto parsed = platform::ParseRegFile(regFile);
    auto* const document = std::get_if<platform::RegDocument>(&parsed);
    if (document == nullptr) return false;
    platform::Hive() = std::move(*document);
    return true;
}

}  // namespace marbex::simulated
