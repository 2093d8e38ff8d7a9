#include "marbex_opos/check/check.h"
#include "marbex_opos/check/system_facts.h"
#include "marbex_opos/nearest.h"
#include "platform/tcp.h"

namespace marbex::tools {

namespace {

constexpr const char* kStep = "port";
constexpr uint32_t kConnectTimeout = 4000;  // ms
constexpr uint32_t kSendTimeout = 2000;     // ms
constexpr uint32_t kUsualPort = 9100;

class TcpCable final : public Cable {
public:
    explicit TcpCable(std::unique_ptr<platform::TcpSocket> socket) : socket_(std::move(socket))
    {
        socket_->SetSendTimeout(kSendTimeout);
    }

    bool Send(std::string_view bytes) override
    {
        const platform::TcpTransfer sent = socket_->Send(std::as_bytes(std::span(bytes)));
        if (sent.status == platform::TcpStatus::kAborted) isEnded_ = true;
        return sent.status == platform::TcpStatus::kOk && sent.count == bytes.size();
    }

    std::string Receive(std::size_t most, uint32_t milliseconds) override
    {
        std::string bytes(most, '\0');
        const platform::TcpTransfer got =
            socket_->ReceiveUntilStopped(std::as_writable_bytes(std::span(bytes)), milliseconds);
        const bool isOk = got.status == platform::TcpStatus::kOk;
        if (got.status == platform::TcpStatus::kAborted || (isOk && got.count == 0)) isEnded_ = true;
        bytes.resize(isOk ? got.count : 0);
        return bytes;
    }

    bool IsEnded() const override { return isEnded_; }

private:
    std::unique_ptr<platform::TcpSocket> socket_;
    bool isEnded_ = false;
};

void TellFailure(uint32_t error, const DeviceView& device, Steps& steps)
{
    const std::string host = device.profile.IPAddress;
    const std::string place = host + ":" + std::to_string(device.profile.Port);
    const std::string held = Connected(device);
    switch (FaultOf(error)) {
        case PortFault::kRefused:
            steps.Wrong(kStep,
                        place + " refuses the connection: nothing listens on that port, or the printer serves another" +
                            " till" + held,
                        device.profile.Port != kUsualPort
                            ? SetCommand(device, "Port=" + std::to_string(kUsualPort))
                            : "close the other till's program; else compare the port with the printer's own page");
            return;
        case PortFault::kNoAnswer:
            steps.Wrong(kStep,
                        "no answer from " + place + ": the printer is off, its cable is out, the address is another's" +
                            " or a firewall is between",
                        "ping " + host);
            return;
        default:
            steps.Wrong(kStep, place + ": " + SystemWords(error), "ping " + host);
    }
}

}  // namespace

std::string Connected(const DeviceView& device)
{
    const std::optional<uint32_t> address = platform::ParseIpv4(device.profile.IPAddress);
    if (!address || device.profile.PortType != support::kPortEthernet) return {};
    const std::vector<std::string> users = UsersOfAddress(*address, static_cast<uint16_t>(device.profile.Port));
    return users.empty() ? std::string() : "; connected to it: " + Joined(users);
}

std::unique_ptr<Cable> CheckTcpPort(const DeviceView& device, Steps& steps)
{
    const std::string host = device.profile.IPAddress;
    const std::optional<uint32_t> address = platform::ParseIpv4(host);
    if (!address || device.profile.Port == 0 || device.profile.Port > 65535) {
        steps.Wrong(kStep,
                    "no connection: " + host + ":" + std::to_string(device.profile.Port) +
                        " is no address and port such as 192.168.0.1:9100",
                    SetCommand(device, "IPAddress=ADDRESS Port=9100"));
        return nullptr;
    }
    std::unique_ptr<platform::TcpSocket> socket = platform::NewTcpSocket();
    if (!socket->Create() || !socket->Connect(*address, static_cast<uint16_t>(device.profile.Port), kConnectTimeout)) {
        TellFailure(socket->LastError(), device, steps);
        return nullptr;
    }
    steps.Fine(kStep, host + ":" + std::to_string(device.profile.Port) + " takes the connection");
    return std::make_unique<TcpCable>(std::move(socket));
}

}  // namespace marbex::tools
