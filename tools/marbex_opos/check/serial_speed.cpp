#include "marbex_opos/check/serial_speed.h"

#include <memory>

#include "marbex_opos/check/questions.h"
#include "marbex_opos/check/serial_cable.h"

namespace marbex::tools {

std::optional<uint32_t> FindSpeed(const support::DeviceProfileStruct& profile)
{
    constexpr uint32_t kLongestAnswer = 300;  // ms; six bytes take 50 ms at the slowest
    // Those that printers are set to most come first.
    for (const uint32_t speed : {9600U, 19200U, 115200U, 38400U, 57600U, 4800U, 2400U, 1200U}) {
        if (speed == profile.Speed) continue;
        support::DeviceProfileStruct other = profile;
        other.Speed = speed;
        uint32_t error = 0;
        const std::unique_ptr<Cable> cable = OpenSerialCable(other, error);
        Answer ignored;
        if (cable && AskFullStatus(*cable, ignored, kLongestAnswer)) return speed;
    }
    return std::nullopt;
}

}  // namespace marbex::tools
