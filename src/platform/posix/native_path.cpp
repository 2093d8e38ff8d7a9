#include <cctype>

#include "platform/posix/registry_location.h"
#include "platform/registry.h"

namespace marbex::platform {

namespace {

bool HasDrive(std::string_view path)
{
    return path.size() >= 2 && path[1] == ':' && std::isalpha(static_cast<unsigned char>(path[0])) != 0;
}

}  // namespace

std::string NativePath(std::string_view path)
{
    std::string native;
    if (HasDrive(path)) {
        std::string drive = FolderOf(RegistryFilePath()) + "/drive_" +
                            static_cast<char>(std::tolower(static_cast<unsigned char>(path[0])));
        MakeFolders(drive);
        path.remove_prefix(2);
        if (path.empty()) return drive;
        native = drive + "/";
    }
    for (const char c : path) {
        const char separated = c == '\\' ? '/' : c;
        // "C:\" and "/var/log/" get a second separator when a file name is put behind them.
        if (separated == '/' && native.ends_with('/')) continue;
        native += separated;
    }
    return native;
}

}  // namespace marbex::platform
