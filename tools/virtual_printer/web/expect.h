#pragma once

#include "virtual_printer/web/message.h"
#include "virtual_printer/web/station.h"

namespace marbex::virtual_printer {

// The answer to a request that wants to know when something has happened at a printer: a text printed, or an event with
// certain values. The body is one JSON object:
//
//     {"text": "TOTAL"}                                 a line that contains it
//     {"event": "cut", "kind": "full", "within_ms": 2000}   an event as standard output tells it
//
// from: the first item of the journal that counts; without it, what happens from now on. At most ten minutes.
Answer Expect(const Station& station, const std::string& body);

}  // namespace marbex::virtual_printer
