#include "marbex_opos/windows/line_editor.h"

namespace marbex::tools {

namespace {

constexpr std::size_t kHistoryLength = 1000;

bool IsHighSurrogate(char16_t unit)
{
    return unit >= 0xD800 && unit <= 0xDBFF;
}
bool IsLowSurrogate(char16_t unit)
{
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

}  // namespace

LineEditor::LineEditor(std::vector<std::u16string> history) : history_(std::move(history)), place_(history_.size()) {}

void LineEditor::Insert(std::u16string_view typed)
{
    text_.insert(cursor_, typed);
    cursor_ += typed.size();
}

void LineEditor::ReplaceBeforeCursor(std::size_t units, std::u16string_view with)
{
    text_.erase(cursor_ - units, units);
    cursor_ -= units;
    Insert(with);
}

void LineEditor::Clear()
{
    text_.clear();
    cursor_ = 0;
}

void LineEditor::EraseBefore()
{
    const std::size_t end = cursor_;
    Left();
    text_.erase(cursor_, end - cursor_);
}

void LineEditor::EraseAt()
{
    text_.erase(cursor_, CharacterAfter(cursor_) - cursor_);
}

void LineEditor::EraseWordBefore()
{
    const std::size_t end = cursor_;
    cursor_ = WordStart();
    text_.erase(cursor_, end - cursor_);
}

void LineEditor::EraseToEnd()
{
    text_.erase(cursor_);
}

void LineEditor::Left()
{
    cursor_ = CharacterBefore(cursor_);
}

void LineEditor::Right()
{
    cursor_ = CharacterAfter(cursor_);
}

void LineEditor::WordLeft()
{
    cursor_ = WordStart();
}

void LineEditor::WordRight()
{
    while (cursor_ < text_.size() && text_[cursor_] != u' ')
        ++cursor_;
    while (cursor_ < text_.size() && text_[cursor_] == u' ')
        ++cursor_;
}

void LineEditor::Earlier()
{
    if (place_ > 0) Show(place_ - 1);
}

void LineEditor::Later()
{
    if (place_ < history_.size()) Show(place_ + 1);
}

void LineEditor::Show(std::size_t place)
{
    if (place_ == history_.size()) typing_ = text_;
    place_ = place;
    text_ = place == history_.size() ? typing_ : history_[place];
    ToEnd();
}

std::u16string LineEditor::Take()
{
    std::u16string line;
    line.swap(text_);
    cursor_ = 0;
    const bool repeats = !history_.empty() && history_.back() == line;
    if (!line.empty() && !repeats) history_.push_back(line);
    if (history_.size() > kHistoryLength) history_.erase(history_.begin());
    place_ = history_.size();
    return line;
}

// A pair of surrogates is one character.
std::size_t LineEditor::CharacterBefore(std::size_t at) const
{
    if (at == 0) return 0;
    const bool isPair = at > 1 && IsLowSurrogate(text_[at - 1]) && IsHighSurrogate(text_[at - 2]);
    return at - (isPair ? 2 : 1);
}

std::size_t LineEditor::CharacterAfter(std::size_t at) const
{
    if (at == text_.size()) return at;
    const bool isPair = at + 1 < text_.size() && IsHighSurrogate(text_[at]) && IsLowSurrogate(text_[at + 1]);
    return at + (isPair ? 2 : 1);
}

std::size_t LineEditor::WordStart() const
{
    std::size_t start = cursor_;
    while (start > 0 && text_[start - 1] == u' ')
        --start;
    while (start > 0 && text_[start - 1] != u' ')
        --start;
    return start;
}

}  // namespace marbex::tools
