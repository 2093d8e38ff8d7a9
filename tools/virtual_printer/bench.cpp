#include "virtual_printer/bench.h"

#include <charconv>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "virtual_printer/web/guard.h"

namespace marbex::virtual_printer {
namespace {

// Renamed into place, so that a script that waits for the file finds it whole.
bool WriteFile(const std::string& file, const std::string& text)
{
    if (file.empty()) {
        return true;
    }
    const std::string unfinished = file + ".part";
    std::ofstream out(unfinished);
    out << text << '\n';
    out.close();
    std::error_code failure;
    if (out.good()) {
        std::filesystem::rename(unfinished, file, failure);
    }
    return out.good() && !failure;
}

// Where it is, for the page; the port file has the port alone.
std::string PlaceOf(const PrinterArguments& a, const PrinterServer& server)
{
    return a.serial         ? server.SerialPath()
           : !a.usb.empty() ? a.usb
                            : InBrackets(a.link.host) + ":" + std::to_string(server.Port());
}

}  // namespace

Bench::Bench(const Arguments& arguments)
{
    if (!arguments.web.empty()) {
        web_ = std::make_unique<WebServer>(arguments.webHost, arguments.webPort);
    }
    std::function<void()> changed;
    if (web_) {
        changed = [this] { web_->Wake(); };
    }
    const bool several = arguments.printers.size() > 1;
    for (const PrinterArguments& a : arguments.printers) {
        const std::size_t number = several ? desks_.size() + 1 : 0;
        auto person = std::make_unique<Operator>(a.model, a.link, a.printer, a.files, number, changed);
        if (!a.script.empty()) {
            person->Follow(a.script);
        }
        std::string place = PlaceOf(a, person->Server());
        desks_.push_back({a, std::move(place), std::move(person)});
    }
}

// The page goes first, since it asks the others; but it can be told of things until they are gone.
Bench::~Bench()
{
    if (web_) {
        web_->Stop();
    }
    desks_.clear();
}

bool Bench::Announce()
{
    for (const Desk& desk : desks_) {
        const PrinterServer& server = desk.person->Server();
        const std::string place = server.Port() != 0 ? std::to_string(server.Port()) : desk.place;
        if (!WriteFile(desk.arguments.portFile, place) ||
            !WriteFile(desk.arguments.displayPortFile, server.DisplayPath())) {
            std::fprintf(stderr, "the port file cannot be written\n");
            return false;
        }
    }
    if (web_) {
        std::vector<Station> stations;
        for (const Desk& desk : desks_) {
            Operator& person = *desk.person;
            stations.push_back({stations.size() + 1, desk.arguments.name, desk.place, person.Server(), person.Memory(),
                                [&person](const std::string& line) { return person.Perform(line); }});
        }
        web_->Start(std::move(stations));
    }
    for (const Desk& desk : desks_) {
        desk.person->Announce(desk.arguments.model, web_ ? web_->Address() : "");
    }
    return true;
}

Operator::Done Bench::Command(const std::string& line)
{
    std::size_t number = 1;
    const std::size_t start = std::min(line.find_first_not_of(' '), line.size());
    const auto parsed = std::from_chars(line.data() + start, line.data() + line.size(), number);
    const bool numbered = parsed.ec == std::errc() && number >= 1 && number <= desks_.size();
    const std::string rest = numbered ? std::string(parsed.ptr, line.data() + line.size()) : line;
    return desks_[numbered ? number - 1 : 0].person->Command(rest);
}

bool Bench::SaveLast()
{
    bool saved = true;
    for (const Desk& desk : desks_) {
        if (!desk.person->SaveLast()) {
            std::fprintf(stderr, "%s cannot be written\n", desk.arguments.files.picture.c_str());
            saved = false;
        }
    }
    return saved;
}

}  // namespace marbex::virtual_printer
