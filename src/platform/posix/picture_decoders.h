#pragma once

// The decoders of the libraries.

#include <optional>
#include <string_view>

#include "platform/picture_decoders.h"

namespace marbex::platform {

std::optional<PixelBuffer> DecodeJpeg(std::string_view file);
std::optional<PixelBuffer> DecodeGif(std::string_view file);
std::optional<PixelBuffer> DecodePng(std::string_view file);

}  // namespace marbex::platform
