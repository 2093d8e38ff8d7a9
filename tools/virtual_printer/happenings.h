#pragma once

// What a virtual printer reports: one value for each thing that happened, in the order in which it happened.

#include <cstddef>
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace marbex::virtual_printer {

using Bytes = std::vector<uint8_t>;

struct Style {
    bool bold = false;
    bool italic = false;
    bool underline = false;
    int scaleX = 1;  // 1 to 8
    int scaleY = 1;
    friend bool operator==(const Style&, const Style&) = default;
};

enum class Alignment : uint8_t { kLeft = 0, kCentre = 1, kRight = 2 };

struct TextRun {
    std::string text;  // UTF-8
    Style style;
    friend bool operator==(const TextRun&, const TextRun&) = default;
};

// A line of text went onto the paper; an empty line has no runs.
struct TextLine {
    std::string text;  // UTF-8, all runs together
    std::vector<TextRun> runs;
    Alignment alignment = Alignment::kLeft;
    int x = 0;             // where the line begins, in dots from the left of the printable area
    bool wrapped = false;  // printed because the paper was too narrow, not because of a line feed
    friend bool operator==(const TextLine&, const TextLine&) = default;
};

struct Cut {
    bool full = true;
    friend bool operator==(const Cut&, const Cut&) = default;
};

// The operator tore the paper off.
struct Torn {
    friend bool operator==(const Torn&, const Torn&) = default;
};

// GS e: the ticket is presented (3, with a number of steps) or ejected (5).
struct PresenterMove {
    uint8_t function = 0;
    uint8_t steps = 0;
    friend bool operator==(const PresenterMove&, const PresenterMove&) = default;
};

struct MarkFeed {
    friend bool operator==(const MarkFeed&, const MarkFeed&) = default;
};

struct DrawerPulse {
    uint8_t connector = 0;  // as sent
    int onMs = 0;
    int offMs = 0;
    bool drawer = true;  // false: this model has no connector, nothing moved
    friend bool operator==(const DrawerPulse&, const DrawerPulse&) = default;
};

// DLE EOT n.
struct StatusQuery {
    uint8_t kind = 0;
    Bytes answer;
    friend bool operator==(const StatusQuery&, const StatusQuery&) = default;
};

// GS I n; kind 0 stands for the question after the mechanism (1C DD 01 FF 00).
struct IdentityQuery {
    uint8_t kind = 0;
    Bytes answer;
    friend bool operator==(const IdentityQuery&, const IdentityQuery&) = default;
};

struct RasterImage {
    int x = 0;                // dots from the left of the printable area
    int width = 0;            // up to the rightmost black dot
    int height = 0;           // rows received
    int declaredRows = 0;     // rows announced
    bool complete = true;     // ended properly, with as many rows as announced
    bool clipped = false;     // black dots lay beyond the printable area
    std::vector<Bytes> rows;  // eight dots a byte, leftmost in the top bit, without trailing white
    friend bool operator==(const RasterImage&, const RasterImage&) = default;
};

struct Barcode {
    std::string symbology;  // "UPC-A", "UPC-E", "EAN-13", "EAN-8", "CODE 39", "ITF", "CODABAR", "CODE 93", "CODE 128"
    std::string data;       // as sent
    std::string text;       // the human-readable text
    int textPosition = 0;   // GS H: 0 none, 1 above, 2 below, 3 both
    int height = 0;         // of the bars, in dots
    int moduleWidth = 0;    // dots
    int x = 0;              // of the first bar, in dots from the left of the printable area
    int width = 0;          // dots
    bool printed = true;
    std::string problem;  // why it was not
    friend bool operator==(const Barcode&, const Barcode&) = default;
};

// The line display after a change; every row is padded with blanks to its 20 columns.
struct DisplayContent {
    std::vector<std::string> rows;
    friend bool operator==(const DisplayContent&, const DisplayContent&) = default;
};

struct Initialised {
    friend bool operator==(const Initialised&, const Initialised&) = default;
};

// FS < name >
struct StartUp {
    std::string name;
    friend bool operator==(const StartUp&, const StartUp&) = default;
};

// CAN, or DLE ENQ 2.
struct Cancelled {
    bool byEnquiry = false;
    int discarded = 0;  // bytes of commands and characters of the unfinished line thrown away
    friend bool operator==(const Cancelled&, const Cancelled&) = default;
};

// Bytes the printer does not understand, or characters its table does not have.
struct Unknown {
    Bytes bytes;
    std::string why;
    friend bool operator==(const Unknown&, const Unknown&) = default;
};

// Bytes fed to the printer beyond what its buffer takes; a link stops reading before that.
struct Overrun {
    int bytes = 0;
    friend bool operator==(const Overrun&, const Overrun&) = default;
};

struct Connected {
    friend bool operator==(const Connected&, const Connected&) = default;
};

struct Disconnected {
    std::size_t unread = 0;  // bytes that had arrived at the printer's end of the link and that it never took
    friend bool operator==(const Disconnected&, const Disconnected&) = default;
};

// The power went: what the printer had taken from the link and not printed is lost.
struct PowerOff {
    uint64_t from = 0;      // where in the stream received since the start what is lost begins
    std::size_t lost = 0;   // bytes; requests answered at once are not among them
    uint64_t received = 0;  // in all
    friend bool operator==(const PowerOff&, const PowerOff&) = default;
};

struct PowerOn {
    std::size_t missed = 0;  // bytes that came over a line while the power was off; they do not count as received
    friend bool operator==(const PowerOn&, const PowerOn&) = default;
};

using Happening = std::variant<TextLine, Cut, Torn, PresenterMove, MarkFeed, DrawerPulse, StatusQuery, IdentityQuery,
                               RasterImage, Barcode, DisplayContent, Initialised, StartUp, Cancelled, Unknown, Overrun,
                               Connected, Disconnected, PowerOff, PowerOn>;

}  // namespace marbex::virtual_printer
