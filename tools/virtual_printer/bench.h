#pragma once

#include <memory>
#include <string>
#include <vector>

#include "virtual_printer/operator/commands.h"
#include "virtual_printer/options.h"
#include "virtual_printer/web/web_server.h"

namespace marbex::virtual_printer {

// All that a run of the program has: its printers, each with its operator, and the page.
class Bench {
public:
    // Throws what Operator, its script and WebServer throw.
    explicit Bench(const Arguments& arguments);
    ~Bench();
    Bench(const Bench&) = delete;
    Bench& operator=(const Bench&) = delete;

    // Writes the port files and then the first line of each printer. False when a file cannot be written.
    bool Announce();
    // Does one command; a number in front says which printer's.
    Operator::Done Command(const std::string& line);
    // At the end; false when a picture cannot be written.
    bool SaveLast();

private:
    struct Desk {
        PrinterArguments arguments;
        std::string place;  // where a till finds it
        std::unique_ptr<Operator> person;
    };

    std::unique_ptr<WebServer> web_;
    std::vector<Desk> desks_;
};

}  // namespace marbex::virtual_printer
