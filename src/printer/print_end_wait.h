#pragma once

#include <atomic>
#include <cstdint>

#include "platform/clock.h"
#include "printer/printer_link.h"

namespace marbex::printer {

// Waits until the printer has put a bitmap on paper, at most 60 seconds from the first question.
// 0 when it has; 1 when the paper ends or jams, the cover is opened, the time passes or stop becomes true; the result
// of a question that could not be written. Answers that are missing or make no sense are asked for again.
int32_t WaitForPrintEnd(const PrinterLink& link, platform::Clock& clock, const std::atomic<bool>& stop);

}  // namespace marbex::printer
