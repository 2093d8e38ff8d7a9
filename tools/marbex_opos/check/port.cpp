#include "marbex_opos/check/check.h"

namespace marbex::tools {

std::unique_ptr<Cable> CheckPort(const DeviceView& device, Steps& steps)
{
    switch (device.profile.PortType) {
        case support::kPortSerial:
            return CheckSerialPort(device, steps);
        case support::kPortEthernet:
            return CheckTcpPort(device, steps);
        case support::kPortUsb:
            return CheckUsbPort(device, steps);
        default:
            return nullptr;  // the values have told
    }
}

}  // namespace marbex::tools
