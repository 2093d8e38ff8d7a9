#pragma once

#include <vector>

#include "virtual_printer/web/message.h"
#include "virtual_printer/web/station.h"

namespace marbex::virtual_printer {

// What programs and the page can ask and change:
//
//     GET  /api/printers                       all printers
//     GET  /api/printers/1                     one: its state
//     POST /api/printers/1/condition           {"cover": "open", "paper": "low"}: commands of the operator
//     POST /api/printers/1/command             one of them as text: cover open
//     POST /api/printers/1/print               bytes, as if they had come over the link
//     POST /api/printers/1/expect              waits for something to happen (expect.h)
//     GET  /api/printers/1/events              server-sent events
//     GET  /api/printers/1/receipts[/3.png]    receipts (receipts.h)
//
// Answers requests on one thread; the printers may be in use on others.
class Api {
public:
    explicit Api(std::vector<Station> stations) : stations_(std::move(stations)) {}

    const std::vector<Station>& Stations() const { return stations_; }
    // request: one whose path begins with "api".
    Answer Handle(const Request& request) const;

private:
    std::vector<Station> stations_;
};

}  // namespace marbex::virtual_printer
