#pragma once

// What a picture file says of itself, before the system's decoders are let near it. They take memory for whatever size
// a file claims, and give what there is of a file that is cut off.

#include <cstdint>
#include <optional>
#include <string_view>

namespace marbex::platform {

enum class PictureKind {
    kJpeg,
    kGif,
    kPng,
    kOther,  // nothing is known of it, its size included
};

struct PictureOutline {
    PictureKind kind = PictureKind::kOther;
    // Of everything that has to be decoded: the larger of screen and frame of a GIF.
    uint64_t width = 0;
    uint64_t height = 0;
};

// None for a file that begins like one of the kinds but is cut off, claims no pixels, or contradicts itself.
std::optional<PictureOutline> ReadPictureOutline(std::string_view file);

}  // namespace marbex::platform
