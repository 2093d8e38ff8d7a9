#pragma once

// Picture files: decoding, and drawing at a wanted size. Any thread; a Picture is not changed by drawing.

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

namespace marbex::platform {

// A decoded picture.
class Picture {
public:
    virtual ~Picture() = default;

    // Size in pixels; a resolution stored in the file is ignored. At least 1.
    virtual uint32_t Width() const = 0;
    virtual uint32_t Height() const = 0;

    // Draws rows firstRow to firstRow + rows - 1 of the picture stretched to width x height (at least 1) over white
    // into pixels, 0x00RRGGBB, row by row from the top. pixels holds rows * width of them. Where the picture shrinks a
    // pixel is the average of what it covers, where it grows the nearest one; a metafile is drawn anew at that size.
    // False when it cannot be drawn.
    virtual bool Draw(uint32_t width, uint32_t height, uint32_t firstRow, uint32_t rows,
                      std::span<uint32_t> pixels) const = 0;
};

enum class PictureError { kNone, kNotAPicture, kNoMemory };

// BMP, JPEG, GIF (its first frame) and PNG; on Windows also the icons and metafiles that it reads itself, metafiles in
// their size at 96 dpi. Transparent places are white. Null for a file that is none of them, that is damaged or cut off,
// that has no pixels, or more than kMaxPicturePixels (which is kNotAPicture too). Hostile files cost no more time and
// memory than the largest honest ones.
std::unique_ptr<Picture> DecodePicture(std::string_view file, PictureError& error);

inline constexpr uint64_t kMaxPicturePixels = 64U << 20;
inline constexpr uint32_t kMaxPictureSide = 1U << 24;

}  // namespace marbex::platform
