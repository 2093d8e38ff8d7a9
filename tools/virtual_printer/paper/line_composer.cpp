#include "virtual_printer/paper/line_composer.h"

#include <algorithm>

#include "virtual_printer/language/character_tables.h"

namespace marbex::virtual_printer {
namespace {

constexpr int kLineGap = kLineSpacing - kCellHeight;
constexpr std::size_t kMostCells = 1024;  // marks take no width

int CellWidth(int columns, const Style& style)
{
    return kCellWidth * columns * style.scaleX;
}

}  // namespace

bool LineComposer::Fits(int columns, const Style& style) const
{
    return x_ + CellWidth(columns, style) <= Area() && cells_.size() < kMostCells;
}

void LineComposer::Add(char32_t character, int columns, const Style& style, Alignment alignment)
{
    if (cells_.empty()) {
        alignment_ = alignment;
    }
    const int width = CellWidth(columns, style);
    // A mark is drawn over the cell before it.
    const int x = columns == 0 && !cells_.empty() ? cells_.back().x : x_;
    cells_.push_back({character, columns, style, x});
    x_ += width;
}

bool LineComposer::MoveTo(int x)
{
    if (x >= Area()) {
        return false;
    }
    x_ = x;
    return true;
}

bool LineComposer::SetMargin(int margin)
{
    if (margin >= paper_.Width()) {
        return false;
    }
    margin_ = margin;
    return true;
}

int LineComposer::Offset() const
{
    int right = 0;
    for (const Cell& cell : cells_) {
        right = std::max(right, cell.x + CellWidth(cell.columns, cell.style));
    }
    const int room = std::max(0, Area() - right);
    switch (alignment_) {
        case Alignment::kCentre:
            return margin_ + room / 2;
        case Alignment::kRight:
            return margin_ + room;
        case Alignment::kLeft:
            break;
    }
    return margin_;
}

std::string LineComposer::Text() const
{
    TextLine line;
    AddText(line);
    return line.text;
}

void LineComposer::AddText(TextLine& line) const
{
    int x = 0;
    for (const Cell& cell : cells_) {
        if (line.runs.empty() || !(line.runs.back().style == cell.style)) {
            line.runs.push_back({"", cell.style});
        }
        std::string& run = line.runs.back().text;
        for (int gap = cell.x - x; gap >= kCellWidth && !line.text.empty(); gap -= kCellWidth) {
            run.push_back(' ');
            line.text.push_back(' ');
        }
        AppendUtf8(run, cell.character);
        AppendUtf8(line.text, cell.character);
        x = std::max(x, cell.x + CellWidth(cell.columns, cell.style));
    }
}

TextLine LineComposer::Print(bool wrapped)
{
    TextLine line;
    line.wrapped = wrapped;
    line.alignment = alignment_;
    AddText(line);
    if (cells_.empty()) {
        line.x = margin_;
        line.alignment = Alignment::kLeft;
        paper_.Feed(kLineSpacing);
    } else {
        const int offset = Offset();
        line.x = offset + cells_.front().x;
        int tallest = 1;
        for (const Cell& cell : cells_) {
            tallest = std::max(tallest, cell.style.scaleY);
        }
        DotStrip strip(paper_.Width(), tallest * kCellHeight + kLineGap);
        for (const Cell& cell : cells_) {
            glyphs_.Draw(strip, offset + cell.x, tallest * kCellHeight, cell.character, std::max(1, cell.columns),
                         cell.style);
        }
        strip.PutOn(paper_);
    }
    Clear();
    return line;
}

int LineComposer::Clear()
{
    const auto characters = static_cast<int>(cells_.size());
    cells_.clear();
    x_ = 0;
    return characters;
}

void LineComposer::Reset()
{
    Clear();
    margin_ = 0;
}

}  // namespace marbex::virtual_printer
