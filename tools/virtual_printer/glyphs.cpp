#include "virtual_printer/glyphs.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H

#include <algorithm>
#include <cstdlib>
#include <map>
#include <tuple>
#include <vector>

namespace marbex::virtual_printer {
namespace {

constexpr int kBaseline = 5;    // dots from the bottom of the cell, at scale 1
constexpr int kPixelSize = 20;  // DejaVu Sans Mono is 12 dots wide at this size
constexpr int kWidePixelSize = 22;

// In the order in which they are asked for a character.
constexpr const char* kRegularFonts[] = {
    "/usr/share/fonts/truetype/dejavu/DejaVuSansMono.ttf",
    "/usr/share/fonts/truetype/freefont/FreeMono.ttf",
    "/usr/share/fonts/truetype/droid/DroidSansFallbackFull.ttf",
    "/usr/share/fonts/opentype/unifont/unifont.otf",
    "/usr/share/fonts/truetype/unifont/unifont.ttf",
    "/usr/share/fonts/truetype/wqy/wqy-zenhei.ttc",
    "/usr/share/fonts/truetype/freefont/FreeSerif.ttf",
};
constexpr const char* kBoldFont = "/usr/share/fonts/truetype/dejavu/DejaVuSansMono-Bold.ttf";

struct Bitmap {
    int left = 0;  // dots right of the cell's left edge
    int top = 0;   // dots above the baseline
    int width = 0;
    int rows = 0;
    std::vector<bool> dots;
};

using Key = std::tuple<char32_t, int, bool, bool, int, int>;

}  // namespace

class Glyphs::Faces {
public:
    Faces()
    {
        if (FT_Init_FreeType(&library_) != 0) {
            library_ = nullptr;
            return;
        }
        bold_ = Open(kBoldFont);
        for (const char* file : kRegularFonts) {
            if (FT_Face face = Open(file)) {
                regular_.push_back(face);
            }
        }
    }
    ~Faces()
    {
        if (library_ != nullptr) {
            FT_Done_FreeType(library_);  // with its faces
        }
    }
    Faces(const Faces&) = delete;
    Faces& operator=(const Faces&) = delete;

    const Bitmap& Get(char32_t character, int columns, const Style& style)
    {
        const Key key{character, columns, style.bold, style.italic, style.scaleX, style.scaleY};
        const auto found = cache_.find(key);
        if (found != cache_.end()) {
            return found->second;
        }
        if (cache_.size() > kMostCached) {
            cache_.clear();
        }
        return cache_.emplace(key, Render(character, columns, style)).first->second;
    }

private:
    static constexpr std::size_t kMostCached = 4096;

    FT_Face Open(const char* file)
    {
        FT_Face face = nullptr;
        return FT_New_Face(library_, file, 0, &face) == 0 ? face : nullptr;
    }

    FT_Face FaceFor(char32_t character, bool bold, bool& smear) const
    {
        smear = false;
        if (bold && bold_ != nullptr && FT_Get_Char_Index(bold_, character) != 0) {
            return bold_;
        }
        smear = bold;
        for (FT_Face face : regular_) {
            if (FT_Get_Char_Index(face, character) != 0) {
                return face;
            }
        }
        return nullptr;
    }

    Bitmap Render(char32_t character, int columns, const Style& style)
    {
        const int cellWidth = kCellWidth * columns * style.scaleX;
        bool smear = false;
        FT_Face face = FaceFor(character, style.bold, smear);
        if (face == nullptr) {
            return Box(cellWidth, kCellHeight * style.scaleY, style.scaleY);
        }
        const int size = columns > 1 ? kWidePixelSize : kPixelSize;
        FT_Set_Pixel_Sizes(face, static_cast<FT_UInt>(size * style.scaleX), static_cast<FT_UInt>(size * style.scaleY));
        if (FT_Load_Char(face, character, FT_LOAD_TARGET_MONO | FT_LOAD_NO_BITMAP) != 0) {
            return Box(cellWidth, kCellHeight * style.scaleY, style.scaleY);
        }
        FT_GlyphSlot slot = face->glyph;
        const auto advance = static_cast<int>((slot->advance.x + 32) >> 6);
        if (style.italic && slot->format == FT_GLYPH_FORMAT_OUTLINE) {
            FT_Matrix slant{0x10000, 0x3000, 0, 0x10000};
            FT_Outline_Transform(&slot->outline, &slant);
        }
        if (FT_Render_Glyph(slot, FT_RENDER_MODE_MONO) != 0) {
            return Box(cellWidth, kCellHeight * style.scaleY, style.scaleY);
        }
        return Copy(*slot, advance == 0 ? 0 : (cellWidth - advance) / 2, smear ? style.scaleX : 0);
    }

    static Bitmap Copy(const FT_GlyphSlotRec_& slot, int shift, int smear)
    {
        Bitmap bitmap;
        const FT_Bitmap& source = slot.bitmap;
        bitmap.left = slot.bitmap_left + shift;
        bitmap.top = slot.bitmap_top;
        bitmap.width = static_cast<int>(source.width) + smear;
        bitmap.rows = static_cast<int>(source.rows);
        bitmap.dots.resize(static_cast<std::size_t>(bitmap.width) * source.rows);
        for (unsigned row = 0; row < source.rows; ++row) {
            const unsigned char* line = source.buffer + static_cast<std::ptrdiff_t>(row) * source.pitch;
            for (unsigned column = 0; column < source.width; ++column) {
                if ((line[column / 8] & (0x80U >> (column % 8))) != 0) {
                    for (int extra = 0; extra <= smear; ++extra) {
                        bitmap.dots[row * static_cast<std::size_t>(bitmap.width) + column +
                                    static_cast<std::size_t>(extra)] = true;
                    }
                }
            }
        }
        return bitmap;
    }

    static Bitmap Box(int cellWidth, int cellHeight, int scaleY)
    {
        Bitmap box;
        box.left = 1;
        box.width = cellWidth - 2;
        box.rows = cellHeight - 6;
        box.top = cellHeight - kBaseline * scaleY - 3;
        box.dots.resize(static_cast<std::size_t>(box.width) * static_cast<std::size_t>(box.rows));
        for (int row = 0; row < box.rows; ++row) {
            for (int column = 0; column < box.width; ++column) {
                const bool edge = row == 0 || row == box.rows - 1 || column == 0 || column == box.width - 1;
                box.dots[static_cast<std::size_t>(row) * static_cast<std::size_t>(box.width) +
                         static_cast<std::size_t>(column)] = edge;
            }
        }
        return box;
    }

    FT_Library library_ = nullptr;
    FT_Face bold_ = nullptr;
    std::vector<FT_Face> regular_;
    std::map<Key, Bitmap> cache_;
};

Glyphs::Glyphs() = default;
Glyphs::~Glyphs() = default;

void Glyphs::Draw(DotStrip& strip, int x, int bottom, char32_t character, int columns, const Style& style)
{
    if (!faces_) {
        faces_ = std::make_unique<Faces>();
    }
    if (character != U' ') {
        const Bitmap& bitmap = faces_->Get(character, columns, style);
        const int left = x + bitmap.left;
        const int top = bottom - kBaseline * style.scaleY - bitmap.top;
        for (int row = 0; row < bitmap.rows; ++row) {
            for (int column = 0; column < bitmap.width; ++column) {
                if (bitmap.dots[static_cast<std::size_t>(row) * static_cast<std::size_t>(bitmap.width) +
                                static_cast<std::size_t>(column)]) {
                    strip.Set(left + column, top + row);
                }
            }
        }
    }
    if (style.underline) {
        strip.Fill(x, bottom - 2 * style.scaleY, kCellWidth * columns * style.scaleX, 2 * style.scaleY);
    }
}

}  // namespace marbex::virtual_printer
