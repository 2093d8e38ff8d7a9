#include "virtual_printer/language/interpreter.h"

#include <algorithm>
#include <utility>

namespace marbex::virtual_printer {
namespace {

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
            EndImage();
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
    EndImage();
    const Style style = CurrentStyle();
    if (!line_.Empty() && !line_.Fits(columns, style)) {
        NewLine(true);
    }
    line_.Add(character, columns, style, alignment_);
    AppendUtf8(characters_, character);
}

void Interpreter::NewLine(bool wrapped)
{
    outlets_.happened(line_.Print(wrapped));
    positioned_ = false;
}

// An image is over when something else comes.
void Interpreter::EndImage()
{
    if (raster_.Open()) {
        outlets_.happened(raster_.Finish(false));
    }
}

int Interpreter::CancelLine()
{
    assembler_.Take();
    EndImage();
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
            Reset();
            return outlets_.happened(Initialised{});
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

void Interpreter::PowerOff()
{
    Reset();
    imageEnded_ = false;
    if (display_.Present()) {
        display_.Clear();
        TellDisplay();
    }
}

void Interpreter::Reset()
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
}

void Interpreter::Report(Bytes bytes, std::string why)
{
    outlets_.happened(Unknown{std::move(bytes), std::move(why)});
}

}  // namespace marbex::virtual_printer
