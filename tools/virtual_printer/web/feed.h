#pragma once

#include "virtual_printer/web/message.h"
#include "virtual_printer/web/station.h"

namespace marbex::virtual_printer {

// Sends bytes to a printer as a till would. A stopped printer takes what its buffer holds; the rest waits, for at most
// ten seconds. The answer tells how many were taken, and what the printer answered.
Answer Feed(const Station& station, const std::string& bytes);

}  // namespace marbex::virtual_printer
