#pragma once

#include <mutex>

namespace marbex::platform {

using NativeLock = std::mutex;

}  // namespace marbex::platform
