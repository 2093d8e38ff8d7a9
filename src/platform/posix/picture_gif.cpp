// GIF by giflib: the first frame on its screen, transparency over white.

#include <gif_lib.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "platform/picture.h"
#include "platform/posix/picture_decoders.h"

namespace marbex::platform {

namespace {

int ReadBytes(GifFileType* gif, GifByteType* target, int count)
{
    std::string_view& rest = *static_cast<std::string_view*>(gif->UserData);
    const std::size_t taken = std::min(rest.size(), static_cast<std::size_t>(count));
    std::memcpy(target, rest.data(), taken);
    rest.remove_prefix(taken);
    return static_cast<int>(taken);
}

struct CloseGif {
    void operator()(GifFileType* gif) const { DGifCloseFile(gif, nullptr); }
};
using GifHandle = std::unique_ptr<GifFileType, CloseGif>;

// Goes to the first frame; remembers the transparent colour told before it. False when there is none.
bool FindFrame(GifFileType& gif, int& transparent)
{
    for (;;) {
        GifRecordType record = UNDEFINED_RECORD_TYPE;
        if (DGifGetRecordType(&gif, &record) != GIF_OK) return false;
        if (record == IMAGE_DESC_RECORD_TYPE) return DGifGetImageDesc(&gif) == GIF_OK;
        if (record != EXTENSION_RECORD_TYPE) return false;
        int code = 0;
        GifByteType* block = nullptr;
        if (DGifGetExtension(&gif, &code, &block) != GIF_OK) return false;
        if (block != nullptr && code == GRAPHICS_EXT_FUNC_CODE) {
            GraphicsControlBlock control;
            if (DGifExtensionToGCB(block[0], block + 1, &control) == GIF_OK) transparent = control.TransparentColor;
        }
        while (block != nullptr) {
            if (DGifGetExtensionNext(&gif, &block) != GIF_OK) return false;
        }
    }
}

class FramePainter {
public:
    FramePainter(GifFileType& gif, int transparent, PixelBuffer& buffer)
        : gif_(gif), frame_(gif.Image), buffer_(buffer), line_(static_cast<std::size_t>(gif.Image.Width))
    {
        const ColorMapObject* const colors = frame_.ColorMap != nullptr ? frame_.ColorMap : gif.SColorMap;
        if (colors != nullptr) {
            for (int i = 0; i < colors->ColorCount && i < 256; ++i) {
                const GifColorType& color = colors->Colors[i];
                palette_[static_cast<std::size_t>(i)] = PixelOf(color.Red, color.Green, color.Blue);
            }
        }
        hasColors_ = colors != nullptr;
        if (transparent >= 0 && transparent < 256) palette_[static_cast<std::size_t>(transparent)] = kWhitePixel;
    }

    bool Paint()
    {
        if (!hasColors_) return false;
        if (!frame_.Interlace) return PaintRows(0, 1);
        return PaintRows(0, 8) && PaintRows(4, 8) && PaintRows(2, 4) && PaintRows(1, 2);
    }

private:
    bool PaintRows(int first, int step)
    {
        for (int y = first; y < frame_.Height; y += step) {
            if (DGifGetLine(&gif_, line_.data(), frame_.Width) != GIF_OK) return false;
            const int64_t row = int64_t{frame_.Top} + y;
            if (row >= buffer_.height) continue;
            uint32_t* const out = buffer_.pixels.get() + static_cast<std::size_t>(row) * buffer_.width;
            for (int x = 0; x < frame_.Width; ++x) {
                const int64_t column = int64_t{frame_.Left} + x;
                if (column >= buffer_.width) break;
                out[column] = palette_[line_[static_cast<std::size_t>(x)]];
            }
        }
        return true;
    }

    GifFileType& gif_;
    const GifImageDesc& frame_;
    PixelBuffer& buffer_;
    std::array<uint32_t, 256> palette_{};
    bool hasColors_ = false;
    std::vector<GifPixelType> line_;
};

}  // namespace

std::optional<PixelBuffer> DecodeGif(std::string_view file)
{
    const GifHandle gif(DGifOpen(&file, ReadBytes, nullptr));
    int transparent = NO_TRANSPARENT_COLOR;
    if (!gif || !FindFrame(*gif, transparent)) return std::nullopt;
    const GifImageDesc& frame = gif->Image;
    if (frame.Width < 1 || frame.Height < 1 || frame.Left < 0 || frame.Top < 0) return std::nullopt;
    if (uint64_t(frame.Width) * uint64_t(frame.Height) > kMaxPicturePixels) return std::nullopt;

    // A screen of no size is as large as the frame.
    const int width = gif->SWidth > 0 ? gif->SWidth : frame.Left + frame.Width;
    const int height = gif->SHeight > 0 ? gif->SHeight : frame.Top + frame.Height;
    std::optional<PixelBuffer> buffer = AllocatePixels(static_cast<uint64_t>(width), static_cast<uint64_t>(height));
    if (!buffer) return std::nullopt;
    std::fill_n(buffer->pixels.get(), std::size_t{buffer->width} * buffer->height, kWhitePixel);
    if (!FramePainter(*gif, transparent, *buffer).Paint()) return std::nullopt;
    return buffer;
}

}  // namespace marbex::platform
