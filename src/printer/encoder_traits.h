#pragma once

// What differs between models in the command language; a member of every model's description.

#include <cstdint>
#include <span>
#include <string_view>

namespace marbex::printer {

// GS I: what is asked and which identifiers are accepted at open.
struct IdentityCheck {
    bool extendedAtOnce = false;       // asks GS I 0xFF at once for a two-byte answer
    bool extendedAfterFF = false;      // a first answer of 0xFF leads to the two-byte question
    bool firstAnswerMustBeFF = false;  // any other first answer fails
    bool wholeSeconds = true;          // the time limit of 2 s is taken in whole seconds, else in milliseconds
    std::span<const uint16_t> accepted{};
};

enum class CutCommand : uint8_t {
    kFullAt100ElsePartial,       // ESC i for 100, else ESC m
    kFull,                       // ESC i
    kFullWithPresenter,          // ESC i, 500 ms pause, GS e ...
    kPresenterAt100ElsePartial,  // 100: as kFullWithPresenter, else ESC m
    kPartialAt50ElseFull,        // ESC m for 50, else ESC i
    kTwoLineFeeds,               // LF LF, no cutter
};

enum class StatusVariant : uint8_t { kReference, kReferenceCleansOutput, kNoDrawerFlag, kBrisaHd };

enum class Recovery : uint8_t { kCan, kDleEnq2 };

struct EncoderTraits {
    CutCommand cut = CutCommand::kFullAt100ElsePartial;
    std::string_view presenter{};   // what follows ESC i in the presenter cuts: GS e ...
    bool afterCutSequence = false;  // GS e 0x05 before the next text after a cut
    uint16_t rasterWidth = 608;     // dots
    StatusVariant status = StatusVariant::kReference;
    Recovery recovery = Recovery::kCan;
    bool queriesErrorBit = false;  // QueryErrorBit asks the printer; else it answers false
    bool waitsForBitmapEnd = false;
    uint32_t secondaryComPort = 0;    // 0: none
    std::string_view startUpBytes{};  // sent right after the port is open
    bool asksWideMechanism = false;   // the raster width is 976 when the printer reports its wide mechanism
    IdentityCheck identity{};
};

}  // namespace marbex::printer
