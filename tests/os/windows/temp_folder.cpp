#include "temp_folder.h"

#include <windows.h>

#include <filesystem>
#include <stdexcept>

namespace marbex::tests {

std::string MakeTemporaryFolder()
{
    const std::filesystem::path parent = std::filesystem::temp_directory_path();
    const std::string process = "marbex-test-" + std::to_string(GetCurrentProcessId());
    // An older process of the same number may have left one behind.
    for (int number = 0; number < 10000; ++number) {
        const std::string name = (parent / (process + "-" + std::to_string(number))).string();
        if (CreateDirectoryA(name.c_str(), nullptr) != FALSE) return name;
        if (GetLastError() != ERROR_ALREADY_EXISTS) break;
    }
    throw std::runtime_error("no temporary folder");
}

}  // namespace marbex::tests
