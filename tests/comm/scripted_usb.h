#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/usb.h"

namespace marbex::tests {

// A machine with one USB printer that does as the test says.
struct ScriptedUsb final : platform::UsbSystem {
    struct Pipe;

    static constexpr const char* kPrinters = "SYSTEM\\CurrentControlSet\\Control\\Print\\Printers\\";
    static constexpr const char* kEnumeration = "SYSTEM\\CurrentControlSet\\Enum\\USB\\";

    ScriptedUsb() { Install("Talis", "Vid_f055&Pid_0101", "5&77&0&1", "6&1A2B3C&0"); }

    // An installed printer, its device key, the instance and the instance's prefix.
    void Install(const std::string& name, const std::string& device, const std::string& instance,
                 const std::string& prefix)
    {
        subkeys[kPrinters].push_back(name);
        texts[std::string(kPrinters) + name + "\\PnPData|DeviceInstanceId"] = "USBPRINT\\Marbex\\" + prefix + "&USB001";
        subkeys[kEnumeration].push_back(device);
        subkeys[kEnumeration + device + "\\"].push_back(instance);
        texts[kEnumeration + device + "\\" + instance + "\\|ParentIdPrefix"] = prefix;
        interfaces.push_back("\\\\?\\usb#" + device + "#" + instance + "#{28d78fad-5a12-11d1-ae5b-0000f803a8c2}");
    }

    std::map<std::string, std::vector<std::string>> subkeys;
    std::map<std::string, std::string> texts;  // key|value
    std::set<std::string> unreadable;
    std::vector<std::string> interfaces;
    std::set<std::string> unusable;

    bool canOpenWrite = true, canOpenRead = true, canCancelWrite = true, canCancelRead = true, canCloseWrite = true,
         canCloseRead = true;
    std::function<platform::UsbTransfer(int call, std::size_t size)> write = [](int, std::size_t size) {
        return platform::UsbTransfer{platform::UsbStatus::kDone, size};
    };
    std::function<platform::UsbTransfer(int call, std::size_t size)> read = [](int, std::size_t) {
        return platform::UsbTransfer{platform::UsbStatus::kTimedOut, 0};
    };
    std::vector<std::size_t> writes, reads;
    std::vector<uint32_t> timeouts;
    std::vector<std::string> cancels, openedPaths;
    int opened = 0;  // pipes that are open now

    std::optional<std::vector<std::string>> Subkeys(const std::string& key) override
    {
        if (unreadable.contains(key)) return std::nullopt;
        return subkeys[key];
    }
    bool KeyExists(const std::string& key) override { return !unreadable.contains(key); }
    std::optional<std::string> Text(const std::string& key, const std::string& value) override
    {
        const auto found = texts.find(key + "|" + value);
        return found == texts.end() ? std::nullopt : std::optional(found->second);
    }
    std::vector<std::string> PresentInterfaces() override { return interfaces; }
    bool IsUsable(const std::string& devicePath) override { return !unusable.contains(devicePath); }
    std::unique_ptr<platform::UsbPipe> OpenPipe(const std::string& path, Direction direction, uint32_t& error) override;
};

struct ScriptedUsb::Pipe final : platform::UsbPipe {
    Pipe(ScriptedUsb& script, Direction direction) : script_(script), direction_(direction) { ++script_.opened; }
    ~Pipe() override { --script_.opened; }

    void HeedStop(const platform::StopSignal&) override {}
    platform::UsbTransfer Write(std::span<const std::byte> bytes, uint32_t timeout) override
    {
        script_.timeouts.push_back(timeout);
        script_.writes.push_back(bytes.size());
        return script_.write(static_cast<int>(script_.writes.size()), bytes.size());
    }
    platform::UsbTransfer Read(std::span<std::byte> buffer, uint32_t timeout) override
    {
        script_.timeouts.push_back(timeout);
        script_.reads.push_back(buffer.size());
        std::fill(buffer.begin(), buffer.end(), std::byte{0x2A});
        return script_.read(static_cast<int>(script_.reads.size()), buffer.size());
    }
    platform::UsbTransfer ReadUntilStopped(std::span<std::byte> buffer, uint32_t timeout) override
    {
        return Read(buffer, timeout);
    }
    bool Cancel() override
    {
        script_.cancels.push_back(IsWrite() ? "write" : "read");
        return IsWrite() ? script_.canCancelWrite : script_.canCancelRead;
    }
    bool Close() override { return IsWrite() ? script_.canCloseWrite : script_.canCloseRead; }
    uint32_t LastError() const override { return 5; }

private:
    bool IsWrite() const { return direction_ == Direction::kWrite; }

    ScriptedUsb& script_;
    const Direction direction_;
};

inline std::unique_ptr<platform::UsbPipe> ScriptedUsb::OpenPipe(const std::string& path, Direction direction,
                                                                uint32_t& error)
{
    openedPaths.push_back(path);
    error = 5;
    const bool can = direction == Direction::kWrite ? canOpenWrite : canOpenRead;
    return can ? std::make_unique<Pipe>(*this, direction) : nullptr;
}

}  // namespace marbex::tests
