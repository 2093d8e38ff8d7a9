#include "virtual_printer/commands.h"

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <system_error>

#include "virtual_printer/json_report.h"

namespace marbex::virtual_printer {
namespace {

using Json = nlohmann::ordered_json;

std::optional<bool> OneOf(const std::string& argument, const char* yes, const char* no)
{
    if (argument == yes) {
        return true;
    }
    return argument == no ? std::optional(false) : std::nullopt;
}

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

Operator::Operator(std::string_view model, const LinkOptions& link, PrinterOptions options, OutputFiles files)
    : files_(std::move(files)), silence_(output_)
{
    if (!files_.commands.empty()) {
        commands_.open(files_.commands, std::ios::binary);
        if (!commands_) {
            throw std::system_error(errno, std::generic_category(), files_.commands);
        }
    }
    VirtualPrinter::Copy copy;
    if (commands_.is_open()) {
        copy = [this](std::span<const uint8_t> command) {
            commands_.write(reinterpret_cast<const char*>(command.data()),
                            static_cast<std::streamsize>(command.size()));
            commands_.flush();
        };
    }
    // Nothing may be asked of it here: it cannot tell of a connection, nor go on, before the first line is out.
    server_ = std::make_unique<PrinterServer>(
        model, link, options,
        [this](const VirtualPrinter& printer, const Happening& happening) { Happened(printer, happening); },
        std::move(copy));
}

void Operator::Print(const std::string& json)
{
    const std::lock_guard lock(output_);
    std::fprintf(stdout, "%s\n", json.c_str());
    std::fflush(stdout);
}

void Operator::Announce(std::string_view model)
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
    silence_.unlock();
    Print(json.dump());
}

void Operator::Happened(const VirtualPrinter& printer, const Happening& happening)
{
    Print(ToJson(happening));
    const Paper& paper = printer.GetPaper();
    const bool cut = std::holds_alternative<Cut>(happening);
    if (cut && files_.cutFiles && paper.Pages().size() >= 2) {
        const std::size_t page = paper.Pages().size() - 2;
        const std::string file = CutFileName(files_.picture, paper.FirstPage() + page);
        if (!paper.SavePage(page, file)) {
            std::fprintf(stderr, "%s cannot be written\n", file.c_str());
        }
    }
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
    server_->TakeWhatHasArrived();
    return files_.picture.empty() || SaveTo(files_.picture).empty();
}

void Operator::Status()
{
    PrinterState state;
    server_->With([&state](VirtualPrinter& printer) { state = printer.State(); });
    const Json json{{"event", "status"},
                    {"cover", state.coverOpen ? "open" : "closed"},
                    {"paper", Name(state.paper)},
                    {"jam", state.jammed},
                    {"mute", state.mute},
                    {"stopped", state.stopped},
                    {"waiting_bytes", state.waitingBytes}};
    Print(json.dump());
}

bool Operator::Command(const std::string& line)
{
    std::istringstream words(line);
    std::string name;
    words >> name;
    std::string argument;
    std::getline(words >> std::ws, argument);
    while (!argument.empty() && (argument.back() == ' ' || argument.back() == '\r')) {
        argument.pop_back();
    }
    if (name.empty()) {
        return true;
    }
    if (name == "status") {
        Status();
        return true;
    }
    Json json{{"event", "command"}, {"command", argument.empty() ? name : name + " " + argument}};
    const std::string problem = Do(name, argument);
    if (!problem.empty()) {
        json["problem"] = problem;
    }
    Print(json.dump(-1, ' ', false, Json::error_handler_t::replace));
    return name != "quit";
}

std::string Operator::Do(const std::string& name, const std::string& argument)
{
    const auto onOff = [&argument](const char* yes, const char* no, const auto& action) -> std::string {
        const auto value = OneOf(argument, yes, no);
        if (!value) {
            return std::string(yes) + " or " + no + " expected";
        }
        action(*value);
        return {};
    };
    try {
        if (name == "cover") {
            return onOff("open", "close", [this](bool open) { server_->SetCover(open); });
        }
        if (name == "mute") {
            return onOff("on", "off", [this](bool on) { server_->SetMute(on); });
        }
        if (name == "refuse") {
            return onOff("on", "off", [this](bool on) { server_->Refuse(on); });
        }
        if (name == "jam") {
            return onOff("on", "off", [this](bool on) { server_->SetJam(on); });
        }
        if (name == "printing") {
            return onOff("hold", "release", [this](bool hold) { server_->SetPrintingHeld(hold); });
        }
        if (name == "drawer") {
            return onOff("high", "low", [this](bool high) { server_->SetDrawerSignal(high); });
        }
        if (name == "paper") {
            if (argument != "ok" && argument != "low" && argument != "out") {
                return "ok, low or out expected";
            }
            server_->SetPaper(argument == "ok"    ? PaperState::kOk
                              : argument == "low" ? PaperState::kLow
                                                  : PaperState::kOut);
            return {};
        }
        if (name == "drop") {
            server_->Drop();
            return {};
        }
        if (name == "slow") {
            uint32_t pace = 0;
            const auto parsed = std::from_chars(argument.data(), argument.data() + argument.size(), pace);
            if (parsed.ec != std::errc() || parsed.ptr != argument.data() + argument.size()) {
                return "bytes per second expected, 0 for no limit";
            }
            server_->Slow(pace);
            return {};
        }
        if (name == "save") {
            const std::string file = argument.empty() ? files_.picture : argument;
            server_->TakeWhatHasArrived();
            return file.empty() ? "a file expected" : SaveTo(file);
        }
        if (name == "quit") {
            return {};
        }
    } catch (const std::system_error& error) {
        return error.what();
    }
    return "no such command";
}

}  // namespace marbex::virtual_printer
