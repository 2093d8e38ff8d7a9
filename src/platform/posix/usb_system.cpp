#include "platform/posix/usb_system.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <map>
#include <utility>

#include "platform/posix/usb_node.h"
#include "platform/posix/usb_sysfs.h"

namespace marbex::platform {

namespace {

constexpr std::string_view kPrintersKey = "SYSTEM\\CurrentControlSet\\Control\\Print\\Printers";
constexpr std::string_view kEnumerationKey = "SYSTEM\\CurrentControlSet\\Enum\\USB";
constexpr std::string_view kDeviceClassesKey = "SYSTEM\\CurrentControlSet\\Control\\DeviceClasses";
constexpr std::string_view kKeyPrefix = "##?#";
constexpr std::string_view kPathPrefix = "\\\\?\\";

std::string WithoutTrailingBackslash(std::string key)
{
    while (key.ends_with('\\'))
        key.pop_back();
    return key;
}

std::string Lower(std::string text)
{
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

bool IsAtOrBelow(std::string_view key, std::string_view top)
{
    return Lower(std::string(key.substr(0, top.size()))) == Lower(std::string(top)) &&
           (key.size() == top.size() || key[top.size()] == '\\');
}

// The registry keys that Windows would have for the kernel's printers.
class KernelPrinterKeys {
public:
    explicit KernelPrinterKeys(const std::vector<KernelUsbPrinter>& printers)
    {
        Add(std::string(kPrintersKey));
        Add(std::string(kEnumerationKey));
        for (const KernelUsbPrinter& printer : printers) {
            const std::string queueInstance =
                "USBPRINT\\" + printer.product + "\\" + printer.instance + "&" + printer.name;
            for (const std::string& name : {printer.product, printer.name})
                if (!name.empty()) AddPrinter(name, queueInstance);
            const std::string device =
                std::string(kEnumerationKey) + "\\Vid_" + printer.vendor + "&Pid_" + printer.device;
            Add(device);
            Add(device + "\\" + printer.instance, {"ParentIdPrefix", printer.instance});
        }
    }

    bool Exists(const std::string& key) const { return keys_.contains(Lower(key)); }

    std::optional<std::vector<std::string>> Subkeys(const std::string& key) const
    {
        if (!Exists(key)) return std::nullopt;
        const std::string parent = Lower(key) + "\\";
        std::vector<std::string> names;
        for (const auto& [lower, entry] : keys_)
            if (lower.starts_with(parent) && lower.find('\\', parent.size()) == std::string::npos)
                names.push_back(entry.name.substr(parent.size()));
        return names;
    }

    std::optional<std::string> Text(const std::string& key, const std::string& value) const
    {
        const auto found = keys_.find(Lower(key));
        if (found == keys_.end() || Lower(found->second.value.first) != Lower(value)) return std::nullopt;
        return found->second.value.second;
    }

private:
    struct Entry {
        std::string name;
        std::pair<std::string, std::string> value;  // no key here has more than one
    };

    void Add(const std::string& key, std::pair<std::string, std::string> value = {})
    {
        keys_.emplace(Lower(key), Entry{key, std::move(value)});
    }

    // The first of several printers with one name keeps it.
    void AddPrinter(const std::string& name, const std::string& queueInstance)
    {
        const std::string key = std::string(kPrintersKey) + "\\" + name;
        Add(key);
        Add(key + "\\PnPData", {"DeviceInstanceId", queueInstance});
    }

    std::map<std::string, Entry> keys_;
};

class NodePipe final : public UsbPipe {
public:
    NodePipe(std::shared_ptr<UsbNode> node, UsbSystem::Direction direction)
        : node_(std::move(node)), direction_(direction)
    {
    }

    void HeedStop(const StopSignal& stop) override { stop_ = &stop; }

    UsbTransfer Write(std::span<const std::byte> bytes, uint32_t timeoutMilliseconds) override
    {
        if (direction_ != UsbSystem::Direction::kWrite) return WrongDirection();
        return node_->Write(bytes, TransferLimit(timeoutMilliseconds, *stop_), lastError_);
    }

    UsbTransfer Read(std::span<std::byte> buffer, uint32_t timeoutMilliseconds) override
    {
        return ReadWithin(buffer, TransferLimit(timeoutMilliseconds, *stop_));
    }

    UsbTransfer ReadUntilStopped(std::span<std::byte> buffer, uint32_t timeoutMilliseconds) override
    {
        return ReadWithin(buffer, TransferLimit(timeoutMilliseconds, *stop_, TransferLimit::AtStop::kEnd));
    }

    // A read leaves nothing behind that would have to be ended.
    bool Cancel() override { return direction_ == UsbSystem::Direction::kRead || node_->CancelWrite(lastError_); }

    bool Close() override
    {
        if (node_ == nullptr) return false;
        node_.reset();
        return true;
    }

    uint32_t LastError() const override { return lastError_; }

private:
    UsbTransfer ReadWithin(std::span<std::byte> buffer, const TransferLimit& limit)
    {
        return direction_ == UsbSystem::Direction::kRead ? node_->Read(buffer, limit, lastError_) : WrongDirection();
    }

    UsbTransfer WrongDirection()
    {
        lastError_ = EACCES;
        return {UsbStatus::kNoResult, 0};
    }

    std::shared_ptr<UsbNode> node_;
    const UsbSystem::Direction direction_;
    const StopSignal* stop_ = &kNeverStopped;
    uint32_t lastError_ = 0;
};

class PosixUsb final : public UsbSystem {
public:
    PosixUsb(const Registry& registry, std::string classFolder, std::string deviceFolder)
        : registry_(registry), classFolder_(std::move(classFolder)), deviceFolder_(std::move(deviceFolder))
    {
    }

    std::optional<std::vector<std::string>> Subkeys(const std::string& key) override
    {
        const std::string path = WithoutTrailingBackslash(key);
        return RegistryHolds(path) ? registry_.Subkeys(path) : KernelKeys().Subkeys(path);
    }

    bool KeyExists(const std::string& key) override
    {
        const std::string path = WithoutTrailingBackslash(key);
        return RegistryHolds(path) ? registry_.KeyExists(path) : KernelKeys().Exists(path);
    }

    std::optional<std::string> Text(const std::string& key, const std::string& value) override
    {
        const std::string path = WithoutTrailingBackslash(key);
        if (!RegistryHolds(path)) return KernelKeys().Text(path, value);
        const auto found = registry_.Value(path, value);
        if (!found || (found->type != RegistryType::kSz && found->type != RegistryType::kExpandSz)) return std::nullopt;
        return found->data;
    }

    std::vector<std::string> PresentInterfaces() override
    {
        std::vector<std::string> paths;
        for (Interface& interface : Interfaces())
            paths.push_back(std::move(interface.path));
        return paths;
    }

    bool IsUsable(const std::string& devicePath) override
    {
        const auto node = NodeOf(devicePath);
        return node && UsbNode::IsUsable(*node);
    }

    std::unique_ptr<UsbPipe> OpenPipe(const std::string& path, Direction direction, uint32_t& error) override
    {
        const std::string_view suffix = direction == Direction::kWrite ? "\\PIPE01\\" : "\\PIPE00\\";
        error = ENOENT;
        if (!path.ends_with(suffix)) return nullptr;
        const auto nodePath = NodeOf(path.substr(0, path.size() - suffix.size()));
        if (!nodePath) return nullptr;
        auto node = UsbNode::Open(*nodePath, error);
        return node == nullptr ? nullptr : std::make_unique<NodePipe>(std::move(node), direction);
    }

private:
    struct Interface {
        std::string path;
        std::string node;
    };

    // Each of the two trees is the registry's own when it is there, else that of the kernel's printers.
    bool RegistryHolds(std::string_view path) const
    {
        for (const std::string_view top : {kPrintersKey, kEnumerationKey})
            if (IsAtOrBelow(path, top)) return registry_.KeyExists(top);
        return true;
    }

    KernelPrinterKeys KernelKeys() const
    {
        return KernelPrinterKeys(FindKernelUsbPrinters(classFolder_, deviceFolder_));
    }

    std::vector<Interface> Interfaces() const
    {
        std::vector<Interface> interfaces = RegistryInterfaces();
        if (!interfaces.empty()) return interfaces;
        for (const KernelUsbPrinter& printer : FindKernelUsbPrinters(classFolder_, deviceFolder_))
            interfaces.push_back({std::string(kPathPrefix) + "usb#vid_" + printer.vendor + "&pid_" + printer.device +
                                      "#" + printer.instance + "#" + kUsbPrinterInterfaceClass,
                                  printer.node});
        return interfaces;
    }

    std::vector<Interface> RegistryInterfaces() const
    {
        std::vector<Interface> interfaces;
        const std::string classKey = std::string(kDeviceClassesKey).append("\\").append(kUsbPrinterInterfaceClass);
        for (const std::string& name : registry_.Subkeys(classKey).value_or(std::vector<std::string>{})) {
            if (!name.starts_with(kKeyPrefix)) continue;
            const auto node = registry_.Value(std::string(classKey).append("\\").append(name), "DeviceNode");
            if (node && node->type == RegistryType::kSz && !node->data.empty())
                interfaces.push_back(
                    {std::string(kPathPrefix) + name.substr(kKeyPrefix.size()), NativePath(node->data)});
        }
        return interfaces;
    }

    std::optional<std::string> NodeOf(const std::string& devicePath) const
    {
        for (const Interface& interface : Interfaces())
            if (Lower(interface.path) == Lower(devicePath)) return interface.node;
        return std::nullopt;
    }

    const Registry& registry_;
    const std::string classFolder_;
    const std::string deviceFolder_;
};

}  // namespace

std::unique_ptr<UsbSystem> NewPosixUsb(const Registry& registry, std::string classFolder, std::string deviceFolder)
{
    return std::make_unique<PosixUsb>(registry, std::move(classFolder), std::move(deviceFolder));
}

UsbSystem& SystemUsb()
{
    // Never destroyed: pipes may be closed while the process ends, in any order.
    static UsbSystem& usb = *NewPosixUsb(SystemRegistry(), "/sys/class/usbmisc", "/dev/usb").release();
    return usb;
}

}  // namespace marbex::platform
