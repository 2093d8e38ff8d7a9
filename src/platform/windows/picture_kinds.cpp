#include "platform/picture.h"
#include "platform/windows/com_scope.h"
#include "platform/windows/picture_decoders.h"
#include "platform/windows/picture_outline.h"

namespace marbex::platform {

std::optional<PixelBuffer> DecodeByTheSystem(std::string_view file)
{
    const auto outline = ReadPictureOutline(file);
    // The functions of Windows count a file's bytes in 31 bits.
    if (!outline || file.empty() || file.size() > 0x7FFFFFFF) return std::nullopt;
    if (outline->width > kMaxPictureSide || outline->height > kMaxPictureSide ||
        outline->width * outline->height > kMaxPicturePixels)
        return std::nullopt;
    const ComScope com;
    if (outline->kind != PictureKind::kPng) {
        std::optional<PixelBuffer> buffer = DecodeByOle(file);
        if (buffer || outline->kind == PictureKind::kOther) return buffer;
    }
    return DecodeByImaging(file);
}

}  // namespace marbex::platform
