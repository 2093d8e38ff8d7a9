#include <cerrno>
#include <filesystem>

#include "marbex_opos/check/check.h"
#include "marbex_opos/check/system_facts.h"
#include "platform/files.h"
#include "platform/registry.h"

namespace marbex::tools {

namespace {

namespace fs = std::filesystem;

constexpr const char* kStep = "logs";
constexpr uintmax_t kMegabyte = 1 << 20;
constexpr uintmax_t kLargeLog = 100 * kMegabyte;
constexpr uintmax_t kLittleSpace = 200 * kMegabyte;
// The driver's own names.
constexpr const char* kLogs[] = {"SOLogFile1.txt", "COposComm1.log"};

std::string Megabytes(uintmax_t bytes)
{
    return std::to_string(bytes / kMegabyte) + " MB";
}

void CheckFile(const std::string& file, const DeviceView& device, Steps& steps)
{
    const fs::path path(std::u8string(file.begin(), file.end()));
    std::error_code error;
    if (!fs::exists(fs::symlink_status(path, error))) return;
    errno = 0;
    if (!platform::OpenForAppend(file, platform::OtherWriters::kAdmitted)) {
        const std::string why = errno != 0 ? " (" + SystemWords(static_cast<uint32_t>(errno)) + ")" : "";
        steps.Warn(kStep, file + " is there and the driver does not write to it" + why + ": what it logs is lost",
                   SetCommand(device, "LogPath=FOLDER") + ", a folder that only the till's user may change");
        return;
    }
    const uintmax_t size = fs::file_size(path, error);
    if (!error && size > kLargeLog && device.profile.LogLimit == 0) {
        steps.Warn(kStep, file + " has grown to " + Megabytes(size) + " and has no limit",
                   SetCommand(device, "LogLimit=20"));
    }
}

}  // namespace

void CheckLogFolder(const DeviceView& device, Steps& steps)
{
    const support::DeviceProfileStruct& profile = device.profile;
    if (profile.LogEnabled == 0) return steps.Fine(kStep, "off");
    if (profile.LogLevel != 0) return steps.Fine(kStep, "to the debugger's output or standard error (LogLevel)");

    const std::string folder = platform::NativePath(profile.LogPath);
    const fs::path path(std::u8string(folder.begin(), folder.end()));
    std::error_code error;
    if (!fs::exists(path, error)) {
        return steps.Warn(kStep, "the folder " + folder + " is not there: what is logged is lost",
                          MakeFolderCommand(folder));
    }
    if (!fs::is_directory(path, error)) {
        return steps.Warn(kStep, folder + " is no folder: what is logged is lost",
                          SetCommand(device, "LogPath=FOLDER"));
    }
    if (!MayWriteIn(folder)) {
        return steps.Warn(kStep, "the folder " + folder + " may not be written by this user: what is logged is lost",
                          LetWriteCommand(folder));
    }
    const std::size_t before = steps.List().size();
    for (const char* log : kLogs)
        CheckFile(folder + "/" + log, device, steps);
    const fs::space_info space = fs::space(path, error);
    if (!error && space.available < kLittleSpace) {
        steps.Warn(kStep, Megabytes(space.available) + " are left on the disk of " + folder,
                   "free some; " + SetCommand(device, "LogLimit=5"));
    }
    if (steps.List().size() == before) steps.Fine(kStep, folder);
}

}  // namespace marbex::tools
