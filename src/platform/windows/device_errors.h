#pragma once

// What a transfer to a device ends with when the device is no longer there.

#include <windows.h>

namespace marbex::platform {

inline constexpr DWORD kErrorNoSuchDevice = 433;  // ERROR_NO_SUCH_DEVICE, which MinGW's headers lack

// Drivers do not agree on how they say it. Access denied is what the I/O manager answers once a device is about to be
// deleted; an aborted operation is a transfer that was under way when the device was pulled, since no transfer here
// outlives the call that aborts it.
inline bool IsDeviceGone(DWORD error)
{
    switch (error) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_ACCESS_DENIED:
        case ERROR_NOT_READY:
        case ERROR_BAD_COMMAND:
        case ERROR_GEN_FAILURE:
        case ERROR_DEV_NOT_EXIST:
        case ERROR_BROKEN_PIPE:
        case ERROR_NO_DATA:
        case ERROR_PIPE_NOT_CONNECTED:
        case kErrorNoSuchDevice:
        case ERROR_OPERATION_ABORTED:
        case ERROR_IO_DEVICE:
        case ERROR_DEVICE_NOT_CONNECTED:
        case ERROR_DEVICE_REMOVED:
            return true;
        default:
            return false;
    }
}

}  // namespace marbex::platform
