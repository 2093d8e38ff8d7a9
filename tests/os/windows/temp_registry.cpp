#include "temp_registry.h"

// clang-format off
#include <winsock2.h>
#include <windows.h>
// clang-format on

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <variant>

#include "platform/reg_file.h"
#include "platform/registry.h"
#include "temp_folder.h"

namespace marbex::tests {

namespace {

constexpr std::string_view kHive = "HKEY_LOCAL_MACHINE";
constexpr std::string_view kHeader = "Windows Registry Editor Version 5.00\n\n";

void Require(bool done, const char* what)
{
    if (!done) throw std::runtime_error(std::string(what) + ": " + platform::SystemRegistry().LastProblem());
}

void Collect(const std::string& path, platform::RegDocument& document)
{
    const platform::Registry& registry = platform::SystemRegistry();
    const std::string full = std::string(kHive) + (path.empty() ? "" : "\\" + path);
    if (!path.empty()) document.EnsureAtEnd(full);
    const auto values = registry.Values(path);
    const auto names = registry.Subkeys(path);
    if (!values || !names) throw std::runtime_error("the test's registry cannot be read");
    for (const platform::RegistryValue& value : *values)
        document.Set(full, {value, {}, {}});
    for (const std::string& name : *names)
        Collect(path.empty() ? name : path + "\\" + name, document);
}

}  // namespace

TempRegistry::TempRegistry()
    : folder_(MakeTemporaryFolder()),
      key_("Software\\MarbexOposTests\\" + std::filesystem::path(folder_).filename().string())
{
    // Winsock looks into the hive when it starts.
    WSADATA data{};
    WSAStartup(MAKEWORD(2, 2), &data);
    std::filesystem::create_directory(Drive());
    HKEY key = nullptr;
    const bool mapped = RegCreateKeyExA(HKEY_CURRENT_USER, key_.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                        KEY_ALL_ACCESS, nullptr, &key, nullptr) == ERROR_SUCCESS &&
                        RegDeleteTreeA(key, nullptr) == ERROR_SUCCESS &&
                        RegOverridePredefKey(HKEY_LOCAL_MACHINE, key) == ERROR_SUCCESS;
    if (key != nullptr) RegCloseKey(key);
    if (!mapped) throw std::runtime_error("no registry for the test");
}

TempRegistry::~TempRegistry()
{
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
    RegDeleteTreeA(HKEY_CURRENT_USER, key_.c_str());
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

void TempRegistry::Write(std::string_view lines) const
{
    platform::Registry& registry = platform::SystemRegistry();
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, nullptr);
    const auto parsed = platform::ParseRegFile(std::string(kHeader).append(lines));
    if (const auto* problem = std::get_if<platform::RegParseProblem>(&parsed))
        throw std::runtime_error("line " + std::to_string(problem->line) + ": " + problem->message);
    for (const platform::RegSection& section : std::get<platform::RegDocument>(parsed).Sections()) {
        if (!section.path.starts_with(kHive)) continue;
        const std::string path = section.path.substr(kHive.size());
        Require(registry.CreateKey(path), "a key cannot be made");
        for (const platform::RegEntry& entry : section.entries)
            Require(registry.SetValue(path, entry.value), "a value cannot be set");
    }
}

std::string TempRegistry::Contents() const
{
    platform::RegDocument document;
    Collect("", document);
    return platform::WriteRegFile(document);
}

std::string TempRegistry::ContentsBelow(const std::string& path) const
{
    std::ostringstream all;
    all << std::ifstream(folder_ + "\\" + path, std::ios::binary).rdbuf();
    return all.str();
}

}  // namespace marbex::tests
