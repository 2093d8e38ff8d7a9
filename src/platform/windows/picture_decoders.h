#pragma once

// The two decoders of Windows. Both need COM on the calling thread.

// clang-format off
#include <windows.h>
#include <ocidl.h>
// clang-format on

#include <memory>
#include <optional>
#include <string_view>

#include "platform/picture_decoders.h"
#include "platform/windows/com_scope.h"

namespace marbex::platform {

// JPEG, GIF, icons and metafiles: OleLoadPicture. Null for a file that it does not read.
std::unique_ptr<Picture> DecodeByOle(std::string_view file);

// What OleLoadPicture loaded. Pixels are taken from it once, at its own size, and stretched by our own code; a
// metafile, and what could not be drawn at its own size, is drawn by the system at the size that is wanted, each time
// anew. Null without a size, or with one outside the limits of picture.h.
std::unique_ptr<Picture> MakePicture(ComPointer<IPicture> loaded);

// PNG and whatever else the Windows Imaging Component knows.
std::optional<PixelBuffer> DecodeByImaging(std::string_view file);

}  // namespace marbex::platform
