// marbex-virtual-printer: a printer of the family at the end of a TCP port, a pseudo-terminal or a unix socket.

#include <CLI/CLI.hpp>

#include <cstdio>
#include <fstream>
#include <system_error>

#include "virtual_printer/commands.h"
#include "virtual_printer/posix/command_input.h"

namespace {

using namespace marbex::virtual_printer;

struct Arguments {
    std::string model = "TALIS";
    std::string tcp;
    bool serial = false;
    std::string usb;
    uint32_t baud = 0;
    LinkOptions link;
    PrinterOptions printer;
    OutputFiles files;
    std::string portFile;
    std::string displayPortFile;
};

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

void Define(CLI::App& app, Arguments& a)
{
    app.add_option("--model", a.model, "model name, TALIS if not given")->check(Known, "MODEL");
    auto* link = app.add_option_group("link", "one link");
    link->add_option("--tcp", a.tcp, "HOST:PORT to listen on; port 0 picks one");
    link->add_flag("--serial", a.serial, "a pseudo-terminal; its path is in the first line of output");
    link->add_option("--usb", a.usb, "unix stream socket that stands for the printer's USB device node");
    link->require_option(1);
    app.add_flag("--display-serial", a.link.displaySerial, "a second pseudo-terminal, for the line of the display");
    app.add_option("--baud", a.baud, "pace of the link: N/10 bytes a second");
    app.add_option("--receive-buffer", a.link.receiveBuffer,
                   "TCP: bytes the system keeps while the printer does not read");
    app.add_option("--paper", a.files.picture, "PNG picture of the paper");
    app.add_flag("--cut-files", a.files.cutFiles, "also a picture of each cut piece: FILE-1.png and so on");
    app.add_option("--commands", a.files.commands, "file for the bytes of all commands, status requests left out");
    app.add_option("--port-file", a.portFile, "file to write the TCP port or the terminal's path to");
    app.add_option("--display-port-file", a.displayPortFile, "file to write the path of the display's terminal to");
    app.add_flag("--wide", a.printer.wide, "DORIN with its wide mechanism");
    app.add_option("--identity", a.printer.identity, "another identifier of the model, such as 0x200");
    app.footer(
        "Commands on standard input:\n"
        "  cover open|close     paper ok|low|out     jam on|off\n"
        "  mute on|off          drop                 refuse on|off\n"
        "  slow BYTES_PER_SECOND (0: no limit)       drawer high|low\n"
        "  printing hold|release (BRISA-HD)          status\n"
        "  save [FILE]          quit");
}

bool Complete(Arguments& a)
{
    a.link.bytesPerSecond = a.baud / 10;
    if (a.serial) {
        a.link.kind = LinkOptions::Kind::kSerial;
        return true;
    }
    if (!a.usb.empty()) {
        a.link.kind = LinkOptions::Kind::kUsb;
        a.link.socketPath = a.usb;
        return true;
    }
    const std::size_t colon = a.tcp.rfind(':');
    unsigned port = 0;
    if (colon == std::string::npos || !CLI::detail::lexical_cast(a.tcp.substr(colon + 1), port) || port > 65535) {
        return false;
    }
    a.link.host = a.tcp.substr(0, colon);
    a.link.port = static_cast<uint16_t>(port);
    return true;
}

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
    return out.good() && std::rename(unfinished.c_str(), file.c_str()) == 0;
}

int Run(const Arguments& a)
{
    CommandInput input;
    Operator desk(a.model, a.link, a.printer, a.files);
    const PrinterServer& server = desk.Server();
    const std::string place = a.serial ? server.SerialPath() : a.usb.empty() ? std::to_string(server.Port()) : a.usb;
    if (!WriteFile(a.portFile, place) || !WriteFile(a.displayPortFile, server.DisplayPath())) {
        std::fprintf(stderr, "the port file cannot be written\n");
        return 1;
    }
    desk.Announce(a.model);
    while (const auto line = input.NextLine()) {
        if (!desk.Command(*line)) {
            break;
        }
    }
    if (!desk.SaveLast()) {
        std::fprintf(stderr, "%s cannot be written\n", a.files.picture.c_str());
        return 1;
    }
    return 0;
}

int Main(int argc, char** argv)
{
    CLI::App app{"A receipt printer made of software"};
    Arguments arguments;
    Define(app, arguments);
    CLI11_PARSE(app, argc, argv);
    if (!Complete(arguments)) {
        std::fprintf(stderr, "--tcp: HOST:PORT expected\n");
        return 2;
    }
    if (arguments.files.cutFiles && arguments.files.picture.empty()) {
        std::fprintf(stderr, "--cut-files needs --paper\n");
        return 2;
    }
    return Run(arguments);
}

}  // namespace

int main(int argc, char** argv)
{
    try {
        return Main(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
