// Nothing is installed on the simulated computer that could be loaded.

#include "platform/library.h"

namespace marbex::platform {

std::unique_ptr<DynamicLibrary> DynamicLibrary::Load(const std::string&)
{
    return nullptr;
}

}  // namespace marbex::platform
