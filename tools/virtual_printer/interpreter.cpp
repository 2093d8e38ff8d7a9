#include "virtual_printer/interpreter.h"

#include <algorithm>
#include <utility>

namespace marbex::virtual_printer {
namespace {

constexpr int kMarkDistance = 800;  // dots between the marks on the back of the paper
constexpr int kDrawerUnitMs = 2;
constexpr int kWidestModule = 6;  // dots

constexpr uint8_t kBold = 0x08;
constexpr uint8_t kDoubleHeight = 0x10;
constexpr uint8_t kDoubleWidth = 0x20;
constexpr uint8_t kItalic = 0x40;
constexpr uint8_t kUnderline = 0x80;
constexpr uint8_t kNormal = 0x02;

// Characters that stand over or under the one before them.
bool IsMark(char32_t c)
{
    return (c >= 0x0300 && c <= 0x036F) || (c >= 0x0591 && c <= 0x05BD) || (c >= 0x064B && c <= 0x0652) ||
           c == 0x0E31 || (c >= 0x0E34 && c <= 0x0E3A) || (c >= 0x0E47 && c <= 0x0E4E);
}

Bytes ToBytes(const std::string& text)
{
    return {text.begin(), text.end()};
}

int Number16(const Bytes& bytes)
{
    return bytes[2] + 256 * bytes[3];
}

}  // namespace

Interpreter::Interpreter(const Model& model, uint16_t identity, bool wide, Paper& paper, Outlets outlets)
    : model_(model),
      identity_(identity),
      wide_(wide),
      paper_(paper),
      outlets_(std::move(outlets)),
      line_(paper, glyphs_),
      raster_(paper),
      display_(model.displayRows, model.displayCharset),
      table_(PrinterTable(0))
{
}

void Interpreter::Execute(const Command& command)
{
    if (command.op != Op::kCharacter) {
        EndOfCharacters();
    }
    const bool forPrinter = command.op == Op::kUnknown || command.op == Op::kCancel || command.op == Op::kInitialise;
    if (displaySelected_ && !forPrinter) {
        return Display(command);
    }
    switch (command.op) {
        case Op::kCharacter:
        case Op::kLineFeed:
        case Op::kCarriageReturn:
        case Op::kCancel:
            return Text(command);
        case Op::kFullCut:
        case Op::kPartialCut:
        case Op::kPresenter:
        case Op::kMarkFeed:
        case Op::kDrawer:
            return Mechanics(command);
        case Op::kIdentity:
        case Op::kMechanism:
        case Op::kStartUp:
            return Question(command);
        case Op::kBarcodeHeight:
        case Op::kBarcodeModule:
        case Op::kBarcodeText:
        case Op::kBarcode:
            return BarcodeCommand(command);
        case Op::kRasterRows:
        case Op::kRasterX:
        case Op::kRasterMode:
        case Op::kRasterRow:
        case Op::kRasterEnd:
            return RasterCommand(command);
        case Op::kDisplaySelect:
        case Op::kDisplayClear:
        case Op::kDisplayPosition:
            return Display(command);
        case Op::kUnknown:
            return Report(command, command.why);
        default:
            return Setting(command);
    }
}

bool Interpreter::NeedsPaper(const Command& command) const
{
    switch (command.op) {
        case Op::kCharacter:
        case Op::kLineFeed:
            return !displaySelected_;
        case Op::kFullCut:
        case Op::kPartialCut:
        case Op::kPresenter:
        case Op::kMarkFeed:
        case Op::kBarcode:
        case Op::kRasterRows:
        case Op::kRasterX:
        case Op::kRasterMode:
        case Op::kRasterRow:
        case Op::kRasterEnd:
            return true;
        default:
            return false;
    }
}

void Interpreter::Text(const Command& command)
{
    switch (command.op) {
        case Op::kCharacter:
            return Character(command.bytes[0]);
        case Op::kLineFeed:
            FinishUnfinished();
            return NewLine(false);
        case Op::kCancel:
            displaySelected_ = false;
            return outlets_.happened(Cancelled{false, CancelLine()});
        default:
            return;  // the carriage return does nothing
    }
}

void Interpreter::Character(uint8_t byte)
{
    if (doubleByte_ == DoubleByteMode::kOff) {
        const char32_t character = (*table_)[byte];
        if (character == kNoCharacter) {
            Report({byte}, "the character table has no such character");
        }
        return Put(character, IsMark(character) ? 0 : 1);
    }
    const auto result = assembler_.Put(byte);
    if (!result.complete) {
        return;
    }
    if (assembler_.Unfinished()) {
        Report(ToBytes(assembler_.Take()), "the character table has no such character");
    }
    Put(result.character, result.character < 0x80 ? 1 : 2);
}

void Interpreter::EndOfCharacters()
{
    if (assembler_.Unfinished()) {
        Report(ToBytes(assembler_.Take()), "half of a double-byte character");
    }
}

void Interpreter::Put(char32_t character, int columns)
{
    if (raster_.Open()) {
        outlets_.happened(raster_.Finish(false));
    }
    const Style style = CurrentStyle();
    if (!line_.Empty() && !line_.Fits(columns, style)) {
        NewLine(true);
    }
    line_.Add(character, columns, style, alignment_);
}

void Interpreter::NewLine(bool wrapped)
{
    outlets_.happened(line_.Print(wrapped));
    positioned_ = false;
}

// Whatever comes next starts on a line of its own.
void Interpreter::FinishUnfinished()
{
    if (raster_.Open()) {
        outlets_.happened(raster_.Finish(false));
    }
}

int Interpreter::CancelLine()
{
    assembler_.Take();
    if (raster_.Open()) {
        outlets_.happened(raster_.Finish(false));
    }
    positioned_ = false;
    return line_.Clear();
}

bool Interpreter::TakeImageEnded()
{
    return std::exchange(imageEnded_, false);
}

Style Interpreter::CurrentStyle() const
{
    Style style = mode_;
    style.scaleX = std::max(mode_.scaleX, scaleX_);
    style.scaleY = std::max(mode_.scaleY, scaleY_);
    return style;
}

void Interpreter::Setting(const Command& command)
{
    const Bytes& b = command.bytes;
    switch (command.op) {
        case Op::kInitialise:
            return Initialise();
        case Op::kPrintMode:
            return PrintMode(command);
        case Op::kScale:
            if ((b[2] & 0x88) != 0) {
                return Report(command, "scale above 8");
            }
            scaleX_ = (b[2] >> 4) + 1;
            scaleY_ = (b[2] & 0x0F) + 1;
            return;
        case Op::kTable:
        case Op::kDoubleByte:
            return SelectTable(command);
        case Op::kAlign:
            if (b[2] > 2) {
                return Report(command, "no such alignment");
            }
            alignment_ = static_cast<Alignment>(b[2]);
            return;
        case Op::kPosition:
            if (!line_.MoveTo(Number16(b))) {
                return Report(command, "position beyond the printable area");
            }
            positioned_ = true;
            return;
        case Op::kMargin:
            if (!line_.SetMargin(Number16(b))) {
                Report(command, "margin beyond the printable area");
            }
            return;
        default:
            return;
    }
}

void Interpreter::PrintMode(const Command& command)
{
    const uint8_t mode = command.bytes[2];
    if ((mode & ~(kNormal | kBold | kDoubleHeight | kDoubleWidth | kItalic | kUnderline)) != 0) {
        Report(command, "print mode bits that mean nothing");
    }
    mode_.bold = (mode & kBold) != 0;
    mode_.italic = (mode & kItalic) != 0;
    mode_.underline = (mode & kUnderline) != 0;
    mode_.scaleX = (mode & kDoubleWidth) != 0 ? 2 : 1;
    mode_.scaleY = (mode & kDoubleHeight) != 0 ? 2 : 1;
}

void Interpreter::SelectTable(const Command& command)
{
    const uint8_t number = command.bytes[2];
    if (command.op == Op::kTable) {
        const CharacterTable* table = PrinterTable(number);
        if (table == nullptr) {
            return Report(command, "no such character table");
        }
        table_ = table;
        return;
    }
    if (number > static_cast<uint8_t>(DoubleByteMode::kKorean949)) {
        return Report(command, "no such double-byte table");
    }
    doubleByte_ = static_cast<DoubleByteMode>(number);
    assembler_ = DoubleByteAssembler(doubleByte_);
}

void Interpreter::Initialise()
{
    CancelLine();
    line_.Reset();
    displaySelected_ = false;
    mode_ = {};
    scaleX_ = 1;
    scaleY_ = 1;
    alignment_ = Alignment::kLeft;
    barcode_ = {};
    table_ = PrinterTable(0);
    doubleByte_ = DoubleByteMode::kOff;
    assembler_ = DoubleByteAssembler(doubleByte_);
    outlets_.happened(Initialised{});
}

void Interpreter::Mechanics(const Command& command)
{
    const Bytes& b = command.bytes;
    if (command.op == Op::kDrawer) {
        return outlets_.happened(DrawerPulse{b[2], b[3] * kDrawerUnitMs, b[4] * kDrawerUnitMs, model_.drawer});
    }
    FinishUnfinished();
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
        outlets_.happened(IdentityQuery{0, answer});
        return outlets_.answer(answer);
    }
    const bool oneByte = identity_ < 0xFF;
    if (b[2] == 1) {
        answer = {oneByte ? static_cast<uint8_t>(identity_) : uint8_t{0xFF}};
    } else if (b[2] == 0xFF) {
        answer = {static_cast<uint8_t>(identity_ >> 8), static_cast<uint8_t>(identity_ & 0xFF)};
    } else {
        return Report(command, "no such identity");
    }
    outlets_.happened(IdentityQuery{b[2], answer});
    outlets_.answer(answer);
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
    FinishUnfinished();
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
            FinishUnfinished();
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
            return display_.Put(b[0]);
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

void Interpreter::Report(Bytes bytes, std::string why)
{
    outlets_.happened(Unknown{std::move(bytes), std::move(why)});
}

}  // namespace marbex::virtual_printer
