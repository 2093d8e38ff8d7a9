#pragma once

// A line that a person is typing, with a cursor and the lines typed before it; what a screen shows is not its concern.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace marbex::tools {

class LineEditor {
public:
    // history: oldest first.
    explicit LineEditor(std::vector<std::u16string> history = {});

    const std::u16string& Text() const { return text_; }
    std::size_t Cursor() const { return cursor_; }  // in units, before the one it stands on
    std::u16string_view BeforeCursor() const { return std::u16string_view(text_).substr(0, cursor_); }

    void Insert(std::u16string_view typed);
    void ReplaceBeforeCursor(std::size_t units, std::u16string_view with);
    void Clear();
    void EraseBefore();  // the character before the cursor
    void EraseAt();      // the character under it
    void EraseWordBefore();
    void EraseToEnd();

    void Left();
    void Right();
    void WordLeft();
    void WordRight();
    void ToStart() { cursor_ = 0; }
    void ToEnd() { cursor_ = text_.size(); }

    // Through the history; what was being typed comes back behind its newest line.
    void Earlier();
    void Later();

    // The line is complete: gives it and begins an empty one. It joins the history unless it is empty or repeats the
    // newest line there.
    std::u16string Take();
    const std::vector<std::u16string>& History() const { return history_; }

private:
    void Show(std::size_t place);
    std::size_t CharacterBefore(std::size_t at) const;
    std::size_t CharacterAfter(std::size_t at) const;
    std::size_t WordStart() const;

    std::u16string text_;
    std::size_t cursor_ = 0;
    std::vector<std::u16string> history_;
    std::size_t place_;      // in the history; its size: the line being typed
    std::u16string typing_;  // that line, while another is shown
};

}  // namespace marbex::tools
