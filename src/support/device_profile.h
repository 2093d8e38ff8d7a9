#pragma once

// A device's profile: what the registry says of one printer.

#include <array>
#include <cstdint>

namespace marbex::support {

inline constexpr uint32_t SETTINGS_OPENCDTCUT = 0x1;  // kick the cash drawer after every paper cut

inline constexpr uint32_t kPortSerial = 0;
inline constexpr uint32_t kPortEthernet = 1;
inline constexpr uint32_t kPortUsb = 2;

// Text fields are zero-terminated UTF-8 of fixed capacity, the terminator included.
struct DeviceProfileStruct {
    char PrinterModel[128];
    char PrinterSubModel[128];
    char DeviceName[128];  // the device's name, or its logical name when it has one
    uint32_t PortType;     // 0 serial, 1 Ethernet, 2 USB
    uint32_t Com;          // 1 for COM1
    uint32_t Speed;        // baud
    char Format[20];       // "8N1"
    uint32_t Handshake;    // 2 Xon/Xoff, anything else hardware
    char LogPath[260];
    uint32_t LogEnabled;
    uint32_t LogLevel;
    uint32_t LogLimit;  // megabytes; 0: none
    char PrinterName[260];
    char IPAddress[20];
    uint32_t Port;
    uint32_t TimeoutRX;  // ms
    uint32_t TimeoutTX;  // ms
    uint32_t Settings;
    uint32_t ConfirmOutput;  // not 0: a job is complete only when the printer has told that it has all of it
    uint8_t Fonts[260];      // count N, then N set numbers of the character-set table
};

}  // namespace marbex::support
