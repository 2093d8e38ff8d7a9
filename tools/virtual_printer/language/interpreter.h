#pragma once

#include <functional>
#include <string>
#include <utility>

#include "virtual_printer/happenings.h"
#include "virtual_printer/language/character_tables.h"
#include "virtual_printer/language/command_reader.h"
#include "virtual_printer/language/customer_display.h"
#include "virtual_printer/models.h"
#include "virtual_printer/paper/barcode_printer.h"
#include "virtual_printer/paper/glyphs.h"
#include "virtual_printer/paper/line_composer.h"
#include "virtual_printer/paper/paper.h"
#include "virtual_printer/paper/raster.h"

namespace marbex::virtual_printer {

// Does what commands say: composes lines, draws, cuts, answers identity questions, keeps the display.
//
// Scaling by GS ! and the double sizes of ESC ! are settings of their own: a character has the larger of the two. The
// alignment of a line is the one in force at its first character.
class Interpreter {
public:
    struct Outlets {
        std::function<void(Happening)> happened;
        std::function<Bytes(const Bytes&)> answer;  // what of it is sent
    };

    Interpreter(const Model& model, uint16_t identity, bool wide, Paper& paper, Outlets outlets);

    void Execute(const Command& command);
    // Whether a printer that is stopped has to wait with this command.
    bool NeedsPaper(const Command& command) const;
    int CancelLine();  // throws the unfinished line away: its characters and an open image
    std::string UnfinishedLine() const { return line_.Text(); }
    bool LineEmpty() const { return line_.Empty() && !assembler_.Unfinished(); }
    void PowerOff();  // forgets the unfinished line and every setting, darkens the display
    // The characters put into the line or onto the display since they were last taken, UTF-8.
    std::string TakeCharacters() { return std::exchange(characters_, {}); }
    // A picture was finished that the printer is still busy with; asking resets it.
    bool TakeImageEnded();

    void DisplayLine(const Command& command);  // from the display's own line
    void TellDisplay();

private:
    void Character(uint8_t byte);
    void Put(char32_t character, int columns);
    void EndOfCharacters();
    void NewLine(bool wrapped);
    void EndImage();
    void Text(const Command& command);
    void Setting(const Command& command);
    void Mechanics(const Command& command);
    void Question(const Command& command);
    void BarcodeCommand(const Command& command);
    void RasterCommand(const Command& command);
    void Display(const Command& command);
    void PrintMode(const Command& command);
    void SelectTable(const Command& command);
    void Reset();
    void Report(Bytes bytes, std::string why);
    void Report(const Command& command, std::string why) { Report(command.bytes, std::move(why)); }
    Style CurrentStyle() const;

    const Model& model_;
    uint16_t identity_;
    bool wide_;
    Paper& paper_;
    Outlets outlets_;
    Glyphs glyphs_;
    LineComposer line_;
    Raster raster_;
    CustomerDisplay display_;
    bool displaySelected_ = false;
    bool imageEnded_ = false;
    std::string characters_;

    Style mode_;      // of ESC !, its scales 1 or 2
    int scaleX_ = 1;  // of GS !
    int scaleY_ = 1;
    Alignment alignment_ = Alignment::kLeft;
    BarcodeSettings barcode_;
    bool positioned_ = false;  // ESC $ since the last line
    const CharacterTable* table_;
    DoubleByteMode doubleByte_ = DoubleByteMode::kOff;
    DoubleByteAssembler assembler_{DoubleByteMode::kOff};
};

}  // namespace marbex::virtual_printer
