#include "station.h"

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>
#include <utility>

namespace marbex::soak {
namespace {

namespace vp = virtual_printer;

// With drawer and with presenter, recovering by CAN and by DLE ENQ 2, clearing input and clearing output; not those
// whose cuts or pictures take half a second.
constexpr std::array<const char*, 5> kModels{"TALIS", "VELA PC", "PELTO", "CORVO", "AMBRA"};

// Not one that the system gives to callers: a till that calls while the printer is away could get it, and reach itself.
constexpr uint16_t kFirstPort = 20000;
constexpr uint16_t kLastPort = 32000;

std::unique_ptr<vp::PrinterServer> OnAFreePort(const std::string& model, vp::LinkOptions link, uint16_t first,
                                               const vp::VirtualPrinter::Observer& observer,
                                               const vp::PrinterServer::Copies& copies)
{
    for (link.port = first; link.port < kLastPort; ++link.port) {
        try {
            return std::make_unique<vp::PrinterServer>(model, link, vp::PrinterOptions{}, observer, copies);
        } catch (const std::system_error&) {
            continue;
        }
    }
    throw std::system_error(EADDRINUSE, std::generic_category(), "printer ports");
}

}  // namespace

const char* Name(Cable cable)
{
    switch (cable) {
        case Cable::kTcp:
            return "tcp";
        case Cable::kAdapter:
            return "serial adapter";
        case Cable::kUsb:
            return "usb";
        case Cable::kSerial:
            break;
    }
    return "serial";
}

Station::Station(int number, Cable cable, bool confirms, std::string folder, vp::VirtualPrinter::Observer observer,
                 vp::VirtualPrinter::Copy received)
    : number_(number), cable_(cable), confirms_(confirms), folder_(std::move(folder)), model_(ModelOf(number, cable))
{
    std::filesystem::create_directories(folder_);
    vp::LinkOptions link;
    vp::PrinterServer::Copies copies;
    copies.received = std::move(received);
    switch (cable) {
        case Cable::kTcp:
            link.receiveBuffer = 2048;  // of a printer's network card
            break;
        case Cable::kAdapter:
            link.kind = vp::LinkOptions::Kind::kSerial;
            link.terminalLink = folder_ + "/tty";
            break;
        case Cable::kUsb:
            link.kind = vp::LinkOptions::Kind::kUsb;
            link.socketPath = folder_ + "/node";
            break;
        case Cable::kSerial:
            link.kind = vp::LinkOptions::Kind::kSerial;
            link.xonXoff = true;
            break;
    }
    if (cable == Cable::kTcp) {
        const auto first = static_cast<uint16_t>(kFirstPort + (::getpid() * 31 + number) % (kLastPort - kFirstPort));
        printer_ = OnAFreePort(model_, link, first, observer, copies);
    } else {
        printer_ = std::make_unique<vp::PrinterServer>(model_, link, vp::PrinterOptions{}, std::move(observer),
                                                       std::move(copies));
    }
    WriteRegistry();
}

std::string Station::ModelOf(int number, Cable cable)
{
    const std::string model = kModels[static_cast<std::size_t>(number / kCables) % kModels.size()];
    return cable == Cable::kTcp && model == "TALIS" ? "TALIS ETHERNET" : model;
}

std::string Station::Title() const
{
    return std::to_string(number_) + " " + Name(cable_) + " " + model_ + (confirms_ ? ", confirmed" : "");
}

void Station::ForgetInput() const
{
    if (cable_ != Cable::kSerial) {
        return;
    }
    const int terminal = ::open(printer_->SerialPath().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    ::tcflush(terminal, TCIFLUSH);
    ::close(terminal);
}

void Station::WriteRegistry() const
{
    const std::string key = "[HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\";
    std::ostringstream lines;
    lines << "Windows Registry Editor Version 5.00\n\n" << key << "Control\\Nls\\CodePage]\n\"ACP\"=\"65001\"\n\n";
    const std::string serial = printer_->SerialPath();
    if (!serial.empty()) {
        lines << "[HKEY_LOCAL_MACHINE\\HARDWARE\\DEVICEMAP\\SERIALCOMM]\n\"" << serial << "\"=\"COM1\"\n\n";
    }
    if (cable_ == Cable::kUsb) {
        const std::string device = "VID_F055&PID_0101";
        const std::string kind = "{28d78fad-5a12-11d1-ae5b-0000f803a8c2}";
        lines << key << "Control\\Print\\Printers\\Receipt Printer\\PnPData]\n"
              << "\"DeviceInstanceId\"=\"USBPRINT\\\\Marbex\\\\6&1a2b3c&0&USB001\"\n\n"
              << key << "Enum\\USB\\" << device << "\\5&77&0&1]\n\"ParentIdPrefix\"=\"6&1A2B3C&0\"\n\n"
              << key << "Control\\DeviceClasses\\" << kind << "\\##?#USB#" << device << "#5&77&0&1#" << kind << "]\n"
              << "\"DeviceNode\"=\"" << folder_ << "/node\"\n\n";
    }
    lines << "[HKEY_LOCAL_MACHINE\\SOFTWARE\\OLEforRetail\\ServiceOPOS\\POSPrinter\\Till]\n"
          << "@=\"Service.MarbexOposPrnDriver\"\n\"PrinterModel\"=\"" << model_ << "\"\n"
          << "\"LogPath\"=\"" << folder_ << "\"\n\"PrinterName\"=\"Receipt Printer\"\n"
          << "\"IPAddress\"=\"127.0.0.1\"\n"
          << std::hex;
    const auto number = [&lines](const char* name, unsigned value) {
        lines << '"' << name << "\"=dword:" << value << '\n';
    };
    number("PortType", cable_ == Cable::kTcp ? 1 : cable_ == Cable::kUsb ? 2 : 0);
    number("Port", printer_->Port());
    number("Com", 1);
    number("Speed", 115200);
    number("Handshake", cable_ == Cable::kSerial ? 2 : 1);
    number("TimeoutRX", 500);
    number("TimeoutTX", 500);
    number("LogEnabled", 1);
    number("ConfirmOutput", confirms_ ? 1 : 0);
    std::ofstream(folder_ + "/registry.reg") << lines.str();
}

}  // namespace marbex::soak
