#include "virtual_printer/operator/commands.h"

#include <cerrno>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <sstream>
#include <system_error>

#include "virtual_printer/operator/json_report.h"

namespace marbex::virtual_printer {
namespace {

using Json = nlohmann::ordered_json;

// receipt.png, 3 -> receipt-3.png
std::string CutFileName(const std::string& picture, std::size_t number)
{
    const std::size_t dot = picture.find_last_of("./");
    const std::size_t end = dot == std::string::npos || picture[dot] == '/' ? picture.size() : dot;
    return picture.substr(0, end) + "-" + std::to_string(number) + picture.substr(end);
}

const char* Name(PaperState paper)
{
    switch (paper) {
        case PaperState::kLow:
            return "low";
        case PaperState::kOut:
            return "out";
        case PaperState::kOk:
            break;
    }
    return "ok";
}

}  // namespace

Operator::Words Operator::Split(const std::string& line)
{
    Words words;
    std::istringstream stream(line);
    stream >> words.name;
    std::getline(stream >> std::ws, words.argument);
    while (!words.argument.empty() && (words.argument.back() == ' ' || words.argument.back() == '\r')) {
        words.argument.pop_back();
    }
    return words;
}

Operator::Operator(std::string_view model, const LinkOptions& link, PrinterOptions options, OutputFiles files,
                   std::size_t number, std::function<void()> changed)
    : model_(FindModel(model)), files_(std::move(files)), number_(number), changed_(std::move(changed))
{
    if (const Model* known = FindModel(model)) {
        recorder_ = std::make_unique<Recorder>(*known, changed_);
    }
    PrinterServer::Copies copies;
    copies.commands = CopyTo(commands_, files_.commands);
    copies.received = [this, copy = CopyTo(received_, files_.received)](std::span<const uint8_t> bytes) {
        if (copy) {
            copy(bytes);
        }
        if (changed_) {
            changed_();
        }
    };
    copies.done = [this](const VirtualPrinter& printer, const virtual_printer::Command& command,
                         std::string_view characters) { recorder_->Done(printer, command, characters); };
    // Nothing may be asked of it here: what it tells is held back until the first line is out.
    server_ = std::make_unique<PrinterServer>(
        model, link, options,
        [this](const VirtualPrinter& printer, const Happening& happening) { Happened(printer, happening); },
        std::move(copies));
}

VirtualPrinter::Copy Operator::CopyTo(std::ofstream& stream, const std::string& file)
{
    if (file.empty()) {
        return {};
    }
    stream.open(file, std::ios::binary);
    if (!stream) {
        throw std::system_error(errno, std::generic_category(), file);
    }
    return [&stream](std::span<const uint8_t> bytes) {
        stream.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        stream.flush();
    };
}

std::string Operator::Print(std::string json)
{
    if (number_ != 0) {
        json.insert(1, "\"printer\":" + std::to_string(number_) + ",");
    }
    const std::lock_guard lock(output_);
    if (!announced_) {
        heldBack_.push_back(json);
        return json;
    }
    std::fprintf(stdout, "%s\n", json.c_str());
    std::fflush(stdout);
    return json;
}

void Operator::Announce(std::string_view model, const std::string& page)
{
    Json json{{"event", "listening"}, {"model", model}};
    if (server_->Port() != 0) {
        json["port"] = server_->Port();
    }
    if (!server_->SerialPath().empty()) {
        json["serial"] = server_->SerialPath();
    }
    if (!server_->DisplayPath().empty()) {
        json["display_serial"] = server_->DisplayPath();
    }
    if (!page.empty()) {
        json["page"] = page;
    }
    std::vector<std::string> lines{json.dump()};
    if (number_ != 0) {
        lines.front().insert(1, "\"printer\":" + std::to_string(number_) + ",");
    }
    const std::lock_guard lock(output_);
    lines.insert(lines.end(), heldBack_.begin(), heldBack_.end());
    heldBack_.clear();
    for (const std::string& line : lines) {
        std::fprintf(stdout, "%s\n", line.c_str());
    }
    std::fflush(stdout);
    announced_ = true;
}

void Operator::Happened(const VirtualPrinter& printer, const Happening& happening)
{
    std::string json = recorder_->Happened(printer, happening);
    const Paper& paper = printer.GetPaper();
    const bool cut = std::holds_alternative<Cut>(happening) || std::holds_alternative<Torn>(happening);
    if (cut && files_.cutFiles && paper.Pages().size() >= 2) {
        const std::size_t page = paper.Pages().size() - 2;
        const std::string file = CutFileName(files_.picture, paper.FirstPage() + page);
        if (paper.SavePage(page, file)) {
            json.insert(json.size() - 1,
                        ",\"file\":" + Json(file).dump(-1, ' ', false, Json::error_handler_t::replace));
        } else {
            std::fprintf(stderr, "%s cannot be written\n", file.c_str());
        }
    }
    Print(std::move(json));
    if (cut || std::holds_alternative<Disconnected>(happening)) {
        KeepPictureFresh(paper);
    }
}

// A long paper takes long to write: no more than a tenth of the time goes into its picture.
void Operator::KeepPictureFresh(const Paper& paper)
{
    const auto start = std::chrono::steady_clock::now();
    if (files_.picture.empty() || start < nextPicture_) {
        return;
    }
    if (!paper.Save(files_.picture)) {
        std::fprintf(stderr, "%s cannot be written\n", files_.picture.c_str());
    }
    const auto end = std::chrono::steady_clock::now();
    nextPicture_ = end + 9 * (end - start);
}

std::string Operator::SaveTo(const std::string& file)
{
    bool saved = false;
    server_->With([&saved, &file](VirtualPrinter& printer) { saved = printer.GetPaper().Save(file); });
    return saved ? "" : file + " cannot be written";
}

bool Operator::SaveLast()
{
    server_->SetSpeed(0);  // what waits for the paper to move is not waited for
    server_->TakeWhatHasArrived();
    return files_.picture.empty() || SaveTo(files_.picture).empty();
}

std::string Operator::Status()
{
    PrinterState state;
    server_->With([&state](VirtualPrinter& printer) { state = printer.State(); });
    const Json json{{"event", "status"},
                    {"cover", state.coverOpen ? "open" : "closed"},
                    {"paper", Name(state.paper)},
                    {"jam", state.jammed},
                    {"mute", state.mute},
                    {"garbage", state.garbage},
                    {"stopped", state.stopped},
                    {"power", state.on},
                    {"waiting_bytes", state.waitingBytes},
                    {"received", state.received}};
    return Print(json.dump());
}

Operator::Done Operator::Command(const std::string& line)
{
    const Words words = Split(line);
    if (words.name.empty()) {
        return {};
    }
    if (words.name == "status" && words.argument.empty()) {
        return {Status()};
    }
    if (words.name == "quit") {
        return {Report(words.name, {}, {}), true};
    }
    return {Attempt(line).json};
}

std::string Operator::Perform(const std::string& line)
{
    return Attempt(line).problem;
}

Operator::Attempted Operator::Attempt(const std::string& line)
{
    const Words words = Split(line);
    Attempted attempted{Do(Understand(line)), {}};
    attempted.json =
        Report(words.argument.empty() ? words.name : words.name + " " + words.argument, attempted.problem, {});
    if (changed_) {
        changed_();
    }
    return attempted;
}

void Operator::Follow(const std::string& script)
{
    script_ = ReadScript(script, [this](const std::string& command) { return Understand(command).problem; });
    NextStep();
}

// On the thread that did the last one.
void Operator::NextStep()
{
    while (step_ < script_.size()) {
        const ScriptStep& step = script_[step_++];
        if (step.command.empty()) {
            return server_->After(step.wait, [this] { NextStep(); });
        }
        const auto occasion = ParseOccasion(step.command);
        const std::string command = occasion ? occasion->command : step.command;
        const auto act = [this, command, line = step.line] {
            Report(command, Do(Understand(command)), Received(), line);
        };
        if (!occasion) {
            act();
            continue;
        }
        const std::string problem = Await(*occasion, [this, act] {
            act();
            NextStep();
        });
        if (problem.empty()) {
            return;
        }
        Report(step.command, problem, Received(), step.line);
    }
}

uint64_t Operator::Received()
{
    uint64_t received = 0;
    server_->With([&received](VirtualPrinter& printer) { received = printer.Received(); });
    return received;
}

std::string Operator::Report(const std::string& command, const std::string& problem, std::optional<uint64_t> at,
                             std::optional<int> scriptLine)
{
    Json json{{"event", "command"}, {"command", command}};
    if (scriptLine) {
        json["script_line"] = *scriptLine;
    }
    if (at) {
        json["at"] = *at;
    }
    if (!problem.empty()) {
        json["problem"] = problem;
    }
    return Print(json.dump(-1, ' ', false, Json::error_handler_t::replace));
}

}  // namespace marbex::virtual_printer
