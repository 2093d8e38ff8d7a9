#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "virtual_printer/posix/endpoints.h"
#include "virtual_printer/server.h"

namespace marbex::virtual_printer {

// The printer's end of its link: at most one connection at a time, further ones wait. One thread uses it.
class PrinterLink {
public:
    explicit PrinterLink(const LinkOptions& options);
    ~PrinterLink();
    PrinterLink(const PrinterLink&) = delete;
    PrinterLink& operator=(const PrinterLink&) = delete;

    uint16_t Port() const { return port_.load(); }
    const std::string& TerminalPath() const { return adapter_ ? options_.terminalLink : terminal_.path; }
    const std::string& DisplayPath() const { return display_.path; }

    void Refuse(bool refuse);
    void Vanish();  // a refused USB device node: not even its name is there
    void SetPace(uint32_t bytesPerSecond);

    enum class Event : uint8_t { kNothing, kConnected, kBytes, kDisplayBytes, kDisconnected };
    struct Outcome {
        Event event = Event::kNothing;
        Bytes bytes;
    };
    // Waits for the next thing to happen on the link, or for a byte on wakeFd (which it takes), so many milliseconds at
    // most. room: the bytes that the printer takes.
    Outcome Wait(std::size_t room, int wakeFd, int longestMs);
    // Nothing when nothing has happened within a moment, or the pace of the line has to be waited for.
    Outcome WaitAMoment(std::size_t room);
    void Send(const Bytes& bytes);
    // Resets the connection. How many bytes were under way in it; nothing when there was none.
    std::optional<std::size_t> Drop();

private:
    using Clock = std::chrono::steady_clock;
    const Descriptor& Line() const { return serial_ ? terminal_.master : connection_; }
    bool Connected() const;
    void Listen();
    void PlugIn();
    void Unplug();
    bool TillCame() const;
    std::size_t TakeUnread();
    Outcome Accept();
    Outcome Read(std::size_t most);
    Outcome ReadDisplay();
    void Flush();
    bool ReplacedByNewConnection() const;
    std::size_t Allowance();

    LinkOptions options_;
    bool serial_;
    bool adapter_;  // a serial line that can be lost
    bool refused_ = false;
    bool tillThere_ = false;  // somebody has the adapter's terminal open
    std::atomic<uint16_t> port_ = 0;
    Descriptor listener_;
    Descriptor connection_;
    PseudoTerminal terminal_;
    PseudoTerminal display_;
    Bytes unsent_;
    double pace_ = 0;    // bytes a second, 0 for no limit
    double credit_ = 0;  // bytes that may be read now
    Clock::time_point counted_{};
};

}  // namespace marbex::virtual_printer
