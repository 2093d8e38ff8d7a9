#pragma once

// The numeric properties of the printer: which state each may be accessed in, its value at every open, and what a write
// does.

#include <atomic>
#include <cstdint>
#include <span>

#include "device/printer_device.h"

namespace marbex::device {

// What an index asks of the device's state, or why it is refused.
enum class PropertyAccess : uint8_t { kAlways, kOpen, kOpenClaimed, kOpenClaimedEnabled, kRefused };

PropertyAccess AccessOf(int32_t index);

enum class WriteRule : uint8_t {
    kIgnored,   // succeeds and changes nothing
    kSameOnly,  // the current value is accepted, any other refused
    kDeviceEnabled,
    kFreezeEvents,
    kAsyncMode,
    kFlagWhenIdle,
    kMapMode,
};

struct NumericProperty {
    int32_t index;
    WriteRule write = WriteRule::kIgnored;
    int32_t atOpen = 0;
    // Where the value lives when it changes; null for a constant.
    std::atomic<int32_t> PrinterDevice::*member = nullptr;
    bool keptAtOpen = false;  // other code gives it its value
};

struct PropertyTable {
    static std::span<const NumericProperty> Numbers();  // capabilities included, by ascending index
    static const NumericProperty* Find(int32_t index);
};

}  // namespace marbex::device
