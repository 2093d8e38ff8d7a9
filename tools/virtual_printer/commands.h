#pragma once

#include <chrono>
#include <fstream>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "virtual_printer/server.h"

namespace marbex::virtual_printer {

// Where the picture of the paper and a copy of the commands go.
struct OutputFiles {
    std::string picture;    // empty: none
    bool cutFiles = false;  // also one a cut
    std::string commands;   // empty: none
};

// The printer as the operator in front of it has it: takes the commands of standard input and writes what happens to
// standard output, one line of JSON each.
class Operator {
public:
    // Throws what PrinterServer throws, and std::system_error when the file for the commands cannot be made.
    Operator(std::string_view model, const LinkOptions& link, PrinterOptions options, OutputFiles files);

    PrinterServer& Server() { return *server_; }
    // Writes the first line, which says where the printer is; nothing is told before it.
    void Announce(std::string_view model);
    // Does one command. False: it was the last one.
    bool Command(const std::string& line);
    // At the end: takes in what has arrived, and saves the picture, if one is wanted; false when it cannot be written.
    bool SaveLast();

private:
    void Happened(const VirtualPrinter& printer, const Happening& happening);
    void Print(const std::string& json);
    void Status();
    std::string Do(const std::string& name, const std::string& argument);
    std::string SaveTo(const std::string& file);
    void KeepPictureFresh(const Paper& paper);

    OutputFiles files_;
    std::ofstream commands_;
    std::mutex output_;
    std::chrono::steady_clock::time_point nextPicture_{};
    std::unique_ptr<PrinterServer> server_;
    // Holds output_ until the first line. After the server, whose end may wait for a line that is being held back.
    std::unique_lock<std::mutex> silence_;
};

}  // namespace marbex::virtual_printer
