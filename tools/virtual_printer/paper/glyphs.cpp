#include "virtual_printer/paper/glyphs.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H

#include <algorithm>
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
    "/usr/share/fonts/truetype/nanum/NanumGothic.ttf",
    "/usr/share/fonts/truetype/freefont/FreeSerif.ttf",
};
constexpr const char* kBoldFont = "/usr/share/fonts/truetype/dejavu/DejaVuSansMono-Bold.ttf";

// The black stretches of a character, from the left end of its baseline; up is positive.
struct Stretch {
    int x;
    int up;
    int length;
};
using Shape = std::vector<Stretch>;

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
    }
    ~Faces()
    {
        if (library_ != nullptr) {
            FT_Done_FreeType(library_);  // with its faces
        }
    }
    Faces(const Faces&) = delete;
    Faces& operator=(const Faces&) = delete;

    const Shape& Get(char32_t character, int columns, const Style& style)
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

    // A font, opened when the first character is wanted of it; null when it is not installed.
    FT_Face Open(const char* file)
    {
        const auto [entry, isNew] = faces_.emplace(file, nullptr);
        if (isNew && (library_ == nullptr || FT_New_Face(library_, file, 0, &entry->second) != 0)) {
            entry->second = nullptr;
        }
        return entry->second;
    }

    FT_Face FaceFor(char32_t character, bool bold, bool& smear)
    {
        const auto has = [this, character](const char* file) {
            FT_Face face = Open(file);
            return face != nullptr && FT_Get_Char_Index(face, character) != 0 ? face : nullptr;
        };
        smear = false;
        if (FT_Face face = bold ? has(kBoldFont) : nullptr) {
            return face;
        }
        smear = bold;
        for (const char* file : kRegularFonts) {
            if (FT_Face face = has(file)) {
                return face;
            }
        }
        return nullptr;
    }

    Shape Render(char32_t character, int columns, const Style& style)
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

    // smear: dots by which a stretch grows to the right, for a bold character of a font that has none.
    static Shape Copy(const FT_GlyphSlotRec_& slot, int shift, int smear)
    {
        Shape shape;
        const FT_Bitmap& source = slot.bitmap;
        for (int row = 0; row < static_cast<int>(source.rows); ++row) {
            const unsigned char* line = source.buffer + static_cast<std::ptrdiff_t>(row) * source.pitch;
            const auto black = [line](int x) { return (line[x / 8] & (0x80U >> (x % 8))) != 0; };
            const int width = static_cast<int>(source.width);
            for (int x = 0; x < width;) {
                const int start = x;
                while (x < width && black(x)) {
                    ++x;
                }
                if (x > start) {
                    shape.push_back({slot.bitmap_left + shift + start, slot.bitmap_top - row, x - start + smear});
                }
                ++x;
            }
        }
        return shape;
    }

    static Shape Box(int cellWidth, int cellHeight, int scaleY)
    {
        const int top = cellHeight - kBaseline * scaleY - 3;
        const int bottom = top - cellHeight + 7;
        Shape box{{1, top, cellWidth - 2}, {1, bottom, cellWidth - 2}};
        for (int up = bottom + 1; up < top; ++up) {
            box.push_back({1, up, 1});
            box.push_back({cellWidth - 2, up, 1});
        }
        return box;
    }

    FT_Library library_ = nullptr;
    std::map<const char*, FT_Face> faces_;
    std::map<Key, Shape> cache_;
};

Glyphs::Glyphs() = default;
Glyphs::~Glyphs() = default;

void Glyphs::Draw(DotStrip& strip, int x, int bottom, char32_t character, int columns, const Style& style)
{
    if (!faces_) {
        faces_ = std::make_unique<Faces>();
    }
    if (character != U' ') {
        const int baseline = bottom - kBaseline * style.scaleY;
        for (const Stretch& stretch : faces_->Get(character, columns, style)) {
            strip.Fill(x + stretch.x, baseline - stretch.up, stretch.length, 1);
        }
    }
    if (style.underline) {
        strip.Fill(x, bottom - 2 * style.scaleY, kCellWidth * columns * style.scaleX, 2 * style.scaleY);
    }
}

}  // namespace marbex::virtual_printer
