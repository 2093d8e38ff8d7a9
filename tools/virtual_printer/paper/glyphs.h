#pragma once

#include <memory>

#include "virtual_printer/happenings.h"
#include "virtual_printer/paper/dot_strip.h"

namespace marbex::virtual_printer {

// Font A: a cell of 12 x 24 dots, printed at a line spacing of 32.
inline constexpr int kCellWidth = 12;
inline constexpr int kCellHeight = 24;
inline constexpr int kLineSpacing = 32;

// The printer's characters, drawn with the fonts of the system: DejaVu Sans Mono, and others for what it lacks. A
// character that no font has is an empty box.
class Glyphs {
public:
    Glyphs();
    ~Glyphs();
    Glyphs(const Glyphs&) = delete;
    Glyphs& operator=(const Glyphs&) = delete;

    // Draws one character; x and bottom are the lower left corner of its cell, columns its width in cells.
    void Draw(DotStrip& strip, int x, int bottom, char32_t character, int columns, const Style& style);

private:
    class Faces;
    std::unique_ptr<Faces> faces_;
};

}  // namespace marbex::virtual_printer
