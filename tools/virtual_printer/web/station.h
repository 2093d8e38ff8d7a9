#pragma once

#include <cstddef>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>

#include "virtual_printer/record/recorder.h"
#include "virtual_printer/server.h"

namespace marbex::virtual_printer {

// One of the printers on the page.
struct Station {
    std::size_t number = 1;
    std::string name;   // "TALIS", or what its owner called it
    std::string place;  // where a till finds it: "127.0.0.1:9100"
    PrinterServer& server;
    Recorder& recorder;
    // Does a command of the operator's; what is wrong with it, or nothing.
    std::function<std::string(const std::string& line)> perform;
};

// What can be said of the printer now: what it is, the state of its parts, what can be seen around the paper.
nlohmann::ordered_json StateOf(const Station& station);

}  // namespace marbex::virtual_printer
