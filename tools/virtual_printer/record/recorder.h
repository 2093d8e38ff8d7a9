#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "virtual_printer/printer.h"
#include "virtual_printer/record/journal.h"
#include "virtual_printer/record/piece.h"

namespace marbex::virtual_printer {

// What can be seen at the printer besides its paper, at one moment.
struct Surroundings {
    bool connected = false;
    std::vector<std::string> display;  // rows
    bool drawerOpen = false;
    unsigned pulses = 0;  // of the drawer
    std::string ticket;   // at the presenter: "", "held", "presented"
    std::size_t lines = 0;
    std::size_t cuts = 0;
    struct UnknownBytes {
        std::string why;
        std::size_t times = 0;
    };
    std::map<std::string, UnknownBytes> unknown;  // by their bytes in hexadecimal
};

// Remembers what a printer did: a journal, the pieces of paper with the bytes that made each line of them, and what
// can be seen around it. Bounded: old items and old pieces are forgotten.
//
// Told and asked from any thread. While it is told something it calls nobody but onChange, which may not call it.
class Recorder {
public:
    static constexpr std::size_t kMostPieces = 200;
    static constexpr std::size_t kMostPieceBytes = 48U << 20U;

    explicit Recorder(const Model& model, std::function<void()> onChange = {});

    // The printer's observer and its witness. Happened returns what happened as one JSON object, with the time and, of
    // a cut, the number of the piece.
    std::string Happened(const VirtualPrinter& printer, const Happening& happening);
    void Done(const VirtualPrinter& printer, const Command& command, std::string_view characters);
    // Someone pushed the drawer shut, or pulled it open.
    void MoveDrawer(bool open);
    void TakeTicket();  // someone took it from the presenter

    uint64_t NextItem() const;
    uint64_t FirstItem() const;
    std::vector<Journal::Item> Items(uint64_t from) const;
    Surroundings Look() const;
    std::vector<std::shared_ptr<const Piece>> Pieces() const;     // finished ones, oldest first
    std::shared_ptr<const Piece> Find(std::size_t number) const;  // a finished one; null when there is none
    // The piece that has not been cut. paper: of the printer that this recorder watches, as it is now.
    Piece Unfinished(const Paper& paper, bool withDots) const;
    // Only its number and length.
    std::pair<std::size_t, std::size_t> UnfinishedSize() const;

private:
    std::size_t RowsOf(const Paper& paper) const;  // of the unfinished piece
    void FlushRun();
    void AddCommand(Op op, std::size_t at, std::size_t length, std::size_t line, std::string_view characters);
    void CloseLine(const Paper& paper, PieceLine::Kind kind, std::string text);
    void FinishPiece(const Paper& paper, std::string end);
    void Note(const Happening& happening);

    const Model& model_;
    std::function<void()> onChange_;
    mutable std::mutex mutex_;
    Journal journal_;
    Surroundings surroundings_;
    std::deque<std::shared_ptr<const Piece>> pieces_;
    std::size_t pieceBytes_ = 0;
    Piece piece_;
    uint64_t pieceFrom_ = 0;    // what had moved of the paper when the piece began
    std::size_t lineFrom_ = 0;  // the row where the line that is being made begins
    bool lineClosed_ = false;   // by the command that is being done
    std::string pendingEnd_;    // a cut has been made by it
    struct Run {                // characters or raster rows that are still coming
        Op op = Op::kUnknown;
        std::size_t at = 0;
        std::size_t length = 0;
        std::size_t count = 0;
        std::string characters;
    } run_;
};

}  // namespace marbex::virtual_printer
