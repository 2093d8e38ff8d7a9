#pragma once

#include <string>

namespace marbex::platform {

// The path of the registry file as registry.h tells it. The file need not exist.
std::string RegistryFilePath();

// Makes the folder, and those above it, when they are missing; false when that fails.
bool MakeFolders(const std::string& folder);

// The folder part of a path: "." for a bare name.
std::string FolderOf(const std::string& path);

}  // namespace marbex::platform
