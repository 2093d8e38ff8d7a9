#pragma once

#include <string>

namespace marbex::platform {

// The FileVersion string of this module's version resource, such as "1, 0, 0, 0"; empty when it cannot be read.
// POSIX: the version the build was made with, in the same form.
std::string ModuleFileVersion();

// The full path of the library (or program) that this code is linked into; empty when the system does not tell.
std::string ModulePath();

}  // namespace marbex::platform
