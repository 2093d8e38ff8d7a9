#include "platform/registry.h"

namespace marbex::platform {

std::string NativePath(std::string_view path)
{
    return std::string(path);
}

}  // namespace marbex::platform
