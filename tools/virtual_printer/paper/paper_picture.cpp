// The paper as a picture: the printed dots between two margins, dashed where it was cut.

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <system_error>
#include <vector>

#include "virtual_printer/paper/paper.h"
#include "virtual_printer/paper/png_writer.h"

namespace marbex::virtual_printer {
namespace {

constexpr int kMargin = 24;  // dots of unprintable paper on each side
constexpr int kEnd = 24;     // dots of blank paper above the first line and below the last
constexpr int kCutGap = 28;  // dots of the strip that shows a cut
constexpr int kDash = 12;
constexpr uint32_t kDotsPerMetre = 8000;

// Palette indices, four pixels a byte.
constexpr unsigned kPaperColour = 0;
constexpr unsigned kInkColour = 1;
constexpr unsigned kCutColour = 2;
constexpr PngWriter::Colour kPalette[] = {{253, 252, 247}, {24, 24, 28}, {150, 150, 150}};

class Picture {
public:
    Picture(PngWriter::Sink sink, int dots, std::size_t rows)
        : width_(dots + 2 * kMargin),
          line_(static_cast<std::size_t>(width_ + 3) / 4),
          png_(std::move(sink), static_cast<uint32_t>(width_), static_cast<uint32_t>(rows), kPalette, kDotsPerMetre)
    {
    }

    void Blank(int rows)
    {
        Clear();
        for (int i = 0; i < rows; ++i) {
            Write();
        }
    }
    void CutLine(bool full)
    {
        Blank(kCutGap / 2 - 1);
        // A partial cut leaves a bridge of paper in the middle.
        const int bridge = full ? 0 : width_ / 8;
        for (int x = 0; x < width_; ++x) {
            if (x / kDash % 2 == 0 && (x < (width_ - bridge) / 2 || x >= (width_ + bridge) / 2)) {
                Put(x, kCutColour);
            }
        }
        Write();
        Write();
        Blank(kCutGap / 2 - 1);
    }
    void Row(const uint8_t* bits, int dots)
    {
        Clear();
        for (int x = 0; x < dots; ++x) {
            if ((bits[x / 8] & (0x80U >> (x % 8))) != 0) {
                Put(kMargin + x, kInkColour);
            }
        }
        Write();
    }
    void Finish() { png_.Finish(); }

private:
    void Clear() { line_.assign(line_.size(), static_cast<uint8_t>(kPaperColour)); }
    void Put(int x, unsigned colour)
    {
        uint8_t& byte = line_[static_cast<std::size_t>(x) / 4];
        byte = static_cast<uint8_t>(byte | (colour << (6 - x % 4 * 2)));
    }
    void Write() { png_.Row(line_); }

    int width_;
    std::vector<uint8_t> line_;
    PngWriter png_;
};

struct CloseFile {
    void operator()(FILE* file) const { std::fclose(file); }
};

// Written beside the file and renamed, so that whoever looks at the picture never finds half of one.
template <class Draw>
bool WritePicture(const std::string& file, int dots, std::size_t rows, const Draw& draw)
{
    const std::string unfinished = file + ".part";
    std::unique_ptr<FILE, CloseFile> out(std::fopen(unfinished.c_str(), "wb"));
    if (!out) {
        return false;
    }
    bool written = false;
    {
        Picture picture(
            [&out](std::span<const uint8_t> bytes) {
                // The file remembers a failure until it is asked.
                [[maybe_unused]] const auto count = std::fwrite(bytes.data(), 1, bytes.size(), out.get());
            },
            dots, rows);
        draw(picture);
        picture.Finish();
        written = std::fflush(out.get()) == 0 && std::ferror(out.get()) == 0;
    }
    out.reset();
    std::error_code failure;
    if (written) {
        std::filesystem::rename(unfinished, file, failure);
    }
    return written && !failure;
}

void DrawPage(Picture& picture, const Paper::Page& page, int width)
{
    const std::size_t stride = static_cast<std::size_t>(width + 7) / 8;
    for (std::size_t row = 0; row < page.rows; ++row) {
        picture.Row(page.bits.data() + row * stride, width);
    }
}

void DrawAlone(Picture& picture, const Paper::Page& page, int width)
{
    picture.Blank(kEnd);
    DrawPage(picture, page, width);
    picture.Blank(kEnd);
}

}  // namespace

bool Paper::Save(const std::string& file) const
{
    std::size_t rows = kEnd + kEnd;
    for (const Page& page : pages_) {
        rows += page.rows + (page.cut ? kCutGap : 0);
    }
    return WritePicture(file, width_, rows, [this](Picture& picture) {
        picture.Blank(kEnd);
        for (const Page& page : pages_) {
            DrawPage(picture, page, width_);
            if (page.cut) {
                picture.CutLine(page.fullCut);
            }
        }
        picture.Blank(kEnd);
    });
}

bool Paper::SavePage(std::size_t page, const std::string& file) const
{
    if (page >= pages_.size()) {
        return false;
    }
    return WritePicture(file, width_, pages_[page].rows + kEnd + kEnd,
                        [this, page](Picture& picture) { DrawAlone(picture, pages_[page], width_); });
}

std::string PagePicture(const Paper::Page& page, int width)
{
    std::string bytes;
    Picture picture([&bytes](std::span<const uint8_t> more) { bytes.append(more.begin(), more.end()); }, width,
                    page.rows + kEnd + kEnd);
    DrawAlone(picture, page, width);
    picture.Finish();
    return bytes;
}

}  // namespace marbex::virtual_printer
