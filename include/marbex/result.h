#pragma once

// What the methods of the service objects answer.

#include <cstdint>

#pragma GCC visibility push(default)
extern "C" {

// The standard's name of a result code, such as "OPOS_E_NOHARDWARE" for 107, and what to do about it, as a sentence in
// English. Of an extended result code (201 and 203) as well. Never null; a code that the server does not give is called
// "unknown". The texts live as long as the library. Any thread.
const char* MarbexResultName(int32_t code);
const char* MarbexResultAdvice(int32_t code);
}
#pragma GCC visibility pop

namespace marbex {

// The result codes of OPOS. Where the standard answers OPOS_E_EXTENDED and a second number says more, the second number
// is the result here.
enum class [[nodiscard]] Result : int32_t{
    kSuccess = 0,   kClosed = 101,     kClaimed = 102,  kNotClaimed = 103, kNoService = 104,  kDisabled = 105,
    kIllegal = 106, kNoHardware = 107, kOffline = 108,  kNoExist = 109,    kExists = 110,     kFailure = 111,
    kTimeout = 112, kBusy = 113,       kExtended = 114, kCoverOpen = 201,  kPaperEmpty = 203,
};

inline const char* Name(Result result)
{
    return MarbexResultName(static_cast<int32_t>(result));
}
inline const char* Advice(Result result)
{
    return MarbexResultAdvice(static_cast<int32_t>(result));
}

}  // namespace marbex
