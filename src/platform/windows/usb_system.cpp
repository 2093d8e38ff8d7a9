// clang-format off
#include <windows.h>
#include <objbase.h>
#include <setupapi.h>
// clang-format on

#include <memory>
#include <utility>

#include "platform/usb.h"
#include "platform/windows/unique_handle.h"
#include "platform/windows/usb_pipe.h"
#include "platform/windows/wide_text.h"

namespace marbex::platform {

namespace {

constexpr DWORD kSharedByAll = FILE_SHARE_READ | FILE_SHARE_WRITE;

// The list of what is present of a class.
class DeviceList {
public:
    explicit DeviceList(const GUID& interfaceClass)
        : class_(interfaceClass),
          list_(SetupDiGetClassDevsA(&class_, nullptr, nullptr, DIGCF_PRESENT | DIGCF_DEVICEINTERFACE))
    {
    }
    DeviceList(const DeviceList&) = delete;
    DeviceList& operator=(const DeviceList&) = delete;
    ~DeviceList()
    {
        if (list_ != INVALID_HANDLE_VALUE) SetupDiDestroyDeviceInfoList(list_);
    }

    std::vector<std::string> Paths() const
    {
        std::vector<std::string> paths;
        if (list_ == INVALID_HANDLE_VALUE) return paths;
        SP_DEVICE_INTERFACE_DATA item{};
        item.cbSize = sizeof item;
        for (DWORD index = 0; SetupDiEnumDeviceInterfaces(list_, nullptr, &class_, index, &item) != FALSE; ++index) {
            std::string path = PathOf(item);
            if (!path.empty()) paths.push_back(std::move(path));
        }
        return paths;
    }

private:
    // Empty when the system does not tell, for one that has just been unplugged.
    std::string PathOf(SP_DEVICE_INTERFACE_DATA& item) const
    {
        DWORD size = 0;
        SetupDiGetDeviceInterfaceDetailA(list_, &item, nullptr, 0, &size, nullptr);
        if (size < sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_A)) return {};
        // The structure is the head of a longer one: its text goes on behind it.
        const auto bytes = std::make_unique<std::byte[]>(size);
        auto* const detail = reinterpret_cast<SP_DEVICE_INTERFACE_DETAIL_DATA_A*>(bytes.get());
        detail->cbSize = sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_A);
        if (SetupDiGetDeviceInterfaceDetailA(list_, &item, detail, size, nullptr, nullptr) == FALSE) return {};
        return static_cast<const char*>(detail->DevicePath);
    }

    const GUID class_;
    const HDEVINFO list_;
};

class WindowsUsb final : public UsbSystem {
public:
    std::optional<std::vector<std::string>> Subkeys(const std::string& key) override
    {
        return SystemRegistry().Subkeys(key);
    }

    bool KeyExists(const std::string& key) override { return SystemRegistry().KeyExists(key); }

    std::optional<std::string> Text(const std::string& key, const std::string& value) override
    {
        auto found = SystemRegistry().Value(key, value);
        if (!found || (found->type != RegistryType::kSz && found->type != RegistryType::kExpandSz)) return std::nullopt;
        return std::move(found->data);
    }

    std::vector<std::string> PresentInterfaces() override
    {
        GUID interfaceClass{};
        CLSIDFromString(WideFromUtf8(kUsbPrinterInterfaceClass).c_str(), &interfaceClass);
        return DeviceList(interfaceClass).Paths();
    }

    bool IsUsable(const std::string& devicePath) override
    {
        return static_cast<bool>(UniqueHandle(CreateFileA(devicePath.c_str(), GENERIC_READ | GENERIC_WRITE,
                                                          kSharedByAll, nullptr, OPEN_EXISTING, 0, nullptr)));
    }

    std::unique_ptr<UsbPipe> OpenPipe(const std::string& path, Direction direction, uint32_t& error) override
    {
        const DWORD access = direction == Direction::kWrite ? GENERIC_WRITE : GENERIC_READ;
        UniqueHandle file(
            CreateFileA(path.c_str(), access, kSharedByAll, nullptr, OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr));
        if (file) return NewOverlappedPipe(std::move(file));
        error = GetLastError();
        return nullptr;
    }
};

}  // namespace

UsbSystem& SystemUsb()
{
    // Never destroyed: pipes may be closed while the process ends, in any order.
    static WindowsUsb& usb = *new WindowsUsb;
    return usb;
}

}  // namespace marbex::platform
