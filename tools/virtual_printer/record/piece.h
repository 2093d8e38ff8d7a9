#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "virtual_printer/happenings.h"
#include "virtual_printer/language/command_reader.h"
#include "virtual_printer/paper/paper.h"

namespace marbex::virtual_printer {

using WallClock = std::chrono::system_clock;

// A stretch of paper that one thing made: a line of text, a picture, a bar code, a feed.
struct PieceLine {
    enum class Kind : uint8_t { kText, kPicture, kBarcode, kFeed };
    Kind kind = Kind::kText;
    std::string text;      // UTF-8; of a bar code its symbology and data
    std::size_t y = 0;     // rows of dots from the beginning of the piece
    std::size_t rows = 0;  // of dots
};
std::string_view Name(PieceLine::Kind kind);

// A command of the stream, or a run of characters or raster rows.
struct PieceCommand {
    Op op = Op::kUnknown;
    std::size_t at = 0;  // in the bytes of the piece
    std::size_t length = 0;
    std::size_t line = 0;  // which line it had to do with, numbered from 0; the settings before a line are that line's
    std::string text;      // the characters it put somewhere, UTF-8
};

// What came out between two cuts: the receipt.
struct Piece {
    static constexpr std::size_t kMostBytes = 4U << 20U;  // of the commands kept
    static constexpr std::size_t kMostCommands = 100000;

    std::size_t number = 1;  // the first piece is 1
    WallClock::time_point begun;
    WallClock::time_point ended;
    bool finished = false;    // cut, or torn off
    std::string end;          // "full", "partial"; empty while it is not cut
    int width = 0;            // dots
    Paper::Page page;         // the dots, of a finished piece
    std::size_t rows = 0;     // of dots, those forgotten included
    std::size_t noLines = 0;  // lines forgotten
    std::deque<PieceLine> lines;
    std::vector<PieceCommand> commands;
    Bytes bytes;           // of all its commands, as they came; real-time requests are not among them
    bool whole = true;     // nothing of commands or bytes was too much to keep
    bool unknown = false;  // there was something that the printer did not understand

    std::size_t Size() const { return page.bits.size() + bytes.size() + commands.size() * sizeof(PieceCommand); }
    std::string Text() const;  // its lines, each with its end of line
    // All of it as one JSON object: lines with their places, commands with their names.
    std::string Json() const;
};

// "2026-03-14T15:09:26.535Z"
std::string TimeText(WallClock::time_point time);
// "1B 40"; at most so many bytes, an ellipsis for the rest.
std::string HexText(std::span<const uint8_t> bytes, std::size_t most = SIZE_MAX);

}  // namespace marbex::virtual_printer
