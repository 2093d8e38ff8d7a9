#include "platform/windows/com_scope.h"
#include "platform/windows/picture_decoders.h"
#include "platform/windows/picture_outline.h"

namespace marbex::platform {

std::unique_ptr<Picture> DecodeByTheSystem(std::string_view file)
{
    const auto outline = ReadPictureOutline(file);
    // The functions of Windows count a file's bytes in 31 bits.
    if (!outline || file.empty() || file.size() > 0x7FFFFFFF) return nullptr;
    if (outline->width > kMaxPictureSide || outline->height > kMaxPictureSide ||
        outline->width * outline->height > kMaxPicturePixels)
        return nullptr;
    const ComScope com;
    if (outline->kind != PictureKind::kPng) {
        std::unique_ptr<Picture> picture = DecodeByOle(file);
        if (picture || outline->kind == PictureKind::kOther) return picture;
    }
    return MakePicture(DecodeByImaging(file));
}

}  // namespace marbex::platform
