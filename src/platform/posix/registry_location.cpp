#include "platform/posix/registry_location.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <utility>
#include <vector>

#include "platform/lock.h"

namespace marbex::platform {

namespace {

constexpr const char* kSystemWideFile = "/etc/marbex-opos/registry.reg";

std::string HomeFolder()
{
    if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') return home;
    std::vector<char> buffer(4096);
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr) {
        return found->pw_dir;
    }
    return "/";
}

std::string Search()
{
    if (const char* chosen = std::getenv("MARBEX_OPOS_REGISTRY"); chosen != nullptr && *chosen != '\0') return chosen;
    if (access(kSystemWideFile, R_OK) == 0) return kSystemWideFile;
    return HomeFolder() + "/.config/marbex-opos/registry.reg";
}

// What the last search found.
struct Location {
    Lock lock;
    std::string path MARBEX_GUARDED_BY(lock);
};

Location& TheLocation()
{
    static Location& location = *new Location;  // never destroyed: a thread that outlives main may still log
    return location;
}

}  // namespace

void LocateRegistry()
{
    std::string found = Search();
    const LockHold hold(TheLocation().lock);
    TheLocation().path = std::move(found);
}

std::string RegistryFilePath()
{
    const LockHold hold(TheLocation().lock);
    if (TheLocation().path.empty()) TheLocation().path = Search();
    return TheLocation().path;
}

bool MakeFolders(const std::string& folder)
{
    if (mkdir(folder.c_str(), 0755) == 0 || errno == EEXIST) return true;
    if (errno != ENOENT) return false;
    const std::string above = FolderOf(folder);
    if (above == folder || above == ".") return false;
    return MakeFolders(above) && (mkdir(folder.c_str(), 0755) == 0 || errno == EEXIST);
}

std::string FolderOf(const std::string& path)
{
    const std::size_t slash = path.find_last_of('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

}  // namespace marbex::platform
