#include "marbex_opos/check/serial_cable.h"

#include <algorithm>
#include <array>

#include "comm/com_layer_log.h"
#include "comm/serial_transport.h"
#include "marbex_opos/check/check.h"
#include "marbex_opos/check/system_facts.h"
#include "marbex_opos/nearest.h"
#include "platform/clock.h"

namespace marbex::tools {

namespace {

constexpr const char* kStep = "port";
constexpr uint32_t kXonXoff = 1;  // flow control of the transport
constexpr uint32_t kHardware = 0;

class SerialCable final : public Cable {
public:
    // 0, or the system's error.
    uint32_t Open(const support::DeviceProfileStruct& profile)
    {
        const std::string format = profile.Format;
        const uint32_t parity = format.find_first_of("Oo") != std::string::npos   ? 1
                                : format.find_first_of("Ee") != std::string::npos ? 2
                                                                                  : 0;
        const std::string name = "COM" + std::to_string(profile.Com);
        serial_.InitPort(name.c_str(), profile.Speed, parity, format.starts_with('7') ? 7 : 8, 0,
                         profile.Handshake == 2 ? kXonXoff : kHardware);
        serial_.SetTimeout(10, 1000, 10, 1000, 10);
        if (serial_.OpenSerial() != 0) return std::max<uint32_t>(serial_.LastSystemError(), 1);
        serial_.SetDTR(true);
        serial_.SetRTS(true);
        return 0;
    }

    bool Send(std::string_view bytes) override
    {
        return serial_.WriteSerial(reinterpret_cast<const uint8_t*>(bytes.data()),
                                   static_cast<uint32_t>(bytes.size())) == 0;
    }

    std::string Receive(std::size_t most, uint32_t milliseconds) override
    {
        std::string bytes(most, '\0');
        uint32_t count = 0;
        serial_.ReadSerialWithin(reinterpret_cast<uint8_t*>(bytes.data()), static_cast<uint32_t>(most), milliseconds,
                                 &count);
        bytes.resize(count);
        return bytes;
    }

private:
    comm::CComLayerLog noLog_;
    comm::CNuComSerial serial_{noLog_, platform::SystemSerial(), platform::SystemClock()};
};

std::string Named(const std::vector<platform::SerialPortEntry>& ports)
{
    std::vector<std::string> names;
    names.reserve(ports.size());
    for (const platform::SerialPortEntry& entry : ports)
        names.push_back(entry.port + " (" + entry.device + ")");
    return Joined(names);
}

void TellFailure(uint32_t error, const platform::SerialPortEntry& port, const DeviceView& device, Steps& steps)
{
    const std::string place = port.port + " (" + port.device + ")";
    const std::vector<std::string> users = UsersOfFile(port.device);
    switch (FaultOf(error)) {
        case PortFault::kMissing:
            steps.Wrong(kStep, place + " is not there: " + SystemWords(error),
                        "plug the adapter in, or take another port: " + SetCommand(device, "Com=NUMBER"));
            return;
        case PortFault::kDenied: {
            const Advice advice = WhyDenied(port.device);
            steps.Wrong(kStep, place + ": " + SystemWords(error) + advice.text, advice.next);
            return;
        }
        case PortFault::kInUse:
            steps.Wrong(kStep,
                        place + " is held by " + (users.empty() ? "another program" : Joined(users)) +
                            ": is the till program running?",
                        "close it, then: marbex-opos check " + device.name);
            return;
        case PortFault::kNoTerminal:
            steps.Wrong(kStep, place + " is no serial port", SetCommand(device, "Com=NUMBER"));
            return;
        default:
            steps.Wrong(kStep, place + ": " + SystemWords(error), SetCommand(device, "Com=NUMBER"));
    }
}

}  // namespace

std::unique_ptr<Cable> OpenSerialCable(const support::DeviceProfileStruct& profile, uint32_t& error)
{
    auto cable = std::make_unique<SerialCable>();
    error = cable->Open(profile);
    if (error != 0) return nullptr;
    return cable;
}

std::unique_ptr<Cable> CheckSerialPort(const DeviceView& device, Steps& steps)
{
    const std::string name = "COM" + std::to_string(device.profile.Com);
    const auto ports = platform::SystemSerial().Ports().value_or(std::vector<platform::SerialPortEntry>());
    const auto port = std::ranges::find(ports, name, &platform::SerialPortEntry::port);
    if (port == ports.end()) {
        steps.Wrong(
            kStep,
            "there is no " + name + (ports.empty() ? ", nor any other serial port" : "; there are: " + Named(ports)),
            ports.empty() ? "plug the adapter in"
                          : SetCommand(device, "Com=" + ports.front().port.substr(
                                                            std::min<std::size_t>(3, ports.front().port.size()))));
        return nullptr;
    }
    uint32_t error = 0;
    std::unique_ptr<Cable> cable = OpenSerialCable(device.profile, error);
    if (!cable) {
        TellFailure(error, *port, device, steps);
        return nullptr;
    }
    steps.Fine(kStep, name + " (" + port->device + ") can be opened");
    return cable;
}

}  // namespace marbex::tools
