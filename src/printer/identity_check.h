#pragma once

#include "platform/clock.h"
#include "printer/encoder_traits.h"
#include "printer/printer_link.h"

namespace marbex::printer {

// Asks the printer for its model (GS I) and compares; false also when it does not answer in time or a transfer fails.
bool IsExpectedPrinter(const PrinterLink& link, const IdentityCheck& identity, platform::Clock& clock);

// Asks the printer for its mechanism; false when it does not report the wide one, or nothing that can be understood
// within two seconds.
bool HasWideMechanism(const PrinterLink& link, platform::Clock& clock);

}  // namespace marbex::printer
