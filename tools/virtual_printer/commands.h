#pragma once

#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "virtual_printer/server.h"

namespace marbex::virtual_printer {

// Where the picture of the paper goes.
struct PaperFiles {
    std::string picture;    // empty: none
    bool cutFiles = false;  // also one a cut
};

// The printer as the operator in front of it has it: takes the commands of standard input and writes what happens to
// standard output, one line of JSON each.
class Operator {
public:
    Operator(std::string_view model, const LinkOptions& link, PrinterOptions options, PaperFiles files);

    PrinterServer& Server() { return *server_; }
    // Writes the first line, which says where the printer is; nothing is told before it.
    void Announce(std::string_view model);
    // Does one command. False: it was the last one.
    bool Command(const std::string& line);
    bool SaveLast();  // the picture, if one is wanted; false when it cannot be written

private:
    void Happened(const VirtualPrinter& printer, const Happening& happening);
    void Print(const std::string& json);
    void Status();
    std::string Do(const std::string& name, const std::string& argument);
    std::string SaveTo(const std::string& file);
    void KeepPictureFresh(const Paper& paper);

    PaperFiles files_;
    std::mutex output_;
    std::chrono::steady_clock::time_point nextPicture_{};
    std::unique_ptr<PrinterServer> server_;
    // Holds output_ until the first line. After the server, whose end may wait for a line that is being held back.
    std::unique_lock<std::mutex> silence_;
};

}  // namespace marbex::virtual_printer
