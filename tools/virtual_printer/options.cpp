#include "virtual_printer/options.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <fstream>
#include <optional>

namespace marbex::virtual_printer {
namespace {

constexpr uint32_t kSmallestBuffer = 16;
constexpr uint32_t kLargestBuffer = 1U << 20U;
constexpr std::size_t kMostPrinters = 32;

using Words = std::vector<std::string>;

std::string Known(const std::string& name)
{
    if (FindModel(name) != nullptr) {
        return {};
    }
    std::string names;
    for (const Model& model : Models()) {
        names += (names.empty() ? "" : ", ") + std::string(model.name);
    }
    return "no model " + name + "; there are " + names;
}

void DefinePrinter(CLI::App& app, PrinterArguments& a)
{
    app.add_option("--model", a.model, "model name, TALIS if not given; each further one begins another printer")
        ->check(Known, "MODEL");
    app.add_option("--name", a.name, "what the page calls it, the model's name if not given");
    app.add_option("--tcp", a.tcp, "HOST:PORT to listen on; port 0 picks one");
    app.add_flag("--serial", a.serial, "a pseudo-terminal; its path is in the first line of output");
    app.add_option("--usb", a.usb, "unix stream socket that stands for the printer's USB device node");
    app.add_flag("--display-serial", a.link.displaySerial, "a second pseudo-terminal, for the line of the display");
    app.add_option("--baud", a.baud, "pace of the link: N/10 bytes a second");
    app.add_option("--receive-buffer", a.link.receiveBuffer,
                   "TCP: bytes the system keeps while the printer does not read");
    app.add_option("--terminal", a.link.terminalLink,
                   "serial: symbolic link to a terminal that can be lost and made anew");
    app.add_flag("--xonxoff", a.link.xonXoff, "serial: a printer whose buffer fills up holds the till by XOFF");
    app.add_option("--buffer", a.printer.buffer, "bytes of the receive buffer, the model's if not given")
        ->check(CLI::Range(kSmallestBuffer, kLargestBuffer));
    app.add_option("--speed", a.printer.speed, "of the paper in millimetres a second, no limit if not given");
    app.add_option("--paper", a.files.picture, "PNG picture of the paper");
    app.add_flag("--cut-files", a.files.cutFiles, "also a picture of each cut piece: FILE-1.png and so on");
    app.add_option("--commands", a.files.commands, "file for the bytes of all commands, status requests left out");
    app.add_option("--received", a.files.received, "file for every byte that is received");
    app.add_option("--port-file", a.portFile, "file to write the TCP port or the terminal's path to");
    app.add_option("--display-port-file", a.displayPortFile, "file to write the path of the display's terminal to");
    app.add_option("--script", a.script, "file of commands, each done when its time has come");
    app.add_flag("--wide", a.printer.wide, "DORIN with its wide mechanism");
    app.add_option("--identity", a.printer.identity, "another identifier of the model, such as 0x200");
}

void DefineAll(CLI::App& app, Arguments& a)
{
    app.add_option("--printers", a.shop, "file with more printers: the options of one a line");
    app.add_option("--web", a.web, "[HOST:]PORT of the page, on this machine only if no host is given");
    app.add_option("--control", a.control, "unix socket that takes the commands of standard input");
    app.footer(
        "Commands on standard input:\n"
        "  cover open|close     paper ok|low|out     jam on|off\n"
        "  mute on|off          drop                 refuse on|off|MS\n"
        "  power on|off|cycle [MS]                   half [ANSWERS]\n"
        "  garbage on|off                            status half [ANSWERS]\n"
        "  slow BYTES_PER_SECOND (0: no limit)       say HEX...\n"
        "  speed MM_PER_SECOND (0: no limit)         tear\n"
        "  drawer open|close|high|low                status\n"
        "  printing hold|release (BRISA-HD)          save [FILE]\n"
        "  at BYTES COMMAND                          at line|cut|byte N: COMMAND\n"
        "  after N lines|cuts|bytes: COMMAND         quit\n"
        "A script has one of them a line, and: wait N s|ms\n"
        "With several printers a number in front says which: 2 cover open");
}

// "HOST:PORT", "[HOST]:PORT"; and "PORT" alone, which leaves the host as it is.
bool SplitAddress(const std::string& text, std::string& host, uint16_t& port)
{
    const std::size_t colon = text.rfind(':');
    unsigned number = 0;
    if (!CLI::detail::lexical_cast(text.substr(colon == std::string::npos ? 0 : colon + 1), number) || number > 65535) {
        return false;
    }
    port = static_cast<uint16_t>(number);
    if (colon != std::string::npos) {
        host = text.substr(0, colon);
    }
    if (host.size() > 2 && host.front() == '[' && host.back() == ']') {
        host = host.substr(1, host.size() - 2);
    }
    return !host.empty();
}

// What is wrong with a printer's options; nothing when they are complete.
std::string Complete(PrinterArguments& a)
{
    const int links = (a.tcp.empty() ? 0 : 1) + (a.serial ? 1 : 0) + (a.usb.empty() ? 0 : 1);
    if (links != 1) {
        return "one of --tcp, --serial and --usb expected for each printer";
    }
    if (a.files.cutFiles && a.files.picture.empty()) {
        return "--cut-files needs --paper";
    }
    if (!a.serial && (a.link.xonXoff || !a.link.terminalLink.empty())) {
        return "--terminal and --xonxoff need --serial";
    }
    a.link.bytesPerSecond = a.baud / 10;
    a.name = a.name.empty() ? std::string(FindModel(a.model)->name) : a.name;
    if (a.serial) {
        a.link.kind = LinkOptions::Kind::kSerial;
    } else if (!a.usb.empty()) {
        a.link.kind = LinkOptions::Kind::kUsb;
        a.link.socketPath = a.usb;
    } else if (a.tcp.find(':') == std::string::npos || !SplitAddress(a.tcp, a.link.host, a.link.port)) {
        return "--tcp: HOST:PORT expected";
    }
    if (a.link.host == "localhost") {
        a.link.host = "127.0.0.1";
    }
    return {};
}

// One printer a group; what stands before the first --model is the first one's.
std::vector<Words> Groups(const Words& words)
{
    std::vector<Words> groups(1);
    bool hasModel = false;
    for (const std::string& word : words) {
        const bool isModel = word == "--model" || word.starts_with("--model=");
        if (isModel && hasModel) {
            groups.emplace_back();
        }
        hasModel = hasModel || isModel;
        groups.back().push_back(word);
    }
    return groups;
}

int Parse(Words words, Arguments& all, PrinterArguments& one)
{
    CLI::App app{"Receipt printers made of software", "marbex-virtual-printer"};
    app.set_version_flag("--version", "marbex-virtual-printer " MARBEX_VERSION);
    DefinePrinter(app, one);
    DefineAll(app, all);
    std::reverse(words.begin(), words.end());
    try {
        app.parse(words);
    } catch (const CLI::ParseError& error) {
        const int code = app.exit(error);
        return code == 0 ? 0 : kUsageError;
    }
    return -1;
}

int Complain(const std::string& problem)
{
    std::fprintf(stderr, "%s\n", problem.c_str());
    return kUsageError;
}

// The printers of the file. -1, or the exit code.
int ReadShop(Arguments& all)
{
    std::ifstream file(all.shop);
    std::string line;
    for (int number = 1; std::getline(file, line); ++number) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        const std::size_t start = line.find_first_not_of(" \t");
        if (start == std::string::npos || line[start] == '#') {
            continue;
        }
        const int exit = Parse(CLI::detail::split_up(line), all, all.printers.emplace_back());
        if (exit >= 0) {
            std::fprintf(stderr, "%s, line %d\n", all.shop.c_str(), number);
            return exit;
        }
    }
    return file.eof() ? -1 : Complain(all.shop + " cannot be read");
}

}  // namespace

Parsed ParseArguments(int argc, char** argv)
{
    Parsed parsed;
    Arguments& all = parsed.arguments;
    const auto end = [&parsed](int code) {
        parsed.exit = code;
        return parsed;
    };
    for (const Words& group : Groups(Words(argv + 1, argv + argc))) {
        PrinterArguments one;
        const int exit = Parse(group, all, one);
        if (exit >= 0) {
            return end(exit);
        }
        const bool none = one.tcp.empty() && !one.serial && one.usb.empty();
        if (!(none && !all.shop.empty())) {
            all.printers.push_back(one);
        }
    }
    if (!all.shop.empty()) {
        const int exit = ReadShop(all);
        if (exit >= 0) {
            return end(exit);
        }
    }
    for (PrinterArguments& one : all.printers) {
        const std::string problem = Complete(one);
        if (!problem.empty()) {
            return end(Complain(problem));
        }
    }
    if (all.printers.empty() || all.printers.size() > kMostPrinters) {
        return end(Complain("one to " + std::to_string(kMostPrinters) + " printers expected"));
    }
    if (!all.web.empty() && !SplitAddress(all.web, all.webHost, all.webPort)) {
        return end(Complain("--web: [HOST:]PORT expected"));
    }
    return parsed;
}

}  // namespace marbex::virtual_printer
