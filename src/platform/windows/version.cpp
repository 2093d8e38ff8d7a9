#include "platform/version.h"

#include <windows.h>

#include <cstdio>
#include <vector>

#include "platform/windows/module.h"
#include "platform/windows/wide_text.h"

namespace marbex::platform {
namespace {

struct Translation {
    WORD language;
    WORD codePage;
};

// A long path may need more than MAX_PATH.
std::wstring ModuleFileName()
{
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetModuleFileNameW(ThisModule(), path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size()) {
            path.resize(length);
            return path;
        }
        path.resize(path.size() * 2);
    }
}

}  // namespace

HMODULE ThisModule()
{
    // The address of anything in this code tells the loader which module is meant.
    static const char anchor = 0;
    HMODULE module = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT, &anchor,
                       &module);
    return module;
}

std::string ModulePath()
{
    return Utf8FromWide(ModuleFileName());
}

std::string ModuleFileVersion()
{
    const std::wstring file = ModuleFileName();
    DWORD ignored = 0;
    const DWORD size = GetFileVersionInfoSizeW(file.c_str(), &ignored);
    if (size == 0) return {};
    std::vector<char> resource(size);
    if (!GetFileVersionInfoW(file.c_str(), 0, size, resource.data())) return {};

    void* found = nullptr;
    UINT length = 0;
    if (!VerQueryValueW(resource.data(), L"\\VarFileInfo\\Translation", &found, &length)) return {};
    if (length < sizeof(Translation)) return {};
    const auto translation = *static_cast<const Translation*>(found);
    wchar_t block[64];
    std::swprintf(block, std::size(block), L"\\StringFileInfo\\%04x%04x\\FileVersion", translation.language,
                  translation.codePage);
    if (!VerQueryValueW(resource.data(), block, &found, &length) || length == 0) return {};
    return Utf8FromWide(static_cast<const wchar_t*>(found));
}

}  // namespace marbex::platform
