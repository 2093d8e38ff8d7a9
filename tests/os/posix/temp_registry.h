#pragma once

// A registry file, and the drives beside it, of one test's own.

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

#include "platform/registry.h"
#include "temp_folder.h"

namespace marbex::tests {

class TempRegistry {
public:
    TempRegistry() : folder_(MakeTemporaryFolder())
    {
        setenv("MARBEX_OPOS_REGISTRY", File().c_str(), 1);
        platform::SystemRegistry();  // takes notice
    }
    explicit TempRegistry(std::string_view lines) : TempRegistry() { Write(lines); }
    ~TempRegistry()
    {
        unsetenv("MARBEX_OPOS_REGISTRY");
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }
    TempRegistry(const TempRegistry&) = delete;
    TempRegistry& operator=(const TempRegistry&) = delete;

    const std::string& Folder() const { return folder_; }
    // Drive C as the driver is told it, the folder "drive_c" below the folder of the test.
    static std::string Drive() { return "C:"; }
    std::string File() const { return folder_ + "/registry.reg"; }

    // Makes the file of the header and these lines.
    void Write(std::string_view lines) const
    {
        WriteRaw("Windows Registry Editor Version 5.00\n\n" + std::string(lines));
    }
    void WriteRaw(std::string_view bytes) const { std::ofstream(File(), std::ios::binary) << bytes; }

    std::string Contents() const { return ContentsOf(File()); }
    // The file of a path below the folder, such as "drive_c/SOLogFile1.txt"; empty when there is none.
    std::string ContentsBelow(const std::string& path) const { return ContentsOf(folder_ + "/" + path); }

private:
    static std::string ContentsOf(const std::string& path)
    {
        std::ostringstream all;
        all << std::ifstream(path, std::ios::binary).rdbuf();
        return all.str();
    }

    std::string folder_;
};

}  // namespace marbex::tests
