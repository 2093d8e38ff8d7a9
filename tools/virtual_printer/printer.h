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
// A stopped printer (cover open, paper out, paper jam) still answers real-time requests and does whatever needs no
// paper as long as nothing waits before it. From the first command that needs paper on it keeps what comes, up to
// kStoppedBuffer bytes, and goes on with it when the cause is gone. CAN and DLE ENQ 2 throw the kept bytes away. A
// command whose bytes were cut short by the stop can be given up too: inside such a command real-time requests are
// recognised, and CAN when DLE EOT follows it directly, as nowhere else inside raster or barcode data.
//
// Not safe for several threads; PrinterServer (server.h) puts one behind a link and a lock.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "virtual_printer/happenings.h"
#include "virtual_printer/models.h"
#include "virtual_printer/paper.h"

namespace marbex::virtual_printer {

enum class PaperState : uint8_t { kOk, kLow, kOut };

struct PrinterOptions {
    bool wide = false;      // DORIN: the wide mechanism
    uint16_t identity = 0;  // another identifier of the same model; 0: the model's usual one
};

struct PrinterState {
    bool coverOpen = false;
    PaperState paper = PaperState::kOk;
    bool jammed = false;
    bool mute = false;
    bool stopped = false;
    std::size_t waitingBytes = 0;  // of commands kept until the printer goes on
};

class VirtualPrinter {
public:
    using Observer = std::function<void(const VirtualPrinter&, const Happening&)>;
    using Copy = std::function<void(std::span<const uint8_t> command)>;

    static constexpr std::size_t kStoppedBuffer = 4096;

    // Throws std::invalid_argument when no model has that name.
    explicit VirtualPrinter(std::string_view modelName, PrinterOptions options = {});
    ~VirtualPrinter();
    VirtualPrinter(const VirtualPrinter&) = delete;
    VirtualPrinter& operator=(const VirtualPrinter&) = delete;

    const Model& GetModel() const;

    // Takes bytes from the printer's link; the bytes that the printer answers.
    Bytes Feed(std::span<const uint8_t> bytes);
    Bytes Feed(std::string_view bytes);
    // How many bytes a stopped printer still takes; no limit while it runs.
    std::size_t Room() const;
    // The bytes of the line of the display, on the model whose display has one of its own.
    void FeedDisplay(std::span<const uint8_t> bytes);
    // The link was lost: an unfinished command is reported and forgotten.
    void LinkClosed();

    void SetCover(bool open);
    void SetPaper(PaperState state);
    void SetJam(bool jammed);         // models with a jam sensor
    void SetMute(bool mute);          // takes bytes, answers nothing
    void SetDrawerSignal(bool high);  // the sensor pin of the drawer connector
    void SetPrintingHeld(bool held);  // BRISA-HD: "still printing" for as long as it is held
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
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace marbex::virtual_printer
