// The serial ports of the machine: one for each cable that is wired.

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "platform/serial.h"

#include "platform/simulated/machine/cable.h"
#include "platform/simulated/machine/call.h"

namespace marbex::platform {
namespace {

using simulated::Cable;
using simulated::Call;

constexpr uint32_t kNoSuchDevice = 2;
constexpr uint32_t kInputOutputError = 5;
constexpr uint32_t kAccessDenied = 13;
constexpr const char* kDeviceFolder = "\\Device\\";
constexpr std::string_view kLinkPrefix = "\\\\.\\";

class SimulatedLine final : public SerialLine {
public:
    explicit SimulatedLine(Cable& cable) : cable_(cable), connection_(cable.Connect()) {}
    ~SimulatedLine() override
    {
        const Call call;
        Shut();
    }

    void HeedStop(const StopSignal& stop) override { stop_ = &stop; }

    std::optional<LineSettings> Settings() override
    {
        if (!Usable("settings of a line")) return std::nullopt;
        return settings_;
    }
    bool Apply(const LineSettings& settings) override
    {
        settings_ = settings;
        cable_.bytesPerSecond = settings.baudRate / 10;
        return Usable("change of a line's settings");
    }
    bool Apply(const SerialTimeouts& timeouts) override
    {
        timeouts_ = timeouts;
        return Usable("time-outs of a line");
    }
    bool SetDtr(bool) override { return Usable("DTR"); }
    bool SetRts(bool) override { return Usable("RTS"); }

    bool Purge(bool output, bool input) override
    {
        if (!Usable("purge")) return false;
        if (output) cable_.Discard();
        if (input) cable_.DiscardInput();
        return true;
    }

    SerialTransfer Read(std::span<std::byte> buffer) override
    {
        return ReadWithin(
            buffer, TransferLimit(Total(timeouts_.readConstant, timeouts_.readMultiplier, buffer.size()), *stop_));
    }

    SerialTransfer ReadUntilStopped(std::span<std::byte> buffer, uint32_t milliseconds) override
    {
        return ReadWithin(buffer, TransferLimit(milliseconds, *stop_, TransferLimit::AtStop::kEnd));
    }

    SerialTransfer Write(std::span<const std::byte> bytes) override
    {
        if (!Usable("write to a line")) return {};
        const simulated::Apart apart;
        const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        TransferLimit limit(Total(timeouts_.writeConstant, timeouts_.writeMultiplier, bytes.size()), *stop_);
        std::size_t offered = 0;
        std::size_t left = 0;
        while (left < text.size()) {
            offered += cable_.Offer(text.substr(offered));
            const std::size_t now = offered - std::min(offered, cable_.UnderWay());
            if (now > left) limit.Progress();
            left = now;
            if (left == text.size() || cable_.TakeShortWrite() || !cable_.Await(limit)) break;
            if (Gone()) return {};
        }
        return {true, left};
    }

    bool Close() override
    {
        const Call call("close of a line");
        Shut();
        return !call.Fails();
    }

    bool IsGone() const override { return gone_; }
    uint32_t LastError() const override { return gone_ ? kInputOutputError : 0; }

private:
    SerialTransfer ReadWithin(std::span<std::byte> buffer, const TransferLimit& limit)
    {
        if (!Usable("read of a line")) return {};
        const simulated::Apart apart;
        auto* const room = reinterpret_cast<char*>(buffer.data());
        std::size_t count = 0;
        for (;;) {
            count += cable_.Fetch(room + count, buffer.size() - count);
            if (count == buffer.size()) break;
            if (count > 0 && timeouts_.readInterval != 0) {
                const TransferLimit interval(std::min(timeouts_.readInterval, limit.Remaining()), *stop_);
                while (!cable_.HasInput() && cable_.Await(interval)) {
                }
                if (!cable_.HasInput()) break;
            } else if (!cable_.Await(limit)) {
                break;
            }
            if (Gone()) return {};
        }
        return {true, count};
    }

    static uint32_t Total(uint32_t constant, uint32_t multiplier, std::size_t count)
    {
        return static_cast<uint32_t>(std::min<uint64_t>(constant + uint64_t{multiplier} * count, kForever - 1));
    }

    // A device that has been unplugged stays gone for whoever had it open.
    bool Gone()
    {
        gone_ = gone_ || cable_.Unplugged();
        return gone_;
    }

    bool Usable(const char* what)
    {
        const Call call(what);
        return !Gone() && !call.Fails();
    }

    void Shut()
    {
        if (std::exchange(open_, false)) cable_.Close(connection_, true);
    }

    Cable& cable_;
    const uint64_t connection_;
    const StopSignal* stop_ = &kNeverStopped;
    LineSettings settings_;
    SerialTimeouts timeouts_;
    bool open_ = true;
    bool gone_ = false;
};

class SimulatedSerial final : public SerialSystem {
public:
    std::size_t CountPorts() override { return simulated::CallFails("count of the ports") ? 0 : Wired().size(); }

    std::optional<std::vector<SerialPortEntry>> Ports() override
    {
        const simulated::Apart apart;
        if (simulated::CallFails("map of the ports")) return std::nullopt;
        std::vector<SerialPortEntry> ports;
        for (const auto& [port, cable] : Wired())
            ports.push_back({kDeviceFolder + port, port});
        return ports;
    }

    std::optional<SystemVersion> Version(uint32_t& error) override
    {
        if (simulated::CallFails("version of the system")) return Failed(error), std::nullopt;
        return SystemVersion{SystemVersion::Family::kWindowsNt, 10, 0};
    }

    LinkState QueryLink(const std::string& name, uint32_t& error) override
    {
        const Call call("query of a link");
        if (call.Fails()) return Failed(error), LinkState::kError;
        return links_.contains(name) ? LinkState::kPresent : LinkState::kMissing;
    }

    bool DefineLink(const std::string& name, const std::string& target, uint32_t& error) override
    {
        const Call call("definition of a link");
        if (call.Fails()) return Failed(error);
        links_[name] = target;
        return true;
    }

    void RemoveLink(const std::string& name, const std::string&) override
    {
        const Call call;
        links_.erase(name);
    }

    std::unique_ptr<SerialLine> Open(const std::string& path, uint32_t& error) override
    {
        const simulated::Apart apart;
        if (simulated::CallFails("open of a line")) return Failed(error), nullptr;
        std::string_view name = path;
        if (name.starts_with(kLinkPrefix)) name.remove_prefix(kLinkPrefix.size());
        const auto link = links_.find(std::string(name));
        if (link != links_.end()) name = link->second;
        const std::string port(name.substr(std::min(name.size(), name.rfind('\\') + 1)));
        const auto found = Wired().find(port);
        if (found == Wired().end() || found->second->Unplugged()) {
            error = kNoSuchDevice;
            return nullptr;
        }
        if (found->second->IsConnected()) {
            error = kAccessDenied;
            return nullptr;
        }
        return std::make_unique<SimulatedLine>(*found->second);
    }

private:
    static const std::map<std::string, Cable*>& Wired()
    {
        simulated::Processor().Point();
        return simulated::TheWiring().serial;
    }

    static bool Failed(uint32_t& error)
    {
        error = kInputOutputError;
        return false;
    }

    std::map<std::string, std::string> links_;
};

}  // namespace

SerialSystem& SystemSerial()
{
    static auto& serial = *new SimulatedSerial;
    return serial;
}

}  // namespace marbex::platform
