#pragma once

// The two decoders of Windows. Both need COM on the calling thread.

#include <optional>
#include <string_view>

#include "platform/picture_decoders.h"

namespace marbex::platform {

// JPEG, GIF, icons and metafiles: OleLoadPicture. Drawn once, at the picture's own size.
std::optional<PixelBuffer> DecodeByOle(std::string_view file);

// PNG and whatever else the Windows Imaging Component knows.
std::optional<PixelBuffer> DecodeByImaging(std::string_view file);

}  // namespace marbex::platform
