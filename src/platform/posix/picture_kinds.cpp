#include "platform/posix/picture_decoders.h"

namespace marbex::platform {

std::optional<PixelBuffer> DecodeByTheSystem(std::string_view file)
{
    if (file.starts_with("\xFF\xD8\xFF")) return DecodeJpeg(file);
    if (file.starts_with("GIF8")) return DecodeGif(file);
    if (file.starts_with("\x89PNG\r\n\x1A\n")) return DecodePng(file);
    return std::nullopt;
}

}  // namespace marbex::platform
