#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "marbex_opos/check/check.h"
#include "marbex_opos/check/system_facts.h"
#include "marbex_opos/devices/profile_check.h"
#include "platform/posix/usb_sysfs.h"
#include "platform/registry.h"
#include "platform/usb.h"

namespace marbex::tools {

namespace {

namespace fs = std::filesystem;

std::string UserName()
{
    const passwd* entry = getpwuid(geteuid());
    return entry != nullptr ? entry->pw_name : std::to_string(geteuid());
}

bool IsMember(const group& group)
{
    const std::string user = UserName();
    for (char** member = group.gr_mem; *member != nullptr; ++member) {
        if (user == *member) return true;
    }
    return false;
}

// The programs that have something open whose link below /proc/PID/fd matches.
template <typename Matches>
std::vector<std::string> UsersOf(const Matches& matches)
{
    std::vector<std::string> users;
    std::error_code error;
    for (const fs::directory_entry& process : fs::directory_iterator("/proc", error)) {
        const std::string number = process.path().filename().string();
        if (number.find_first_not_of("0123456789") != std::string::npos || number == std::to_string(getpid())) continue;
        std::error_code denied;
        for (const fs::directory_entry& file : fs::directory_iterator(process.path() / "fd", denied)) {
            if (!matches(file.path())) continue;
            std::string name;
            std::ifstream(process.path() / "comm") >> name;
            users.push_back(name + " (" + number + ")");
            break;
        }
    }
    return users;
}

// The inodes of this machine's connections to the address, as /proc/net/tcp lists them.
std::vector<std::string> ConnectionsTo(uint32_t address, uint16_t port)
{
    char remote[16];
    std::snprintf(remote, sizeof remote, "%02X%02X%02X%02X:%04X", address & 0xFF, address >> 8 & 0xFF,
                  address >> 16 & 0xFF, address >> 24 & 0xFF, port);
    std::ifstream table("/proc/net/tcp");
    std::vector<std::string> links;
    for (std::string line; std::getline(table, line);) {
        std::istringstream row(line);
        std::string slot, local, other, state, queues, timer, retries, user, timeout, inode;
        row >> slot >> local >> other >> state >> queues >> timer >> retries >> user >> timeout >> inode;
        if (other == remote && inode != "0") links.push_back("socket:[" + inode + "]");
    }
    return links;
}

}  // namespace

std::string SystemWords(uint32_t error)
{
    return std::strerror(static_cast<int>(error));
}

PortFault FaultOf(uint32_t error)
{
    switch (error) {
        case ECONNREFUSED:
            return PortFault::kRefused;
        case ETIMEDOUT:
        case EHOSTUNREACH:
        case EHOSTDOWN:
            return PortFault::kNoAnswer;
        case ENOENT:
        case ENODEV:
        case ENXIO:
            return PortFault::kMissing;
        case EACCES:
        case EPERM:
            return PortFault::kDenied;
        case EBUSY:
        case EAGAIN:
            return PortFault::kInUse;
        case ENOTTY:
        case EISDIR:
        case EINVAL:
            return PortFault::kNoTerminal;
        default:
            return PortFault::kOther;
    }
}

Advice WhyDenied(const std::string& path)
{
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return {"", "sudo ls -l " + ShellWord(path)};
    const group* owner = getgrgid(status.st_gid);
    const std::string name = owner != nullptr ? owner->gr_name : std::to_string(status.st_gid);
    const std::string user = UserName();
    const bool isForGroup = (status.st_mode & (S_IRGRP | S_IWGRP)) == (S_IRGRP | S_IWGRP);
    if (isForGroup && status.st_gid != 0 && owner != nullptr && IsMember(*owner)) {
        return {"; it is for the group " + name + ", to which " + user + " has been added after logging in",
                "log out and in again"};
    }
    if (isForGroup && status.st_gid != 0) {
        return {"; it is for the group " + name + ", and " + user + " is not in it",
                "sudo usermod -aG " + name + " " + user + ", then log in again"};
    }
    const std::string wanted = path.find("/usb/") != std::string::npos ? "lp" : "dialout";
    const std::string node = fs::path(path).filename().string();
    return {"; it is for no group that a till could be in: a rule of udev changes that",
            "echo 'KERNEL==\"" + node + "\", GROUP=\"" + wanted +
                "\", MODE=\"0660\"' | sudo tee /etc/udev/rules.d/60-marbex-opos.rules; plug the cable in again"};
}

std::vector<std::string> UsersOfFile(const std::string& path)
{
    std::error_code error;
    const fs::path real = fs::canonical(path, error);
    return UsersOf([&](const fs::path& link) {
        std::error_code unreadable;
        return fs::read_symlink(link, unreadable) == (error ? fs::path(path) : real);
    });
}

std::vector<std::string> UsersOfAddress(uint32_t address, uint16_t port)
{
    const std::vector<std::string> links = ConnectionsTo(address, port);
    if (links.empty()) return {};
    return UsersOf([&](const fs::path& link) {
        std::error_code unreadable;
        return std::ranges::find(links, fs::read_symlink(link, unreadable).string()) != links.end();
    });
}

std::string UsbPlace(const std::string& devicePath)
{
    constexpr std::string_view kPrefix = "\\\\?\\";
    const std::string key = "SYSTEM\\CurrentControlSet\\Control\\DeviceClasses\\" +
                            std::string(platform::kUsbPrinterInterfaceClass) + "\\##?#" +
                            devicePath.substr(std::min(kPrefix.size(), devicePath.size()));
    if (const auto node = platform::SystemRegistry().Value(key, "DeviceNode")) {
        return platform::NativePath(node->data);
    }
    for (const platform::KernelUsbPrinter& printer :
         platform::FindKernelUsbPrinters("/sys/class/usbmisc", "/dev/usb")) {
        if (devicePath.find("#" + printer.instance + "#") != std::string::npos) return printer.node;
    }
    return devicePath;
}

bool MayWriteIn(const std::string& folder)
{
    return faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

std::string MakeFolderCommand(const std::string& folder)
{
    return "mkdir -p " + ShellWord(folder);
}

std::string LetWriteCommand(const std::string& folder)
{
    return "sudo chown " + UserName() + " " + ShellWord(folder);
}

// There is one registry here.
void CheckRegistryViews(Steps&) {}

}  // namespace marbex::tools
