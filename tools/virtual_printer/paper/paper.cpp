#include "virtual_printer/paper/paper.h"

#include <algorithm>

namespace marbex::virtual_printer {

Paper::Paper(int width) : width_(width), pages_(1) {}

void Paper::Feed(int rows)
{
    Page& page = pages_.back();
    page.bits.resize(page.bits.size() + Stride() * static_cast<std::size_t>(rows));
    page.rows += static_cast<std::size_t>(rows);
    rows_ += static_cast<std::size_t>(rows);
    moved_ += static_cast<uint64_t>(rows);
    Forget();
}

void Paper::Append(std::span<const uint8_t> row)
{
    Page& page = pages_.back();
    const std::size_t used = std::min(row.size(), Stride());
    page.bits.insert(page.bits.end(), row.begin(), row.begin() + static_cast<std::ptrdiff_t>(used));
    page.bits.resize(page.bits.size() + Stride() - used);
    if (width_ % 8 != 0) {
        page.bits.back() = static_cast<uint8_t>(page.bits.back() & (0xFF00U >> (width_ % 8)));
    }
    ++page.rows;
    ++rows_;
    ++moved_;
    Forget();
}

void Paper::Cut(bool full)
{
    pages_.back().cut = true;
    pages_.back().fullCut = full;
    pages_.back().bits.shrink_to_fit();
    pages_.emplace_back();
    Forget();
}

bool Paper::Dot(std::size_t page, int x, std::size_t row) const
{
    if (page >= pages_.size() || row >= pages_[page].rows || x < 0 || x >= width_) {
        return false;
    }
    const uint8_t byte = pages_[page].bits[row * Stride() + static_cast<std::size_t>(x) / 8];
    return (byte & (0x80U >> (x % 8))) != 0;
}

void Paper::Forget()
{
    while ((rows_ > kMaxRows || pages_.size() > kMaxPages) && pages_.size() > 1) {
        rows_ -= pages_.front().rows;
        pages_.pop_front();
        ++forgottenPages_;
    }
    if (rows_ > kMaxRows) {
        // One page longer than all the paper kept. A quarter at a time, so that this is rare.
        Page& page = pages_.front();
        const std::size_t gone = kMaxRows / 4;
        page.bits.erase(page.bits.begin(), page.bits.begin() + static_cast<std::ptrdiff_t>(gone * Stride()));
        page.rows -= gone;
        rows_ -= gone;
    }
}

}  // namespace marbex::virtual_printer
