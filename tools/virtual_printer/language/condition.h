#pragma once

#include <cstdint>

#include "virtual_printer/happenings.h"

namespace marbex::virtual_printer {

// What state the mechanism is in, and the status bytes that tell it.
struct Condition {
    bool coverOpen = false;
    bool paperLow = false;
    bool paperOut = false;
    bool jam = false;
    bool drawerSignal = false;
    bool printing = false;  // the picture is not out yet

    bool Stopped() const { return coverOpen || paperOut || jam; }
    friend bool operator==(const Condition&, const Condition&) = default;
};

// The requests of DLE EOT n.
inline constexpr uint8_t kPrinterStatus = 0x01;
inline constexpr uint8_t kOfflineStatus = 0x02;
inline constexpr uint8_t kFullStatus = 0x14;

// One byte for the first two, 10 0F and four bytes for the full status.
Bytes StatusAnswer(const Condition& condition, uint8_t kind);

}  // namespace marbex::virtual_printer
