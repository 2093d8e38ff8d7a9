// The USB printers of the machine: one for each cable that is wired, with the registry keys that tie it to its name.

#include <algorithm>
#include <string_view>

#include "platform/usb.h"

#include "platform/simulated/machine/cable.h"
#include "platform/unicode.h"

namespace marbex::platform {
namespace {

using simulated::Cable;
using simulated::Processor;

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
    ~SimulatedPipe() override { Close(); }

    void HeedStop(const StopSignal& stop) override { stop_ = &stop; }

    UsbTransfer Write(std::span<const std::byte> bytes, uint32_t timeoutMilliseconds) override
    {
        Processor().Point();
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
        Processor().Point();
        cable_.Discard();
        return true;
    }

    bool Close() override
    {
        Processor().Point();
        cable_.Close(connection_, true);
        return true;
    }

    uint32_t LastError() const override { return gone_ ? kNoSuchDevice : 0; }

private:
    UsbTransfer ReadWithin(std::span<std::byte> buffer, const TransferLimit& limit)
    {
        Processor().Point();
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
        Processor().Point();
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
        Processor().Point();
        return true;
    }

    std::optional<std::string> Text(const std::string& key, const std::string& value) override
    {
        Processor().Point();
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
        Processor().Point();
        std::vector<std::string> paths;
        for (const auto& [printer, cable] : simulated::TheWiring().usb) {
            if (!cable->Unplugged()) paths.push_back(PathOf(printer));
        }
        return paths;
    }

    bool IsUsable(const std::string&) override { return true; }

    std::unique_ptr<UsbPipe> OpenPipe(const std::string& path, Direction direction, uint32_t& error) override
    {
        Processor().Point();
        for (const auto& [printer, cable] : simulated::TheWiring().usb) {
            if (cable->Unplugged() || !path.starts_with(PathOf(printer))) continue;
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
