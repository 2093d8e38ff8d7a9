#pragma once

#include <string>

#include "marbex_opos/printing/printer_session.h"

namespace marbex::tools {

// Prints what a printer can do on one page: how wide it is, alignments, sizes, the character tables of its profile,
// bar codes, a picture; and cuts it. Gives the name of what could not be printed, the printer's result says why; empty
// when all could.
std::string PrintTestPage(PrinterSession& printer, const std::string& device);

}  // namespace marbex::tools
