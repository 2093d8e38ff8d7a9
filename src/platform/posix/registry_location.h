#pragma once

#include <string>

namespace marbex::platform {

// Finds the registry file as registry.h tells it; reads the environment.
void LocateRegistry();

// The path that LocateRegistry found last. The file need not exist. Any thread.
std::string RegistryFilePath();

// Makes the folder, and those above it, when they are missing; false when that fails.
bool MakeFolders(const std::string& folder);

// The folder part of a path: "." for a bare name.
std::string FolderOf(const std::string& path);

}  // namespace marbex::platform
