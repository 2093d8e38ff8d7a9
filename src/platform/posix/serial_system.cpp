#include "platform/posix/serial_system.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <map>
#include <utility>

#include "platform/lock.h"
#include "platform/posix/serial_line.h"

namespace marbex::platform {

namespace {

namespace fs = std::filesystem;

constexpr const char* kDeviceMap = "HARDWARE\\DEVICEMAP\\SERIALCOMM";
constexpr std::string_view kDevicePrefix = "\\\\.\\";

// A UART that the kernel only reserves a name for has type 0 (PORT_UNKNOWN of the kernel's serial interface).
bool IsReservedName(const fs::path& classFolder, const std::string& name)
{
    std::ifstream file(classFolder / name / "type");
    int type = -1;
    return file >> type && type == 0;
}

std::vector<std::string> TerminalsNamed(const fs::path& deviceFolder, const fs::path& classFolder,
                                        const std::string& prefix)
{
    std::vector<std::pair<unsigned long, std::string>> found;
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(deviceFolder, ignored)) {
        const std::string name = entry.path().filename().string();
        const std::string digits = name.starts_with(prefix) ? name.substr(prefix.size()) : "";
        const bool numbered = !digits.empty() && digits.size() < 9 &&
                              std::all_of(digits.begin(), digits.end(), [](unsigned char c) { return isdigit(c); });
        if (numbered && !IsReservedName(classFolder, name))
            found.emplace_back(std::stoul(digits), entry.path().string());
    }
    std::sort(found.begin(), found.end());
    std::vector<std::string> paths;
    paths.reserve(found.size());
    for (auto& [number, path] : found)
        paths.push_back(std::move(path));
    return paths;
}

class PosixSerial final : public SerialSystem {
public:
    PosixSerial(const Registry& registry, std::string deviceFolder, std::string classFolder)
        : registry_(registry), deviceFolder_(std::move(deviceFolder)), classFolder_(std::move(classFolder))
    {
    }

    std::size_t CountPorts() override
    {
        const auto ports = Ports();
        return ports ? ports->size() : 0;
    }

    std::optional<std::vector<SerialPortEntry>> Ports() override
    {
        std::vector<SerialPortEntry> ports;
        if (const auto values = registry_.Values(kDeviceMap)) {
            for (const RegistryValue& value : *values)
                if (value.type == RegistryType::kSz) ports.push_back({value.name, value.data});
            return ports;
        }
        for (const char* prefix : {"ttyS", "ttyUSB", "ttyACM"})
            for (std::string& path : TerminalsNamed(deviceFolder_, classFolder_, prefix))
                ports.push_back({std::move(path), "COM" + std::to_string(ports.size() + 1)});
        return ports;
    }

    // The ports here behave as those of a current Windows, whose version this is.
    std::optional<SystemVersion> Version(uint32_t&) override
    {
        return SystemVersion{SystemVersion::Family::kWindowsNt, 10, 0};
    }

    LinkState QueryLink(const std::string& name, uint32_t&) override
    {
        const LockHold hold(lock_);
        return links_.contains(name) ? LinkState::kPresent : LinkState::kMissing;
    }

    bool DefineLink(const std::string& name, const std::string& target, uint32_t&) override
    {
        const LockHold hold(lock_);
        links_[name] = target;
        return true;
    }

    void RemoveLink(const std::string& name, const std::string& target) override
    {
        const LockHold hold(lock_);
        const auto found = links_.find(name);
        if (found != links_.end() && found->second == target) links_.erase(found);
    }

    std::unique_ptr<SerialLine> Open(const std::string& path, uint32_t& error) override
    {
        const std::string target = Resolve(path);
        if (!target.empty()) return OpenTerminal(target, error);
        error = ENOENT;
        return nullptr;
    }

private:
    // A link's target, or a path as it is; empty for a link that is not defined.
    std::string Resolve(const std::string& path)
    {
        if (!path.starts_with(kDevicePrefix)) return path;
        const LockHold hold(lock_);
        const auto found = links_.find(path.substr(kDevicePrefix.size()));
        return found == links_.end() ? "" : found->second;
    }

    const Registry& registry_;
    const std::string deviceFolder_;
    const std::string classFolder_;
    Lock lock_;
    std::map<std::string, std::string> links_ MARBEX_GUARDED_BY(lock_);
};

}  // namespace

std::unique_ptr<SerialSystem> NewPosixSerial(const Registry& registry, std::string deviceFolder,
                                             std::string terminalClassFolder)
{
    return std::make_unique<PosixSerial>(registry, std::move(deviceFolder), std::move(terminalClassFolder));
}

SerialSystem& SystemSerial()
{
    // Never destroyed: ports may be closed while the process ends, in any order.
    static SerialSystem& serial = *NewPosixSerial(SystemRegistry(), "/dev", "/sys/class/tty").release();
    return serial;
}

}  // namespace marbex::platform
