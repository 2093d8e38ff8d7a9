#pragma once

// Opening files by the paths that files.h tells of.

#include <windows.h>

#include <string>
#include <string_view>

#include "platform/windows/unique_handle.h"

namespace marbex::platform {

// A path as the functions of Windows take it.
std::wstring WidePath(const std::string& path);

// As CreateFile does; pipes and devices are refused. The last error tells why there is none.
UniqueHandle OpenFile(const std::string& path, DWORD access, DWORD sharing, DWORD disposition);

// Writes all bytes; false when it failed.
bool WriteAll(HANDLE file, std::string_view bytes);

}  // namespace marbex::platform
