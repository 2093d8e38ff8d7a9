#pragma once

#include <stdlib.h>

#include <filesystem>
#include <stdexcept>
#include <string>

namespace marbex::tests {

// Makes a new folder for one test and gives its path.
inline std::string MakeTemporaryFolder()
{
    std::string name = (std::filesystem::temp_directory_path() / "marbex-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
    return name;
}

}  // namespace marbex::tests
