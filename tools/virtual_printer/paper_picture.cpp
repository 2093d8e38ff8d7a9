// The paper as a picture: the printed dots between two margins, dashed where it was cut.

#include <png.h>

#include <cstdio>
#include <memory>
#include <vector>

#include "virtual_printer/paper.h"

namespace marbex::virtual_printer {
namespace {

constexpr int kMargin = 24;  // dots of unprintable paper on each side
constexpr int kEnd = 24;     // dots of blank paper above the first line and below the last
constexpr int kCutGap = 28;  // dots of the strip that shows a cut
constexpr int kDash = 12;
constexpr double kDotsPerMetre = 8000;

// Palette indices, four pixels a byte.
constexpr unsigned kPaperColour = 0;
constexpr unsigned kInkColour = 1;
constexpr unsigned kCutColour = 2;

class Picture {
public:
    Picture(FILE* file, int dots, std::size_t rows)
        : width_(dots + 2 * kMargin), line_(static_cast<std::size_t>(width_ + 3) / 4)
    {
        png_ = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
        info_ = png_create_info_struct(png_);
        png_set_write_fn(png_, file, WriteBytes, FlushNothing);
        png_set_IHDR(png_, info_, static_cast<png_uint_32>(width_), static_cast<png_uint_32>(rows), 2,
                     PNG_COLOR_TYPE_PALETTE, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        static const png_color palette[] = {{253, 252, 247}, {24, 24, 28}, {150, 150, 150}};
        png_set_PLTE(png_, info_, palette, 3);
        png_set_pHYs(png_, info_, static_cast<png_uint_32>(kDotsPerMetre), static_cast<png_uint_32>(kDotsPerMetre),
                     PNG_RESOLUTION_METER);
        png_set_compression_level(png_, 3);
        png_write_info(png_, info_);
    }
    ~Picture() { png_destroy_write_struct(&png_, &info_); }
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;

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
    void Finish() { png_write_end(png_, info_); }

private:
    // Never reports a failure to libpng, whose way of dealing with one is longjmp; the file remembers it.
    static void WriteBytes(png_structp png, png_bytep bytes, std::size_t length)
    {
        [[maybe_unused]] const auto written = std::fwrite(bytes, 1, length, static_cast<FILE*>(png_get_io_ptr(png)));
    }
    static void FlushNothing(png_structp) {}
    void Clear() { line_.assign(line_.size(), static_cast<uint8_t>(kPaperColour)); }
    void Put(int x, unsigned colour)
    {
        uint8_t& byte = line_[static_cast<std::size_t>(x) / 4];
        byte = static_cast<uint8_t>(byte | (colour << (6 - x % 4 * 2)));
    }
    void Write() { png_write_row(png_, line_.data()); }

    int width_;
    std::vector<uint8_t> line_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
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
        Picture picture(out.get(), dots, rows);
        draw(picture);
        picture.Finish();
        written = std::fflush(out.get()) == 0 && std::ferror(out.get()) == 0;
    }
    out.reset();
    return written && std::rename(unfinished.c_str(), file.c_str()) == 0;
}

void DrawPage(Picture& picture, const Paper::Page& page, int width)
{
    const std::size_t stride = static_cast<std::size_t>(width + 7) / 8;
    for (std::size_t row = 0; row < page.rows; ++row) {
        picture.Row(page.bits.data() + row * stride, width);
    }
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
    return WritePicture(file, width_, pages_[page].rows + kEnd + kEnd, [this, page](Picture& picture) {
        picture.Blank(kEnd);
        DrawPage(picture, pages_[page], width_);
        picture.Blank(kEnd);
    });
}

}  // namespace marbex::virtual_printer
