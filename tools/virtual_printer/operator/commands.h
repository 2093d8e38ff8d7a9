#pragma once

#include <atomic>
#include <chrono>
#include <fstream>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "virtual_printer/record/recorder.h"
#include "virtual_printer/server.h"

namespace marbex::virtual_printer {

// Where the picture of the paper and copies of what comes over the link go.
struct OutputFiles {
    std::string picture;    // empty: none
    bool cutFiles = false;  // also one a cut
    std::string commands;   // empty: none
    std::string received;   // every byte; empty: none
};

// The printer as the operator in front of it has it: takes the commands of standard input and writes what happens to
// standard output, one line of JSON each.
class Operator {
public:
    // Throws what PrinterServer throws, and std::system_error when a file for bytes cannot be made. changed is told
    // whenever anything happened, from any thread; it may not call this. number: which of several printers it is; its
    // lines of output say so.
    Operator(std::string_view model, const LinkOptions& link, PrinterOptions options, OutputFiles files,
             std::size_t number = 0, std::function<void()> changed = {});

    PrinterServer& Server() { return *server_; }
    Recorder& Memory() { return *recorder_; }
    // Writes the first line, which says where the printer is, and its page; nothing is told before it.
    void Announce(std::string_view model, const std::string& page);
    // Does one command. False: it was the last one.
    bool Command(const std::string& line);
    // The same for who wants to know what is wrong with it; nothing when it was done.
    std::string Perform(const std::string& line);
    // At the end: takes in what has arrived, and saves the picture, if one is wanted; false when it cannot be written.
    bool SaveLast();

private:
    void Happened(const VirtualPrinter& printer, const Happening& happening);
    void Print(std::string json);
    void Status();
    struct Words {
        std::string name;
        std::string argument;
    };
    static Words Split(const std::string& line);
    void Report(const Words& words, const std::string& problem, std::optional<uint64_t> at);
    VirtualPrinter::Copy CopyTo(std::ofstream& stream, const std::string& file);

    // Each answers what is wrong with its argument, nothing when it is done.
    using Action = std::pair<std::string_view, std::string (Operator::*)(const std::string& argument)>;
    static const std::vector<Action> kActions;
    std::string Do(const Words& words);
    std::string Cover(const std::string& argument);
    std::string PaperIs(const std::string& argument);
    std::string Jam(const std::string& argument);
    std::string Mute(const std::string& argument);
    std::string Printing(const std::string& argument);
    std::string Drawer(const std::string& argument);
    std::string Power(const std::string& argument);
    std::string Drop(const std::string& argument);
    std::string Refuse(const std::string& argument);
    std::string Slow(const std::string& argument);
    std::string Speed(const std::string& argument);
    std::string Half(const std::string& argument);
    std::string SayToTill(const std::string& argument);
    std::string At(const std::string& argument);
    std::string Ticket(const std::string& argument);
    std::string Tear(const std::string& argument);
    std::string Save(const std::string& argument);
    std::string SaveTo(const std::string& file);
    void KeepPictureFresh(const Paper& paper);

    const Model* model_;
    OutputFiles files_;
    std::ofstream commands_;
    std::ofstream received_;
    std::atomic<unsigned> waiting_{0};  // actions that wait for their byte
    std::mutex output_;
    bool announced_ = false;             // the first line is out
    std::vector<std::string> heldBack_;  // what happened before
    std::chrono::steady_clock::time_point nextPicture_{};
    std::size_t number_;
    std::function<void()> changed_;
    std::unique_ptr<Recorder> recorder_;
    std::unique_ptr<PrinterServer> server_;
};

}  // namespace marbex::virtual_printer
