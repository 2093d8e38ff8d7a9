#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "virtual_printer/happenings.h"

namespace marbex::virtual_printer {

enum class Op : uint8_t {
    kCharacter,  // one byte of text
    kLineFeed,
    kCarriageReturn,
    kCancel,
    kInitialise,       // ESC @
    kPrintMode,        // ESC !
    kScale,            // GS !
    kTable,            // ESC t
    kDoubleByte,       // FS %
    kAlign,            // ESC a
    kPosition,         // ESC $
    kMargin,           // GS L
    kMarkFeed,         // GS F8
    kFullCut,          // ESC i
    kPartialCut,       // ESC m
    kPresenter,        // GS e
    kDrawer,           // ESC p
    kIdentity,         // GS I
    kMechanism,        // 1C DD
    kStartUp,          // FS <
    kBarcodeHeight,    // GS h
    kBarcodeModule,    // GS w
    kBarcodeText,      // GS H
    kBarcode,          // GS k
    kRasterRows,       // ESC & l # P
    kRasterX,          // ESC * p # X
    kRasterMode,       // ESC * b # M
    kRasterRow,        // ESC * b # W
    kRasterEnd,        // ESC * r B
    kDisplaySelect,    // ESC B2
    kDisplayClear,     // ESC A0
    kDisplayPosition,  // US $
    kUnknown,
};

struct Command {
    Op op = Op::kUnknown;
    int value = 0;           // the number of a raster command
    Bytes bytes;             // the whole command as it came
    std::size_t dataAt = 0;  // where the payload of a barcode or raster row begins in bytes
    uint64_t at = 0;         // where the command begins in the stream, in bytes
    std::string why;         // of an unknown one
};

// Cuts a stream of bytes into commands. Knows the length of every command, and nothing of what it does.
class CommandReader {
public:
    // displayLine: the display's own line, whose positions have no row.
    explicit CommandReader(std::function<void(const Command&)> sink, bool displayLine = false);

    void Put(uint8_t byte);
    // So many bytes of the stream were not for this reader.
    void Skip(std::size_t bytes) { position_ += bytes; }
    bool MidCommand() const { return !current_.bytes.empty(); }
    // The next byte is data of a barcode or a raster row, or decides how much of it comes.
    bool InPayload() const { return inPayload_; }
    std::size_t Pending() const { return current_.bytes.size(); }
    uint64_t Begin() const { return MidCommand() ? current_.at : position_; }  // of the command that is coming in
    // Forgets an unfinished command; its bytes.
    Bytes Abandon();

private:
    void Judge();
    void JudgeEscape();
    void JudgeGroup();
    void JudgeField();
    void JudgeRaster();
    void JudgeBarcode();
    void JudgeStartUp();
    void Expect(Op op, std::size_t length);
    void Done(Op op);
    void UnknownUpTo(std::size_t length, const char* why);

    std::function<void(const Command&)> sink_;
    bool displayLine_;
    bool inPayload_ = false;
    uint64_t position_ = 0;   // of the next byte in the stream
    std::size_t length_ = 0;  // of the current command; 0: not known yet
    Command current_;
};

}  // namespace marbex::virtual_printer
