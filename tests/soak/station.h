#pragma once

#include <memory>
#include <string>

#include "virtual_printer/server.h"

namespace marbex::soak {

enum class Cable : uint8_t {
    kTcp,
    kAdapter,  // a serial line that can be lost, as behind USB
    kUsb,
    kSerial,  // a plain serial line with Xon/Xoff; it is only ever silent
};
inline constexpr int kCables = 4;
const char* Name(Cable cable);

// A till's place: a folder of its own with the registry file of a till, and a printer made of software at the end of
// one of the cables.
class Station {
public:
    // number tells stations apart. folder is made; its name must be short, for it holds sockets.
    Station(int number, Cable cable, bool confirms, std::string folder,
            virtual_printer::VirtualPrinter::Observer observer = {},
            virtual_printer::VirtualPrinter::Copy received = {});

    static std::string ModelOf(int number, Cable cable);
    virtual_printer::PrinterServer& Printer() { return *printer_; }
    const std::string& Model() const { return model_; }
    const std::string& Folder() const { return folder_; }
    Cable TheCable() const { return cable_; }
    bool Confirms() const { return confirms_; }
    // What a port forgets when it is closed, and a pseudo-terminal that the printer keeps open does not.
    void ForgetInput() const;
    bool CanLoseItsLink() const { return cable_ != Cable::kSerial; }
    std::string Title() const;  // "2 usb BRISA, confirmed"

private:
    void WriteRegistry() const;

    const int number_;
    const Cable cable_;
    const bool confirms_;
    const std::string folder_;
    const std::string model_;
    std::unique_ptr<virtual_printer::PrinterServer> printer_;
};

}  // namespace marbex::soak
