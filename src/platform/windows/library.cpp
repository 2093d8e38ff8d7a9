#include "platform/library.h"

#include <windows.h>

#include "platform/version.h"
#include "platform/windows/wide_text.h"

namespace marbex::platform {

namespace {

class LoadedLibrary final : public DynamicLibrary {
public:
    explicit LoadedLibrary(HMODULE handle) : handle_(handle) {}
    ~LoadedLibrary() override { FreeLibrary(handle_); }
    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;

    void* Symbol(const char* name) const override { return reinterpret_cast<void*>(GetProcAddress(handle_, name)); }

private:
    const HMODULE handle_;
};

// No message box about a damaged library: nobody may be there to answer it.
class QuietErrors {
public:
    QuietErrors() { SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &before_); }
    ~QuietErrors() { SetThreadErrorMode(before_, nullptr); }
    QuietErrors(const QuietErrors&) = delete;
    QuietErrors& operator=(const QuietErrors&) = delete;

private:
    DWORD before_ = 0;
};

// In the application's folder, the system's, and those the application has added: never in the current folder, where
// anybody may have put it.
HMODULE LoadFromSafePlaces(const std::wstring& name)
{
    HMODULE handle = LoadLibraryExW(name.c_str(), nullptr, LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
    if (handle == nullptr && GetLastError() == ERROR_INVALID_PARAMETER) {
        // Windows 7 without its update of 2011 knows the older order only.
        handle = LoadLibraryW(name.c_str());
    }
    return handle;
}

HMODULE LoadFromBesideThisModule(const std::string& name)
{
    const std::string module = ModulePath();
    const std::size_t folderEnd = module.rfind('\\');
    if (folderEnd == std::string::npos) return nullptr;
    const std::wstring path = WideFromUtf8(module.substr(0, folderEnd + 1) + name);
    return LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
}

}  // namespace

std::unique_ptr<DynamicLibrary> DynamicLibrary::Load(const std::string& name)
{
    const QuietErrors quiet;
    HMODULE handle = LoadFromSafePlaces(WideFromUtf8(name));
    if (handle == nullptr) handle = LoadFromBesideThisModule(name);
    return handle != nullptr ? std::make_unique<LoadedLibrary>(handle) : nullptr;
}

}  // namespace marbex::platform
