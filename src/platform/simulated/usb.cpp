// The USB printers of the machine: one for each cable that is wired, with the registry keys that tie it to its name.

#include <algorithm>
#include <string_view>

#include "platform/usb.h"

#include "platform/simulated/machine/cable.h"
#include "platform/simulated/machine/call.h"
#include "platform/unicode.h"

namespace marbex::platform {
namespace {

using simulated::Cable;
using simulated::Call;

constexpr uint32_t kNoSuchDevice = 19;
constexpr const char* kDeviceName = "Vid_F055&Pid_0001";
constexpr std::string_view kPrinters = "system\\currentcontrolset\\control\\print\\printers";
constexpr std::string_view kEnumeration = "system\\currentcontrolset\\enum\\usb";

// An instance is named after its printer: "7&printer&0", whose prefix is "7&printer".
std::string PrefixOf(const std::string& printer)
{
    return "7&" + printer;
}
std::string PathOf(const std::string& printer)
{
    return std::string("\\\\?\\usb#") + kDeviceName + "#" + PrefixOf(printer) + "&0#" + kUsbPrinterInterfaceClass;
}

class SimulatedPipe final : public UsbPipe {
public:
    SimulatedPipe(Cable& cable, uint64_t connection) : cable_(cable), connection_(connection) {}
    ~SimulatedPipe() override
    {
        const Call call;
        Shut();
    }

    void HeedStop(const StopSignal& stop) override { stop_ = &stop; }

    UsbTransfer Write(std::span<const std::byte> bytes, uint32_t timeoutMilliseconds) override
    {
        const Call call("write to a pipe");
        if (call.Fails()) return {UsbStatus::kNoResult, 0};
        const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        TransferLimit limit(timeoutMilliseconds, *stop_);
        std::size_t offered = 0;
        std::size_t left = 0;
        for (;;) {
            if (Gone()) return {UsbStatus::kGone, 0};
            offered += cable_.Offer(text.substr(offered));
            const std::size_t now = offered - std::min(offered, cable_.UnderWay());
            if (now > left) limit.Progress();
            left = now;
            if (left == text.size() || cable_.TakeShortWrite()) return {UsbStatus::kDone, left};
            if (!cable_.Await(limit)) return {UsbStatus::kTimedOut, left};
        }
    }

    UsbTransfer Read(std::span<std::byte> buffer, uint32_t timeoutMilliseconds) override
    {
        return ReadWithin(buffer, TransferLimit(timeoutMilliseconds, *stop_));
    }

    UsbTransfer ReadUntilStopped(std::span<std::byte> buffer, uint32_t timeoutMilliseconds) override
    {
        return ReadWithin(buffer, TransferLimit(timeoutMilliseconds, *stop_, TransferLimit::AtStop::kEnd));
    }

    bool Cancel() override
    {
        const Call call("cancelling a pipe");
        cable_.Discard();
        return !call.Fails();
    }

    bool Close() override
    {
        const Call call("close of a pipe");
        Shut();
        return !call.Fails();
    }

    uint32_t LastError() const override { return gone_ ? kNoSuchDevice : 0; }

private:
    void Shut() { cable_.Close(connection_, true); }

    UsbTransfer ReadWithin(std::span<std::byte> buffer, const TransferLimit& limit)
    {
        const Call call("read of a pipe");
        if (call.Fails()) return {UsbStatus::kNoResult, 0};
        for (;;) {
            if (Gone()) return {UsbStatus::kGone, 0};
            if (cable_.HasInput())
                return {UsbStatus::kDone, cable_.Fetch(reinterpret_cast<char*>(buffer.data()), buffer.size())};
            if (!cable_.Await(limit)) return {UsbStatus::kTimedOut, 0};
        }
    }

    // A device that has been unplugged stays gone for whoever had it open.
    bool Gone()
    {
        gone_ = gone_ || cable_.Unplugged() || cable_.State(connection_) != Cable::Line::kConnected;
        return gone_;
    }

    Cable& cable_;
    const uint64_t connection_;
    const StopSignal* stop_ = &kNeverStopped;
    bool gone_ = false;
};

class SimulatedUsb final : public UsbSystem {
public:
    std::optional<std::vector<std::string>> Subkeys(const std::string& key) override
    {
        const Call call("list of the USB devices");
        if (call.Fails()) return std::nullopt;
        const std::string path = Folded(key);
        std::vector<std::string> names;
        for (const auto& [printer, cable] : simulated::TheWiring().usb) {
            if (path == kPrinters) names.push_back(printer);
            if (path.starts_with(kEnumeration) && path != kEnumeration) names.push_back(PrefixOf(printer) + "&0");
        }
        if (path == kEnumeration) names.emplace_back(kDeviceName);
        return names;
    }

    bool KeyExists(const std::string&) override
    {
        const Call call("look for a USB device");
        return !call.Fails();
    }

    std::optional<std::string> Text(const std::string& key, const std::string& value) override
    {
        const Call call("text of a USB device");
        if (call.Fails()) return std::nullopt;
        const std::string path = Folded(key);
        for (const auto& [printer, cable] : simulated::TheWiring().usb) {
            const std::string prefix = PrefixOf(printer);
            if (value == "DeviceInstanceId" && path.find(Folded(printer)) != std::string::npos)
                return std::string("USB\\") + kDeviceName + "\\" + prefix + "&0";
            if (value == "ParentIdPrefix" && path.find(Folded(prefix)) != std::string::npos) return prefix;
        }
        return std::nullopt;
    }

    std::vector<std::string> PresentInterfaces() override
    {
        const Call call("list of the USB interfaces");
        if (call.Fails()) return {};
        std::vector<std::string> paths;
        for (const auto& [printer, cable] : simulated::TheWiring().usb) {
            if (!cable->Unplugged()) paths.push_back(PathOf(printer));
        }
        return paths;
    }

    bool IsUsable(const std::string&) override { return true; }

    std::unique_ptr<UsbPipe> OpenPipe(const std::string& path, Direction direction, uint32_t& error) override
    {
        const Call call("open of a pipe");
        for (const auto& [printer, cable] : simulated::TheWiring().usb) {
            if (call.Fails() || cable->Unplugged() || !path.starts_with(PathOf(printer))) continue;
            if (direction == Direction::kWrite) writing_ = cable->Connect();  // it is opened first
            return std::make_unique<SimulatedPipe>(*cable, writing_);
        }
        error = kNoSuchDevice;
        return nullptr;
    }

private:
    uint64_t writing_ = 0;  // the connection of the last pipe for writing

    static std::string Folded(const std::string& key)
    {
        std::string path = FoldCase(key);
        while (path.ends_with('\\'))
            path.pop_back();
        return path;
    }
};

}  // namespace

UsbSystem& SystemUsb()
{
    static auto& usb = *new SimulatedUsb;
    return usb;
}

}  // namespace marbex::platform
