#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/serial.h"

namespace marbex::tests {

// A machine with serial ports that do as the test says.
struct ScriptedSerial final : platform::SerialSystem {
    struct Line;

    std::vector<platform::SerialPortEntry> ports{{"\\Device\\Serial0", "COM1"}};
    bool mapReadable = true;
    std::optional<platform::SystemVersion> version =
        platform::SystemVersion{platform::SystemVersion::Family::kWindowsNt, 10, 0};
    LinkState link = LinkState::kMissing;
    bool canDefine = true;
    bool canOpen = true;
    uint32_t systemError = 5;
    std::vector<std::string> links;  // what was done with them
    std::string openedPath;
    int opened = 0;  // lines that are open now

    // The lines' behaviour, and what was asked of them.
    platform::LineSettings settings;
    bool canGet = true, canApply = true, canSetTimeouts = true, canSetLines = true, canPurge = true, canClose = true;
    bool gone = false;
    std::function<platform::SerialTransfer(int call, std::size_t size)> write = [](int, std::size_t size) {
        return platform::SerialTransfer{true, size};
    };
    platform::SerialTransfer read{true, 0};
    std::vector<std::size_t> writes;
    std::vector<uint32_t> readLimits;
    std::vector<std::string> purges, lines;
    platform::SerialTimeouts timeouts;

    std::size_t CountPorts() override { return ports.size(); }
    std::optional<std::vector<platform::SerialPortEntry>> Ports() override
    {
        return mapReadable ? std::optional(ports) : std::nullopt;
    }
    std::optional<platform::SystemVersion> Version(uint32_t& error) override
    {
        error = systemError;
        return version;
    }
    LinkState QueryLink(const std::string&, uint32_t&) override { return link; }
    bool DefineLink(const std::string& name, const std::string& target, uint32_t&) override
    {
        links.push_back("+" + name + "=" + target);
        return canDefine;
    }
    void RemoveLink(const std::string& name, const std::string&) override { links.push_back("-" + name); }
    std::unique_ptr<platform::SerialLine> Open(const std::string& path, uint32_t& error) override;
};

struct ScriptedSerial::Line final : platform::SerialLine {
    explicit Line(ScriptedSerial& script) : script_(script) { ++script_.opened; }
    ~Line() override { --script_.opened; }

    void HeedStop(const platform::StopSignal&) override {}
    std::optional<platform::LineSettings> Settings() override
    {
        return script_.canGet ? std::optional(script_.settings) : std::nullopt;
    }
    bool Apply(const platform::LineSettings& settings) override
    {
        if (script_.canApply) script_.settings = settings;
        return script_.canApply;
    }
    bool Apply(const platform::SerialTimeouts& timeouts) override
    {
        script_.timeouts = timeouts;
        return script_.canSetTimeouts;
    }
    bool SetDtr(bool on) override
    {
        script_.lines.push_back(on ? "DTR+" : "DTR-");
        return script_.canSetLines;
    }
    bool SetRts(bool on) override
    {
        script_.lines.push_back(on ? "RTS+" : "RTS-");
        return script_.canSetLines;
    }
    bool Purge(bool output, bool input) override
    {
        script_.purges.push_back(std::string(output ? "out" : "") + (input ? "in" : ""));
        return script_.canPurge;
    }
    platform::SerialTransfer Read(std::span<std::byte> buffer) override
    {
        std::fill_n(buffer.begin(), script_.read.count, std::byte{0x2A});
        return script_.read;
    }
    platform::SerialTransfer ReadUntilStopped(std::span<std::byte> buffer, uint32_t milliseconds) override
    {
        script_.readLimits.push_back(milliseconds);
        return Read(buffer);
    }
    platform::SerialTransfer Write(std::span<const std::byte> bytes) override
    {
        script_.writes.push_back(bytes.size());
        return script_.write(static_cast<int>(script_.writes.size()), bytes.size());
    }
    bool Close() override { return script_.canClose; }
    bool IsGone() const override { return script_.gone; }
    uint32_t LastError() const override { return script_.systemError; }

private:
    ScriptedSerial& script_;
};

inline std::unique_ptr<platform::SerialLine> ScriptedSerial::Open(const std::string& path, uint32_t& error)
{
    openedPath = path;
    error = systemError;
    return canOpen ? std::make_unique<Line>(*this) : nullptr;
}

}  // namespace marbex::tests
