#pragma once

#include <cstdint>

namespace marbex::comm {

// What a read with a time limit of its own brought.
enum class LinkRead : uint8_t {
    kArrived,  // at least one byte
    kNothing,  // the printer sent nothing in time, or the port's user is closing
    kFailed,   // the link is not there, or has just been opened anew: what was asked before will not be answered
};

}  // namespace marbex::comm
