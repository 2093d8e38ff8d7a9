#pragma once

// A virtual printer at the end of a link, served by a thread of its own, with the faults a link can have.

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
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
    bool xonXoff = false;        // serial: a printer whose buffer is filling up holds the sender by XOFF
    // Serial: a symbolic link to make, which leads to the terminal. The terminal is then open at the till's end only,
    // so that the printer notices whether a till is there, and can be lost like an adapter that is unplugged: Drop,
    // Refuse and the power hang it up and, when the line is to be had again, lead the link to another one.
    std::string terminalLink;
};

// All operations may be called from any thread, but not by an observer or a copy. Refuse(false) throws
// std::system_error when the place it listened on has been taken meanwhile.
class PrinterServer {
public:
    // Who is told the bytes of whole commands, every byte received, and each command when it has been done.
    struct Copies {
        VirtualPrinter::Copy commands;
        VirtualPrinter::Copy received;
        VirtualPrinter::Witness done;  // what was done with each command
    };

    // Throws std::invalid_argument for an unknown model, std::system_error when the link cannot be set up.
    PrinterServer(std::string_view model, const LinkOptions& link, PrinterOptions options = {},
                  VirtualPrinter::Observer observer = {}, Copies copies = {});
    ~PrinterServer();
    PrinterServer(const PrinterServer&) = delete;
    PrinterServer& operator=(const PrinterServer&) = delete;

    uint16_t Port() const;            // TCP
    std::string SerialPath() const;   // serial: the terminal that the other side opens
    std::string DisplayPath() const;  // the display's terminal

    // Off: what is not on paper is lost, and so is the link; it is refused as long as the power stays off.
    void SetPower(bool on);
    void PowerCycle(std::chrono::milliseconds off);  // off at once, on again after that time
    // The next five have taken effect when they return.
    void Drop();               // resets the connection; a plain serial line has none
    void Refuse(bool refuse);  // stops accepting connections, or accepts them again; an open one stays
    void RefuseFor(std::chrono::milliseconds time);  // drops and refuses, and accepts again after that time
    void Slow(uint32_t bytesPerSecond);              // 0: as fast as it goes
    void Say(const Bytes& bytes);                    // sends what nobody has asked for
    // Does something when so many have been counted since the start, before anything else happens: it may call what is
    // declared here. Throws std::out_of_range when there have been more already.
    enum class Count : uint8_t { kBytes, kLines, kCuts };
    void At(Count what, uint64_t count, std::function<void()> action);
    // The same when so many more have been counted.
    void AtFurther(Count what, uint64_t count, std::function<void()> action);
    void At(uint64_t received, std::function<void()> action) { At(Count::kBytes, received, std::move(action)); }
    // Does something after a time.
    void After(std::chrono::milliseconds time, std::function<void()> action);
    // Sends bytes to the printer as a till would, as many as it takes now.
    struct Fed {
        std::size_t taken = 0;
        Bytes answer;
    };
    Fed Feed(std::span<const uint8_t> bytes);
    void SetMute(bool mute);
    void SetCover(bool open);
    void SetPaper(PaperState state);
    void SetJam(bool jammed);
    void SetDrawerSignal(bool high);
    void SetPrintingHeld(bool held);
    void SetSpeed(uint32_t millimetresPerSecond);
    void HalveAnswers(unsigned count);
    void SetGarbage(bool garbage);

    struct LinkState {
        bool refusing = false;
        uint32_t bytesPerSecond = 0;  // 0: no limit
    };
    LinkState GetLinkState();

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
