#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "virtual_printer/happenings.h"
#include "virtual_printer/paper/glyphs.h"

namespace marbex::virtual_printer {

// The line being composed: characters with their places, until a line feed puts them on the paper.
class LineComposer {
public:
    LineComposer(Paper& paper, Glyphs& glyphs) : paper_(paper), glyphs_(glyphs) {}

    // columns: cells that the character takes, 0 for a mark over the character before it.
    bool Fits(int columns, const Style& style) const;
    void Add(char32_t character, int columns, const Style& style, Alignment alignment);
    bool MoveTo(int x);  // dots from the margin; false beyond the printable area
    bool SetMargin(int margin);

    bool Empty() const { return cells_.empty(); }
    int X() const { return x_; }
    int Margin() const { return margin_; }
    std::string Text() const;

    TextLine Print(bool wrapped);
    int Clear();  // the number of characters thrown away
    void Reset();

private:
    struct Cell {
        char32_t character;
        int columns;
        Style style;
        int x;
    };
    int Area() const { return paper_.Width() - margin_; }
    int Offset() const;
    void AddText(TextLine& line) const;

    Paper& paper_;
    Glyphs& glyphs_;
    std::vector<Cell> cells_;
    int margin_ = 0;
    int x_ = 0;
    Alignment alignment_ = Alignment::kLeft;  // the one in force at the line's first character
};

}  // namespace marbex::virtual_printer
