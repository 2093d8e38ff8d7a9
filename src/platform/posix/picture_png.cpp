// PNG by libpng: every colour type and depth, interlaced or not, transparency over white. Sample values are taken as
// they stand: no gamma or colour profile changes them.

#include <png.h>

#include <cstring>
#include <vector>

#include "platform/picture.h"
#include "platform/posix/picture_decoders.h"

namespace marbex::platform {

namespace {

constexpr png_alloc_size_t kChunkMemory = 8U << 20;

void ReadBytes(png_structp png, png_bytep target, std::size_t count)
{
    std::string_view& rest = *static_cast<std::string_view*>(png_get_io_ptr(png));
    if (rest.size() < count) png_error(png, "cut off");
    std::memcpy(target, rest.data(), count);
    rest.remove_prefix(count);
}

void Fail(png_structp png, png_const_charp)
{
    png_longjmp(png, 1);
}
void IgnoreWarning(png_structp, png_const_charp) {}

class PngReader {
public:
    explicit PngReader(std::string_view file) : rest_(file)
    {
        png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, Fail, IgnoreWarning);
        if (png_ != nullptr) info_ = png_create_info_struct(png_);
    }
    ~PngReader() { png_destroy_read_struct(&png_, &info_, nullptr); }
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;

    // libpng leaves a function by longjmp when a file is bad. The two functions that call it hold nothing that would
    // have to be destroyed.
    bool ReadHeader(uint32_t& width, uint32_t& height)
    {
        if (info_ == nullptr || setjmp(png_jmpbuf(png_)) != 0) return false;
        png_set_read_fn(png_, &rest_, ReadBytes);
        png_set_user_limits(png_, kMaxPictureSide, kMaxPictureSide);
        png_set_chunk_malloc_max(png_, kChunkMemory);
        // Text, profiles and the like are not wanted and could be made to cost much.
        png_set_keep_unknown_chunks(png_, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
        png_read_info(png_, info_);
        width = png_get_image_width(png_, info_);
        height = png_get_image_height(png_, info_);
        png_set_expand(png_);
        png_set_scale_16(png_);
        png_set_gray_to_rgb(png_);
        png_set_add_alpha(png_, 0xFF, PNG_FILLER_AFTER);
        passes_ = png_set_interlace_handling(png_);
        png_read_update_info(png_, info_);
        return png_get_rowbytes(png_, info_) == std::size_t{width} * 4;
    }

    // Rows of red, green, blue, alpha. An interlaced picture is put together in the rows themselves.
    bool ReadRows(uint8_t* rows, uint32_t height, std::size_t rowSize)
    {
        if (setjmp(png_jmpbuf(png_)) != 0) return false;
        for (int pass = 0; pass < passes_; ++pass) {
            for (uint32_t y = 0; y < height; ++y)
                png_read_row(png_, rows + y * rowSize, nullptr);
        }
        return true;
    }

private:
    std::string_view rest_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
    int passes_ = 1;
};

}  // namespace

std::optional<PixelBuffer> DecodePng(std::string_view file)
{
    PngReader reader(file);
    uint32_t width = 0;
    uint32_t height = 0;
    if (!reader.ReadHeader(width, height)) return std::nullopt;
    std::optional<PixelBuffer> buffer = AllocatePixels(width, height);
    if (!buffer) return std::nullopt;
    // A row is as long as the same row of pixels, which are made in its place.
    auto* const bytes = reinterpret_cast<uint8_t*>(buffer->pixels.get());
    if (!reader.ReadRows(bytes, height, std::size_t{width} * 4)) return std::nullopt;
    const std::size_t count = std::size_t{width} * height;
    for (std::size_t i = 0; i < count; ++i) {
        const uint8_t* const pixel = bytes + 4 * i;
        buffer->pixels[i] = OverWhite(pixel[0], pixel[1], pixel[2], pixel[3]);
    }
    return buffer;
}

}  // namespace marbex::platform
