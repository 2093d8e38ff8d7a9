#pragma once

// A virtual printer at the end of a link, served by a thread of its own, with the faults a link can have.

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "virtual_printer/printer.h"

namespace marbex::virtual_printer {

struct LinkOptions {
    enum class Kind : uint8_t { kTcp, kSerial, kUsb };
    Kind kind = Kind::kTcp;
    std::string host = "127.0.0.1";  // TCP
    uint16_t port = 0;               // TCP; 0 picks one
    std::string socketPath;          // USB: the unix stream socket that stands for the device node
    uint32_t bytesPerSecond = 0;     // the pace of the link; 0: as fast as it goes
    int receiveBuffer = 0;       // TCP: bytes that the system keeps for a printer that does not read; 0: its default
    bool displaySerial = false;  // also a pseudo-terminal for the display's own line
};

// All operations may be called from any thread, but not by an observer. Refuse(false) throws std::system_error when the
// place it listened on has been taken meanwhile.
class PrinterServer {
public:
    // Throws std::invalid_argument for an unknown model, std::system_error when the link cannot be set up.
    PrinterServer(std::string_view model, const LinkOptions& link, PrinterOptions options = {},
                  VirtualPrinter::Observer observer = {}, VirtualPrinter::Copy copy = {});
    ~PrinterServer();
    PrinterServer(const PrinterServer&) = delete;
    PrinterServer& operator=(const PrinterServer&) = delete;

    uint16_t Port() const;            // TCP
    std::string SerialPath() const;   // serial: the terminal that the other side opens
    std::string DisplayPath() const;  // the display's terminal

    // The next three have taken effect when they return.
    void Drop();                         // resets the connection; a serial line has none
    void Refuse(bool refuse);            // stops accepting connections, or accepts them again; an open one stays
    void Slow(uint32_t bytesPerSecond);  // 0: as fast as it goes
    void SetMute(bool mute);
    void SetCover(bool open);
    void SetPaper(PaperState state);
    void SetJam(bool jammed);
    void SetDrawerSignal(bool high);
    void SetPrintingHeld(bool held);

    // Takes in what a till has sent by now, as far as the printer takes it and the pace of the link has let it through.
    void TakeWhatHasArrived();
    // Runs a function on the printer while nothing else does.
    void With(const std::function<void(VirtualPrinter&)>& work);
    // Waits until a condition holds, looked at after everything that happens; false when the time is over.
    bool WaitFor(const std::function<bool(const VirtualPrinter&)>& condition,
                 std::chrono::milliseconds limit = std::chrono::seconds(10));
    std::vector<Happening> Happenings();
    std::vector<std::string> Lines();
    template <class T>
    std::vector<T> All()
    {
        std::vector<T> found;
        With([&found](VirtualPrinter& printer) { found = printer.All<T>(); });
        return found;
    }

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

// The usual one of an end-to-end test: a printer on a free port of the loopback address.
class TcpPrinterServer : public PrinterServer {
public:
    explicit TcpPrinterServer(std::string_view model, PrinterOptions options = {})
        : PrinterServer(model, LinkOptions{}, options)
    {
    }
};

}  // namespace marbex::virtual_printer
