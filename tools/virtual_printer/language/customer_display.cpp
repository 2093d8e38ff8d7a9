#include "virtual_printer/language/customer_display.h"

#include "virtual_printer/language/character_tables.h"

namespace marbex::virtual_printer {

CustomerDisplay::CustomerDisplay(int rows, std::string_view charset)
    : cells_(static_cast<std::size_t>(rows), std::vector<char32_t>(kColumns, U' ')), charset_(charset)
{
}

void CustomerDisplay::Clear()
{
    for (auto& row : cells_) {
        row.assign(kColumns, U' ');
    }
    row_ = 0;
    column_ = 0;
    changed_ = true;
}

bool CustomerDisplay::MoveTo(int row, int column)
{
    if (row >= static_cast<int>(cells_.size()) || column >= kColumns) {
        return false;
    }
    row_ = row;
    column_ = column;
    return true;
}

char32_t CustomerDisplay::Put(uint8_t byte)
{
    const char32_t character = SingleByteTable(charset_)[byte];
    cells_[static_cast<std::size_t>(row_)][static_cast<std::size_t>(column_)] = character;
    changed_ = true;
    if (++column_ == kColumns) {
        column_ = 0;
        row_ = (row_ + 1) % static_cast<int>(cells_.size());
    }
    return character;
}

DisplayContent CustomerDisplay::Tell()
{
    changed_ = false;
    DisplayContent content;
    for (const auto& row : cells_) {
        std::string& text = content.rows.emplace_back();
        for (const char32_t character : row) {
            AppendUtf8(text, character);
        }
    }
    return content;
}

}  // namespace marbex::virtual_printer
