#include "platform/library.h"

#include <dlfcn.h>

#include "platform/version.h"

namespace marbex::platform {

namespace {

class LoadedLibrary final : public DynamicLibrary {
public:
    explicit LoadedLibrary(void* handle) : handle_(handle) {}
    ~LoadedLibrary() override { dlclose(handle_); }
    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;

    void* Symbol(const char* name) const override { return dlsym(handle_, name); }

private:
    void* const handle_;
};

std::string SharedObjectName(const std::string& name)
{
    constexpr std::string_view kWindowsEnding = ".dll";
    if (!name.ends_with(kWindowsEnding)) return name;
    return name.substr(0, name.size() - kWindowsEnding.size()) + ".so";
}

}  // namespace

std::unique_ptr<DynamicLibrary> DynamicLibrary::Load(const std::string& name)
{
    const std::string fileName = SharedObjectName(name);
    void* handle = dlopen(fileName.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        const std::string module = ModulePath();
        const std::size_t folderEnd = module.rfind('/');
        if (folderEnd == std::string::npos) return nullptr;
        handle = dlopen((module.substr(0, folderEnd + 1) + fileName).c_str(), RTLD_NOW | RTLD_LOCAL);
    }
    return handle != nullptr ? std::make_unique<LoadedLibrary>(handle) : nullptr;
}

}  // namespace marbex::platform
