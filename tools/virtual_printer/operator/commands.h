#pragma once

#include <atomic>
#include <chrono>
#include <fstream>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "virtual_printer/operator/occasion.h"
#include "virtual_printer/operator/script.h"
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
    // Does one command.
    struct Done {
        std::string json;   // the line of output that tells so
        bool last = false;  // no more is wanted
    };
    Done Command(const std::string& line);
    // The same for who wants to know what is wrong with it; nothing when it was done.
    std::string Perform(const std::string& line);
    // Goes through a script from now on, step by step, each when its time has come. Throws BadScript.
    void Follow(const std::string& script);
    // At the end: takes in what has arrived, and saves the picture, if one is wanted; false when it cannot be written.
    bool SaveLast();

    // A command that has been understood: how it is done, which answers what went wrong; or what is wrong with it.
    struct Understood {
        std::string problem;
        std::function<std::string()> deed;
    };

private:
    void Happened(const VirtualPrinter& printer, const Happening& happening);
    std::string Print(std::string json);  // the line as it was printed
    std::string Status();
    struct Words {
        std::string name;
        std::string argument;
    };
    static Words Split(const std::string& line);
    // at: the bytes received, of a command that has waited for its time; scriptLine: of one in a script.
    std::string Report(const std::string& command, const std::string& problem, std::optional<uint64_t> at,
                       std::optional<int> scriptLine = {});
    VirtualPrinter::Copy CopyTo(std::ofstream& stream, const std::string& file);

    using Action = std::pair<std::string_view, Understood (Operator::*)(const std::string& argument)>;
    static const std::vector<Action> kActions;
    Understood Understand(const std::string& line);
    static std::string Do(const Understood& understood);
    Understood Cover(const std::string& argument);
    Understood PaperIs(const std::string& argument);
    Understood Jam(const std::string& argument);
    Understood Mute(const std::string& argument);
    Understood Garbage(const std::string& argument);
    Understood Printing(const std::string& argument);
    Understood Drawer(const std::string& argument);
    Understood Power(const std::string& argument);
    Understood Drop(const std::string& argument);
    Understood Refuse(const std::string& argument);
    Understood Slow(const std::string& argument);
    Understood Speed(const std::string& argument);
    Understood Half(const std::string& argument);
    Understood HalfStatus(const std::string& argument);
    Understood SayToTill(const std::string& argument);
    Understood Later(const std::string& line);
    Understood Ticket(const std::string& argument);
    Understood Tear(const std::string& argument);
    Understood Save(const std::string& argument);
    struct Attempted {
        std::string problem;
        std::string json;
    };
    Attempted Attempt(const std::string& line);
    std::string Await(const Occasion& occasion, std::function<void()> action);
    void NextStep();
    uint64_t Received();
    std::string SaveTo(const std::string& file);
    void KeepPictureFresh(const Paper& paper);

    const Model* model_;
    OutputFiles files_;
    std::ofstream commands_;
    std::ofstream received_;
    std::atomic<unsigned> waiting_{0};  // actions that wait for their time
    std::vector<ScriptStep> script_;
    std::size_t step_ = 0;  // the next one
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
