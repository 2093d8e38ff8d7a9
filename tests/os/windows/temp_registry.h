#pragma once

// A local-machine hive of one test's own, and a folder with a drive: for this process HKEY_LOCAL_MACHINE is a new key
// in the user's hive until the object is destroyed. One at a time.

#include <string>
#include <string_view>

namespace marbex::tests {

class TempRegistry {
public:
    TempRegistry();
    explicit TempRegistry(std::string_view lines) : TempRegistry() { Write(lines); }
    ~TempRegistry();
    TempRegistry(const TempRegistry&) = delete;
    TempRegistry& operator=(const TempRegistry&) = delete;

    const std::string& Folder() const { return folder_; }
    // Drive C as the driver is told it, the folder "drive_c" below the folder of the test.
    std::string Drive() const { return folder_ + "\\drive_c"; }

    // Makes the hive what these lines of a registry file say. Those of other hives are left out.
    void Write(std::string_view lines) const;

    // The hive as a registry file.
    std::string Contents() const;
    // The file of a path below the folder, such as "drive_c/SOLogFile1.txt"; empty when there is none.
    std::string ContentsBelow(const std::string& path) const;

private:
    std::string folder_;
    std::string key_;  // below HKEY_CURRENT_USER
};

}  // namespace marbex::tests
