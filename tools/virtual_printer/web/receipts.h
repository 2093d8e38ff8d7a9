#pragma once

#include <string>

#include "virtual_printer/web/message.h"
#include "virtual_printer/web/station.h"

namespace marbex::virtual_printer {

// The list of a printer's receipts: the pieces of paper that are still kept, and the one that has not been cut.
Response ReceiptList(const Station& station);

// One of them. name: "3.png", "last.txt", "current.json", "3.bin"; "3.dots" is rows of its dots, from the query's row
// "from" on, at most "rows".
Response Receipt(const Station& station, const std::string& name, const Request& request);

}  // namespace marbex::virtual_printer
