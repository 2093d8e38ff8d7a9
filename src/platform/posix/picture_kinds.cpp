#include "platform/posix/picture_decoders.h"

namespace marbex::platform {

std::unique_ptr<Picture> DecodeByTheSystem(std::string_view file)
{
    if (file.starts_with("\xFF\xD8\xFF")) return MakePicture(DecodeJpeg(file));
    if (file.starts_with("GIF8")) return MakePicture(DecodeGif(file));
    if (file.starts_with("\x89PNG\r\n\x1A\n")) return MakePicture(DecodePng(file));
    return nullptr;
}

}  // namespace marbex::platform
