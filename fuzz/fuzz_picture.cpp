// Any bytes are either refused or a picture that can be drawn, larger and smaller.

#include <cstdint>
#include <cstdlib>
#include <vector>

#include "platform/picture.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    using namespace marbex::platform;
    PictureError error = PictureError::kNone;
    const auto picture = DecodePicture({reinterpret_cast<const char*>(data), size}, error);
    if ((picture == nullptr) != (error != PictureError::kNone)) std::abort();
    if (picture == nullptr) return 0;
    if (picture->Width() < 1 || picture->Height() < 1) std::abort();
    // A few bytes can be an honest picture of millions of pixels; drawing those only takes the fuzzer's time.
    if (uint64_t{picture->Width()} * picture->Height() > 1U << 20) return 0;
    for (const auto& [width, height] : {std::pair{1U, 1U}, {33U, 9U}, {9U, 33U}, {300U, 2U}}) {
        std::vector<uint32_t> pixels(std::size_t{width} * height, 0xFF000000);
        if (!picture->Draw(width, height, 0, height, pixels)) std::abort();
        for (const uint32_t pixel : pixels) {
            if (pixel > 0xFFFFFF) std::abort();
        }
    }
    return 0;
}
