#pragma once

// A printer of the family made of software: it decodes the command language from the printer's side, draws the paper
// and answers as the printer would. Usable inside a test as an independent judge of bytes:
//
//     VirtualPrinter printer("TALIS");
//     printer.Feed(bytes);
//     EXPECT_EQ(printer.Lines(), (std::vector<std::string>{"TOTAL 12,50"}));
//     EXPECT_TRUE(printer.All<Unknown>().empty());
//
// A stream may be fed in pieces cut anywhere; what happens does not depend on the cuts.
//
// A printer that is stopped (cover open, paper out, paper jam) or busy moving the paper still answers real-time
// requests and does whatever needs no paper as long as nothing waits before it. From the first command that needs paper
// on what comes waits in the receive buffer, and is printed when the cause is gone. While the printer is stopped, CAN
// and DLE ENQ 2 throw away what waits. A command whose bytes were cut short by the stop can be given up too: inside
// such a command real-time requests are recognised, and CAN when DLE EOT follows it directly, as nowhere else inside
// raster or barcode data.
//
// Time passes when GoOn says so. It matters to a printer with a speed only: without one the paper moves in no time.
//
// Not safe for several threads; PrinterServer (server.h) puts one behind a link and a lock.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "virtual_printer/happenings.h"
#include "virtual_printer/models.h"
#include "virtual_printer/paper/paper.h"

namespace marbex::virtual_printer {

enum class PaperState : uint8_t { kOk, kLow, kOut };

struct PrinterOptions {
    bool wide = false;      // DORIN: the wide mechanism
    uint16_t identity = 0;  // another identifier of the same model; 0: the model's usual one
    uint32_t buffer = 0;    // bytes of the receive buffer; 0: as many as the model has
    uint32_t speed = 0;     // of the paper, in millimetres a second; 0: no limit
};

struct PrinterState {
    bool coverOpen = false;
    PaperState paper = PaperState::kOk;
    bool jammed = false;
    bool mute = false;
    bool garbage = false;
    bool stopped = false;
    bool on = true;             // the power
    bool drawerSignal = false;  // the sensor pin of the drawer connector is high
    bool printingHeld = false;
    uint32_t speed = 0;            // of the paper, in millimetres a second; 0: no limit
    std::size_t waitingBytes = 0;  // of commands kept until the printer goes on
    uint64_t received = 0;         // bytes since the beginning
    uint64_t lines = 0;            // of text, since the beginning
    uint64_t cuts = 0;             // since the beginning
};

class Engine;
struct Command;

class VirtualPrinter {
public:
    using Observer = std::function<void(const VirtualPrinter&, const Happening&)>;
    using Copy = std::function<void(std::span<const uint8_t> bytes)>;
    using Witness = std::function<void(const VirtualPrinter&, const Command&, std::string_view characters)>;
    using Clock = std::chrono::steady_clock;

    // Throws std::invalid_argument when no model has that name.
    explicit VirtualPrinter(std::string_view modelName, PrinterOptions options = {});
    ~VirtualPrinter();
    VirtualPrinter(const VirtualPrinter&) = delete;
    VirtualPrinter& operator=(const VirtualPrinter&) = delete;

    const Model& GetModel() const;

    // Takes bytes from the printer's link; the bytes that the printer answers.
    Bytes Feed(std::span<const uint8_t> bytes);
    Bytes Feed(std::string_view bytes);
    // How many bytes the printer takes now. A command that is coming in fills the buffer only when it has to wait.
    std::size_t Room() const;
    std::size_t BufferSize() const;
    uint64_t Received() const;  // bytes taken from the link since the beginning
    // It is that late now: prints what has been waiting for the paper to move.
    void GoOn(Clock::time_point now);
    // When it wants to go on; nothing while no paper moves.
    std::optional<Clock::time_point> Due() const;
    // The bytes of the line of the display, on the model whose display has one of its own.
    void FeedDisplay(std::span<const uint8_t> bytes);
    // The link was lost: an unfinished command is reported and forgotten.
    void LinkClosed();

    void SetCover(bool open);
    void SetPaper(PaperState state);
    void SetJam(bool jammed);         // models with a jam sensor
    void TearOff();                   // the paper that has come out; a new piece begins
    void SetMute(bool mute);          // takes bytes, answers nothing
    void SetDrawerSignal(bool high);  // the sensor pin of the drawer connector
    void SetPrintingHeld(bool held);  // BRISA-HD: "still printing" for as long as it is held
    void SetSpeed(uint32_t millimetresPerSecond);
    // Off: what is not on paper is lost, and every setting; bytes that come are not heard.
    void SetPower(bool on);
    void HalveAnswers(unsigned count);  // of the next answers the second half is never sent
    void SetGarbage(bool garbage);      // every bit of an answer is the wrong one
    PrinterState State() const;

    // Everything that happened since the beginning, or since the list was last taken.
    const std::vector<Happening>& Happenings() const;
    std::vector<Happening> TakeHappenings();
    // With an observer happenings are told to it, at once, and no longer kept.
    void Observe(Observer observer);
    void Record(Happening happening);
    // Told the bytes of every whole command as it comes in, its data included: all that was sent but real-time
    // requests, which come whenever the sender looks at the status, and what is never finished.
    void CopyCommands(Copy copy);
    // Told every byte that is received.
    void CopyReceived(Copy copy);
    // Told every command of the printer's line when it has been done, after what happened by it, and the characters
    // (UTF-8) that it put into the line or onto the display.
    void Watch(Witness witness);
    // Asked between two commands. While it says true nothing is printed and what comes waits in the buffer; GoOn goes
    // on.
    void HoldWhile(std::function<bool()> held);

    template <class T>
    std::vector<T> All() const
    {
        std::vector<T> found;
        for (const Happening& happening : Happenings()) {
            if (const T* one = std::get_if<T>(&happening)) {
                found.push_back(*one);
            }
        }
        return found;
    }
    std::vector<std::string> Lines() const;  // the text of every line printed, UTF-8
    // The characters of the line that is not yet printed, UTF-8.
    std::string UnfinishedLine() const;

    const Paper& GetPaper() const;

private:
    std::unique_ptr<Engine> engine_;
};

}  // namespace marbex::virtual_printer
