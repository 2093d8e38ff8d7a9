#include <windows.h>

#include <algorithm>
#include <array>
#include <map>
#include <string_view>

#include "platform/lock.h"
#include "platform/serial.h"
#include "platform/windows/serial_line.h"

namespace marbex::platform {

namespace {

constexpr const char* kDeviceMap = "HARDWARE\\DEVICEMAP\\SERIALCOMM";
constexpr std::string_view kDevicePrefix = "\\\\.\\";

using GetVersionFunction = LONG(WINAPI*)(OSVERSIONINFOW*);

// Links are known to the process as well as to the system. Wine says that it has made a link whose name has more than
// four characters and has made another one; there the port behind it is opened by its own name.
class WindowsSerial final : public SerialSystem {
public:
    std::size_t CountPorts() override
    {
        const auto ports = Ports();
        return ports ? ports->size() : 0;
    }

    std::optional<std::vector<SerialPortEntry>> Ports() override
    {
        const auto values = SystemRegistry().Values(kDeviceMap);
        if (!values) return std::nullopt;
        std::vector<SerialPortEntry> ports;
        for (const RegistryValue& value : *values)
            if (value.type == RegistryType::kSz) ports.push_back({value.name, value.data});
        return ports;
    }

    // The documented function tells a program without a manifest for its system that it runs on Windows 8; what the
    // kernel says of itself holds for any program that loads the driver.
    std::optional<SystemVersion> Version(uint32_t& error) override
    {
        const HMODULE kernel = GetModuleHandleA("ntdll.dll");
        const FARPROC function = kernel != nullptr ? GetProcAddress(kernel, "RtlGetVersion") : nullptr;
        if (function == nullptr) {
            error = GetLastError();
            return std::nullopt;
        }
        OSVERSIONINFOW version{};
        version.dwOSVersionInfoSize = sizeof version;
        const LONG status = reinterpret_cast<GetVersionFunction>(reinterpret_cast<void*>(function))(&version);
        if (status < 0) {
            error = static_cast<uint32_t>(status);
            return std::nullopt;
        }
        return SystemVersion{SystemVersion::Family::kWindowsNt, version.dwMajorVersion, version.dwMinorVersion};
    }

    LinkState QueryLink(const std::string& name, uint32_t& error) override
    {
        std::array<char, 1024> target{};
        if (QueryDosDeviceA(name.c_str(), target.data(), static_cast<DWORD>(target.size())) > 0)
            return LinkState::kPresent;
        const DWORD code = GetLastError();
        if (code == ERROR_INSUFFICIENT_BUFFER) return LinkState::kPresent;
        if (code == ERROR_FILE_NOT_FOUND) return LinkState::kMissing;
        error = code;
        return LinkState::kError;
    }

    bool DefineLink(const std::string& name, const std::string& target, uint32_t& error) override
    {
        if (DefineDosDeviceA(DDD_RAW_TARGET_PATH, name.c_str(), target.c_str()) == FALSE) {
            error = GetLastError();
            return false;
        }
        const LockHold hold(lock_);
        links_[name] = target;
        return true;
    }

    void RemoveLink(const std::string& name, const std::string& target) override
    {
        DefineDosDeviceA(DDD_RAW_TARGET_PATH | DDD_REMOVE_DEFINITION | DDD_EXACT_MATCH_ON_REMOVE, name.c_str(),
                         target.c_str());
        const LockHold hold(lock_);
        const auto found = links_.find(name);
        if (found != links_.end() && found->second == target) links_.erase(found);
    }

    std::unique_ptr<SerialLine> Open(const std::string& path, uint32_t& error) override
    {
        auto line = OpenSerialLine(path, error);
        if (line != nullptr || error != ERROR_FILE_NOT_FOUND) return line;
        const std::string port = PortOf(TargetOf(path));
        return port.empty() ? nullptr : OpenSerialLine(std::string(kDevicePrefix) + port, error);
    }

private:
    // What a link of ours leads to, empty for any other path.
    std::string TargetOf(const std::string& path)
    {
        if (!path.starts_with(kDevicePrefix)) return {};
        const LockHold hold(lock_);
        const auto found = links_.find(path.substr(kDevicePrefix.size()));
        return found != links_.end() ? found->second : "";
    }

    // The port of a device, empty for one that the map does not have.
    std::string PortOf(const std::string& device)
    {
        const auto ports = Ports();
        if (!ports) return {};
        const auto entry =
            std::ranges::find_if(*ports, [&device](const SerialPortEntry& known) { return known.device == device; });
        return entry != ports->end() ? entry->port : "";
    }

    Lock lock_;
    std::map<std::string, std::string> links_ MARBEX_GUARDED_BY(lock_);  // made by this process
};

}  // namespace

SerialSystem& SystemSerial()
{
    // Never destroyed: ports may be closed while the process ends, in any order.
    static WindowsSerial& serial = *new WindowsSerial;
    return serial;
}

}  // namespace marbex::platform
