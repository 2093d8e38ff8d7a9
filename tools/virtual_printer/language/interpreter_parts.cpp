// The interpreter's commands for the parts of the printer other than its text: cutter and presenter, drawer, barcodes,
// pictures, the display, and the questions who it is.

#include <span>
#include <utility>

#include "virtual_printer/language/interpreter.h"

namespace marbex::virtual_printer {
namespace {

constexpr int kMarkDistance = 800;  // dots between the marks on the back of the paper
constexpr int kDrawerUnitMs = 2;
constexpr int kWidestModule = 6;  // dots

}  // namespace

void Interpreter::Mechanics(const Command& command)
{
    const Bytes& b = command.bytes;
    if (command.op == Op::kDrawer) {
        return outlets_.happened(DrawerPulse{b[2], b[3] * kDrawerUnitMs, b[4] * kDrawerUnitMs, model_.drawer});
    }
    EndImage();
    if (!line_.Empty()) {
        NewLine(false);
    }
    switch (command.op) {
        case Op::kFullCut:
        case Op::kPartialCut:
            if (!model_.cutter) {
                return Report(command, "this model has no cutter");
            }
            paper_.Cut(command.op == Op::kFullCut);
            return outlets_.happened(Cut{command.op == Op::kFullCut});
        case Op::kPresenter:
            if (!model_.presenter || (b[2] != 3 && b[2] != 5)) {
                return Report(command, model_.presenter ? "no such presenter function" : "this model has no presenter");
            }
            return outlets_.happened(PresenterMove{b[2], b.size() > 3 ? b[3] : uint8_t{0}});
        default:
            paper_.Feed(kMarkDistance - static_cast<int>(paper_.Pages().back().rows % kMarkDistance));
            return outlets_.happened(MarkFeed{});
    }
}

void Interpreter::Question(const Command& command)
{
    const Bytes& b = command.bytes;
    Bytes answer;
    if (command.op == Op::kStartUp) {
        if (!model_.takesStartUp) {
            return Report(command, "this model has no start-up command");
        }
        return outlets_.happened(StartUp{std::string(b.begin() + 2, b.end() - 1)});
    }
    if (command.op == Op::kMechanism) {
        if (model_.wideDots == 0 || b != Bytes{0x1C, 0xDD, 0x01, 0xFF, 0x00}) {
            return Report(command, "this model is not asked so");
        }
        // Six bytes follow the first one, whose low half counts them; the last tells the wide mechanism.
        answer = {0x06, 0, 0, 0, 0, 0, static_cast<uint8_t>(wide_ ? 0x02 : 0x00)};
        return outlets_.happened(IdentityQuery{0, outlets_.answer(answer)});
    }
    const bool oneByte = identity_ < 0xFF;
    if (b[2] == 1) {
        answer = {oneByte ? static_cast<uint8_t>(identity_) : uint8_t{0xFF}};
    } else if (b[2] == 0xFF) {
        answer = {static_cast<uint8_t>(identity_ >> 8), static_cast<uint8_t>(identity_ & 0xFF)};
    } else {
        return Report(command, "no such identity");
    }
    outlets_.happened(IdentityQuery{b[2], outlets_.answer(answer)});
}

void Interpreter::BarcodeCommand(const Command& command)
{
    const Bytes& b = command.bytes;
    switch (command.op) {
        case Op::kBarcodeHeight:
            if (b[2] == 0) {
                return Report(command, "barcode height 0");
            }
            barcode_.height = b[2];
            return;
        case Op::kBarcodeModule:
            if (b[2] == 0 || b[2] > kWidestModule) {
                return Report(command, "no such barcode module width");
            }
            barcode_.moduleWidth = b[2];
            return;
        case Op::kBarcodeText:
            if (b[2] > 3) {
                return Report(command, "no such barcode text position");
            }
            barcode_.textPosition = b[2];
            return;
        default:
            break;
    }
    EndImage();
    BarcodePlace place{alignment_, line_.Margin(), positioned_ ? line_.X() : -1};
    if (!line_.Empty()) {
        NewLine(false);
        place.x = -1;
    }
    const auto data = std::span(b).subspan(command.dataAt);
    outlets_.happened(PrintBarcode(b[2], data, barcode_, place, paper_, glyphs_));
    line_.Clear();
    positioned_ = false;
}

void Interpreter::RasterCommand(const Command& command)
{
    if (!raster_.Open() && !line_.Empty()) {
        NewLine(false);
    }
    switch (command.op) {
        case Op::kRasterRows:
            EndImage();
            return raster_.SetRows(command.value);
        case Op::kRasterX:
            return raster_.SetX(command.value);
        case Op::kRasterMode:
            if (!raster_.SetMode(command.value)) {
                Report(command, "no such raster coding");
            }
            return;
        case Op::kRasterRow:
            if (!raster_.Row(std::span(command.bytes).subspan(command.dataAt))) {
                Report(command, "damaged raster row");
            }
            return;
        default:
            if (!raster_.Open()) {
                return Report(command, "no raster image to end");
            }
            imageEnded_ = true;
            return outlets_.happened(raster_.Finish(true));
    }
}

void Interpreter::Display(const Command& command)
{
    const Bytes& b = command.bytes;
    if (!display_.Present() || model_.displayOnOwnLine) {
        return Report(command, "no display on this line");
    }
    if (command.op == Op::kDisplaySelect) {
        if (b[2] != 'D' && b[2] != 'P') {
            return Report(command, "no such device");
        }
        displaySelected_ = b[2] == 'D';
        return TellDisplay();
    }
    if (!displaySelected_) {
        return Report(command, "the display is not selected");
    }
    DisplayLine(command);
}

void Interpreter::DisplayLine(const Command& command)
{
    const Bytes& b = command.bytes;
    switch (command.op) {
        case Op::kCharacter:
            return AppendUtf8(characters_, display_.Put(b[0]));
        case Op::kDisplayClear:
            return b[2] == 0 ? display_.Clear() : Report(command, "no such display command");
        case Op::kDisplayPosition: {
            const bool withRow = b.size() == 4;
            if (!display_.MoveTo(withRow ? b[2] : 0, b.back())) {
                Report(command, "position beyond the display");
            }
            return;
        }
        default:
            return Report(command, command.op == Op::kUnknown ? command.why : "no such display command");
    }
}

void Interpreter::TellDisplay()
{
    if (display_.Changed()) {
        outlets_.happened(display_.Tell());
    }
}

}  // namespace marbex::virtual_printer
