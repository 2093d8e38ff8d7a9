#include "platform/picture.h"

#include <new>
#include <utility>

#include "platform/picture_decoders.h"
#include "platform/picture_scaling.h"

namespace marbex::platform {

namespace {

class DecodedPicture final : public Picture {
public:
    explicit DecodedPicture(PixelBuffer buffer) : buffer_(std::move(buffer)) {}

    uint32_t Width() const override { return buffer_.width; }
    uint32_t Height() const override { return buffer_.height; }

    bool Draw(uint32_t width, uint32_t height, uint32_t firstRow, uint32_t rows,
              std::span<uint32_t> pixels) const override
    {
        try {
            StretchRows({buffer_.pixels.get(), buffer_.width, buffer_.height}, width, height, firstRow, rows, pixels);
            return true;
        } catch (const std::bad_alloc&) {
            return false;
        }
    }

private:
    const PixelBuffer buffer_;
};

}  // namespace

std::optional<PixelBuffer> AllocatePixels(uint64_t width, uint64_t height)
{
    if (width < 1 || height < 1 || width > kMaxPictureSide || height > kMaxPictureSide) return std::nullopt;
    if (width * height > kMaxPicturePixels) return std::nullopt;
    PixelBuffer buffer;
    buffer.pixels = std::make_unique_for_overwrite<uint32_t[]>(static_cast<std::size_t>(width * height));
    buffer.width = static_cast<uint32_t>(width);
    buffer.height = static_cast<uint32_t>(height);
    return buffer;
}

std::unique_ptr<Picture> MakePicture(std::optional<PixelBuffer> buffer)
{
    return buffer ? std::make_unique<DecodedPicture>(std::move(*buffer)) : nullptr;
}

std::unique_ptr<Picture> DecodePicture(std::string_view file, PictureError& error)
{
    try {
        auto picture = file.starts_with("BM") ? MakePicture(DecodeBmp(file)) : DecodeByTheSystem(file);
        error = picture ? PictureError::kNone : PictureError::kNotAPicture;
        return picture;
    } catch (const std::bad_alloc&) {
        error = PictureError::kNoMemory;
        return nullptr;
    }
}

}  // namespace marbex::platform
