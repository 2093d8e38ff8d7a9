#include "platform/version.h"

#include <dlfcn.h>
#include <limits.h>
#include <stdlib.h>

#include <memory>

namespace marbex::platform {

std::string ModuleFileVersion()
{
    return MARBEX_FILE_VERSION;
}

std::string ModulePath()
{
    // The address of anything in this code tells the loader which module is meant.
    static const char anchor = 0;
    Dl_info info{};
    if (dladdr(&anchor, &info) == 0 || info.dli_fname == nullptr) return {};
    // For a program the loader gives the name it was called by, which may be relative; realpath makes it full.
    const std::unique_ptr<char, decltype(&free)> full(realpath(info.dli_fname, nullptr), &free);
    if (full) return full.get();
    const std::unique_ptr<char, decltype(&free)> program(realpath("/proc/self/exe", nullptr), &free);
    return program ? program.get() : std::string();
}

}  // namespace marbex::platform
