#pragma once

// What the command line says.

#include <cstdint>
#include <string>
#include <vector>

#include "virtual_printer/operator/commands.h"

namespace marbex::virtual_printer {

inline constexpr int kUsageError = 64;  // exit code; EX_USAGE of sysexits.h

// One printer: from one --model to the next.
struct PrinterArguments {
    std::string model = "TALIS";
    std::string name;  // on the page; empty: the model's
    std::string tcp;
    bool serial = false;
    std::string usb;
    uint32_t baud = 0;
    LinkOptions link;
    PrinterOptions printer;
    OutputFiles files;
    std::string portFile;
    std::string displayPortFile;
    std::string script;  // file; empty: none
};

struct Arguments {
    std::vector<PrinterArguments> printers;
    std::string shop;     // file with more printers
    std::string web;      // [HOST:]PORT of the page; empty: none
    std::string control;  // unix socket for commands; empty: none
    std::string webHost = "127.0.0.1";
    uint16_t webPort = 0;
};

// Nothing to do but to end when exit is not negative.
struct Parsed {
    Arguments arguments;
    int exit = -1;
};
// Complains on standard error, and prints the help.
Parsed ParseArguments(int argc, char** argv);

}  // namespace marbex::virtual_printer
