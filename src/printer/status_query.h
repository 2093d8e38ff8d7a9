#pragma once

#include <cstdint>
#include <optional>

#include "platform/clock.h"
#include "printer/encoder_traits.h"
#include "printer/printer_link.h"
#include "printer/printer_status.h"

namespace marbex::printer {

// Bits of the full status as one number: the four status bytes of the answer to DLE EOT 0x14, the first the lowest.
inline constexpr uint32_t kFullStatusPaperEnd = 0x000001;
inline constexpr uint32_t kFullStatusNearEnd = 0x000004;
inline constexpr uint32_t kFullStatusCover = 0x000300;
inline constexpr uint32_t kFullStatusPrinting = 0x000400;
inline constexpr uint32_t kFullStatusJam = 0x400000;

// Sends DLE EOT 0x14 and reads the six-byte answer: none when it is missing, short or malformed. Returns the result of
// the write.
int32_t AskFullStatus(const PrinterLink& link, std::optional<uint32_t>& fullStatus);

// The whole status query over an input already cleaned. False when it fails; flags set so far stay, with "no response".
// fullStatus is 0 until the printer has told it.
bool QueryStatus(const PrinterLink& link, StatusVariant variant, PrinterStatus& status, uint32_t& fullStatus);

// Asks for the error bit (DLE EOT 0x02) and waits for the answer at most two seconds; no answer is no error.
bool AskErrorBit(const PrinterLink& link, platform::Clock& clock);

}  // namespace marbex::printer
