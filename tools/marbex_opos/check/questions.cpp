#include "marbex_opos/check/questions.h"

#include <array>

#include "marbex_opos/check/serial_cable.h"
#include "marbex_opos/devices/device_store.h"

namespace marbex::tools {

Answer Ask(Cable& cable, std::string_view question, std::size_t length, uint32_t milliseconds)
{
    Answer answer;
    answer.wasSent = cable.Send(question);
    while (answer.wasSent && answer.bytes.size() < length && !cable.IsEnded()) {
        const std::string more = cable.Receive(64, milliseconds);
        if (more.empty()) break;
        answer.bytes += more;
    }
    return answer;
}

std::optional<uint32_t> AskFullStatus(Cable& cable, Answer& got, uint32_t milliseconds)
{
    constexpr std::size_t kLength = 6;
    got = Ask(cable, "\x10\x04\x14", kLength, milliseconds);
    if (got.bytes.size() != kLength || !got.bytes.starts_with("\x10\x0F")) return std::nullopt;
    uint32_t status = 0;
    for (std::size_t at = kLength; at-- > 2;)
        status = status << 8 | static_cast<unsigned char>(got.bytes[at]);
    return status;
}

std::optional<uint32_t> FindSpeed(const DeviceView& device)
{
    constexpr uint32_t kLongestAnswer = 300;  // ms; six bytes take 50 ms at the slowest
    // Those that printers are set to most come first.
    for (const uint32_t speed : {9600U, 19200U, 115200U, 38400U, 57600U, 4800U, 2400U, 1200U}) {
        if (speed == device.profile.Speed) continue;
        support::DeviceProfileStruct profile = device.profile;
        profile.Speed = speed;
        uint32_t error = 0;
        const std::unique_ptr<Cable> cable = OpenSerialCable(profile, error);
        Answer ignored;
        if (cable && AskFullStatus(*cable, ignored, kLongestAnswer)) return speed;
    }
    return std::nullopt;
}

}  // namespace marbex::tools
