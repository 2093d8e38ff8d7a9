#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace marbex::virtual_printer {

// The paper that has left the printer, as dots: rows of bits, leftmost dot in the top bit. Each cut begins a new page.
// Memory is bounded: of a very long roll the oldest pages, or rows, are forgotten.
class Paper {
public:
    static constexpr std::size_t kMaxRows = 400000;  // 50 m
    static constexpr std::size_t kMaxPages = 10000;

    explicit Paper(int width);

    int Width() const { return width_; }
    void Feed(int rows);
    // Appends rows of dots; a row shorter than the paper is white at its end.
    void Append(std::span<const uint8_t> row);
    void Cut(bool full);

    struct Page {
        std::vector<uint8_t> bits;
        std::size_t rows = 0;
        bool cut = false;
        bool fullCut = false;
    };
    // The pages still kept; the last one is the paper that has not been cut.
    const std::deque<Page>& Pages() const { return pages_; }
    std::size_t FirstPage() const { return forgottenPages_ + 1; }  // the number of the first page kept, from 1
    std::size_t Rows() const { return rows_; }
    uint64_t Moved() const { return moved_; }                  // rows since the beginning, forgotten ones too
    bool Dot(std::size_t page, int x, std::size_t row) const;  // page: index into Pages()

    // Write pictures of the paper (PNG). False when the file cannot be written.
    bool Save(const std::string& file) const;  // all pages, with their cut lines
    bool SavePage(std::size_t page, const std::string& file) const;

private:
    std::size_t Stride() const { return static_cast<std::size_t>(width_ + 7) / 8; }
    void Forget();

    int width_;
    std::deque<Page> pages_;
    std::size_t rows_ = 0;
    uint64_t moved_ = 0;
    std::size_t forgottenPages_ = 0;
};

// The picture of one page (PNG), as SavePage writes it. width: dots.
std::string PagePicture(const Paper::Page& page, int width);

}  // namespace marbex::virtual_printer
