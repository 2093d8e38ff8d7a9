#include <algorithm>

#include "comm/com_layer_log.h"
#include "comm/usb_transport.h"
#include "marbex_opos/check/check.h"
#include "marbex_opos/check/system_facts.h"
#include "marbex_opos/devices/profile_check.h"
#include "marbex_opos/nearest.h"
#include "platform/clock.h"
#include "platform/usb.h"

namespace marbex::tools {

namespace {

constexpr const char* kStep = "port";
constexpr uint32_t kNoSuchPrinter = 302;  // of the transport
constexpr uint32_t kSendTimeout = 2000;   // ms
constexpr const char* kPrintersKey = "SYSTEM\\CurrentControlSet\\Control\\Print\\Printers";

class UsbCable final : public Cable {
public:
    // 0 or the transport's code.
    uint32_t Find(const char* printerName) { return usb_.InitPrinter(printerName); }
    uint32_t Open()
    {
        usb_.SetTimeout(kSendTimeout, kSendTimeout);
        return usb_.OpenUsb();
    }

    bool Send(std::string_view bytes) override
    {
        return usb_.WriteUsb(reinterpret_cast<const uint8_t*>(bytes.data()), static_cast<uint32_t>(bytes.size())) == 0;
    }

    std::string Receive(std::size_t most, uint32_t milliseconds) override
    {
        std::string bytes(most, '\0');
        uint32_t count = 0;
        usb_.ReadUsbWithin(reinterpret_cast<uint8_t*>(bytes.data()), static_cast<uint32_t>(most), milliseconds, &count);
        bytes.resize(count);
        return bytes;
    }

private:
    comm::CComLayerLog noLog_;
    comm::CNuComUsb usb_{noLog_, platform::SystemUsb(), platform::SystemClock()};
};

// Why the printer is known and cannot be opened: what the first interface that fails says.
void TellFailure(const DeviceView& device, Steps& steps)
{
    const std::string name = device.profile.PrinterName;
    for (const std::string& path : platform::SystemUsb().PresentInterfaces()) {
        uint32_t error = 0;
        if (platform::SystemUsb().OpenPipe(path + "\\PIPE01\\", platform::UsbSystem::Direction::kWrite, error))
            continue;
        const std::string place = UsbPlace(path);
        const std::vector<std::string> users = UsersOfFile(place);
        const Advice denied = WhyDenied(place);
        switch (FaultOf(error)) {
            case PortFault::kDenied:
                return steps.Wrong(kStep, place + ": " + SystemWords(error) + denied.text, denied.next);
            case PortFault::kInUse:
                return steps.Wrong(kStep,
                                   place + " is held by " + (users.empty() ? "another program" : Joined(users)) +
                                       ": is the till program running?",
                                   "close it, then: marbex-opos check " + ShellWord(device.name));
            default:
                return steps.Wrong(
                    kStep, place + ": " + SystemWords(error),
                    "switch the printer on, plug its cable in; then: marbex-opos check " + ShellWord(device.name));
        }
    }
    steps.Wrong(kStep, "the USB printer \"" + name + "\" is known and is not plugged in, or not switched on",
                "switch it on, plug its cable in; then: marbex-opos check " + ShellWord(device.name));
}

}  // namespace

std::unique_ptr<Cable> CheckUsbPort(const DeviceView& device, Steps& steps)
{
    const std::string name = device.profile.PrinterName;
    auto cable = std::make_unique<UsbCable>();
    const uint32_t found = cable->Find(name.c_str());
    if (found == kNoSuchPrinter || found == 1) {
        const auto known = platform::SystemUsb().Subkeys(kPrintersKey).value_or(std::vector<std::string>());
        const std::string first = known.empty() ? "NAME" : known.front();
        steps.Wrong(kStep,
                    "there is no USB printer \"" + name + "\"" +
                        (known.empty() ? ", nor any other: it is not plugged in or not switched on"
                                       : "; there are: " + Joined(known)),
                    SetCommand(device, ShellWord("PrinterName=" + first)));
        return nullptr;
    }
    if (found != 0) {
        steps.Wrong(kStep, "\"" + name + "\" is installed, and no USB printer of this make belongs to it",
                    SetCommand(device, "PrinterName=NAME"));
        return nullptr;
    }
    if (cable->Open() != 0) {
        TellFailure(device, steps);
        return nullptr;
    }
    steps.Fine(kStep, "the USB printer \"" + name + "\" can be opened");
    return cable;
}

}  // namespace marbex::tools
