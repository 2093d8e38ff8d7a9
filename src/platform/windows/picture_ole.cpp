// Pictures by OleLoadPicture, which keeps them as GDI objects.

// clang-format off
#include <windows.h>
#include <objbase.h>
#include <olectl.h>
// clang-format on

#include <algorithm>
#include <cstring>
#include <new>
#include <span>
#include <utility>

#include "platform/picture.h"
#include "platform/windows/bitmap_canvas.h"
#include "platform/windows/com_scope.h"
#include "platform/windows/picture_decoders.h"

namespace marbex::platform {

namespace {

constexpr int kDotsPerInch = 96;
constexpr int kHimetricPerInch = 2540;

struct DcDelete {
    void operator()(HDC dc) const { DeleteDC(dc); }
};
using UniqueDc = std::unique_ptr<std::remove_pointer_t<HDC>, DcDelete>;

// A stream of its own copy of the file.
ComPointer<IStream> MakeStream(std::string_view file)
{
    const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, file.size());
    void* const bytes = memory != nullptr ? GlobalLock(memory) : nullptr;
    if (bytes == nullptr) {
        if (memory != nullptr) GlobalFree(memory);
        throw std::bad_alloc();
    }
    std::memcpy(bytes, file.data(), file.size());
    GlobalUnlock(memory);
    IStream* stream = nullptr;
    if (FAILED(CreateStreamOnHGlobal(memory, TRUE, &stream))) {
        GlobalFree(memory);
        throw std::bad_alloc();
    }
    return ComPointer<IStream>(stream);
}

// Null for a file that the system does not read.
ComPointer<IPicture> Load(std::string_view file)
{
    const ComPointer<IStream> stream = MakeStream(file);
    void* loaded = nullptr;
    const HRESULT result = OleLoadPicture(stream.get(), static_cast<LONG>(file.size()), TRUE, IID_IPicture, &loaded);
    if (result == E_OUTOFMEMORY) throw std::bad_alloc();
    return ComPointer<IPicture>(SUCCEEDED(result) ? static_cast<IPicture*>(loaded) : nullptr);
}

struct PictureSize {
    LONG width = 0;
    LONG height = 0;
    LONG himetricWidth = 0;
    LONG himetricHeight = 0;
    bool hasPixels = false;  // of its own, unlike a drawing
};

std::optional<PictureSize> SizeOf(IPicture& picture)
{
    PictureSize size;
    SHORT type = PICTYPE_NONE;
    if (FAILED(picture.get_Width(&size.himetricWidth)) || FAILED(picture.get_Height(&size.himetricHeight)) ||
        FAILED(picture.get_Type(&type)))
        return std::nullopt;
    size.hasPixels = type == PICTYPE_BITMAP || type == PICTYPE_ICON;
    if (type != PICTYPE_BITMAP) {
        size.width = MulDiv(size.himetricWidth, kDotsPerInch, kHimetricPerInch);
        size.height = MulDiv(size.himetricHeight, kDotsPerInch, kHimetricPerInch);
        return size;
    }
    // The size in himetric would bring in the resolution of the screen and the rounding of two divisions.
    OLE_HANDLE handle = 0;
    BITMAP bitmap{};
    if (FAILED(picture.get_Handle(&handle)) ||
        GetObjectA(LongToHandle(static_cast<LONG>(handle)), sizeof bitmap, &bitmap) == 0)
        return std::nullopt;
    size.width = bitmap.bmWidth;
    size.height = bitmap.bmHeight;
    return size;
}

struct Band {
    uint32_t width;   // of the whole
    uint32_t height;  // of the whole
    uint32_t firstRow;
    uint32_t rows;
};

// Draws a band of the picture over white; false when the system cannot.
bool Render(IPicture& picture, const PictureSize& size, const Band& band, const BitmapCanvas& canvas)
{
    const UniqueDc dc(CreateCompatibleDC(nullptr));
    if (dc == nullptr) return false;
    const auto width = static_cast<LONG>(band.width);
    const auto height = static_cast<LONG>(band.height);
    const LONG top = -static_cast<LONG>(band.firstRow);
    const HGDIOBJ before = SelectObject(dc.get(), canvas.Bitmap());
    PatBlt(dc.get(), 0, 0, width, static_cast<LONG>(band.rows), WHITENESS);
    // A picture that is drawn larger or smaller than it is, as metafiles are, keeps its thin lines in this mode.
    SetStretchBltMode(dc.get(), HALFTONE);
    SetBrushOrgEx(dc.get(), 0, top, nullptr);
    // The source is measured from the bottom up.
    const HRESULT result = picture.Render(dc.get(), 0, top, width, height, 0, size.himetricHeight, size.himetricWidth,
                                          -size.himetricHeight, nullptr);
    GdiFlush();
    SelectObject(dc.get(), before);
    return SUCCEEDED(result);
}

// The highest byte of a pixel is whatever the drawing left there.
void CopyColors(const BitmapCanvas& canvas, std::size_t count, uint32_t* pixels)
{
    std::transform(canvas.Pixels(), canvas.Pixels() + count, pixels, [](uint32_t pixel) { return pixel & 0xFFFFFF; });
}

class SystemPicture final : public Picture {
public:
    SystemPicture(ComPointer<IPicture> loaded, const PictureSize& size) : loaded_(std::move(loaded)), size_(size) {}

    uint32_t Width() const override { return static_cast<uint32_t>(size_.width); }
    uint32_t Height() const override { return static_cast<uint32_t>(size_.height); }

    bool Draw(uint32_t width, uint32_t height, uint32_t firstRow, uint32_t rows,
              std::span<uint32_t> pixels) const override
    {
        const ComScope com;
        const BitmapCanvas canvas(width, rows);
        if (canvas.Pixels() == nullptr || !Render(*loaded_, size_, {width, height, firstRow, rows}, canvas))
            return false;
        CopyColors(canvas, std::size_t{width} * rows, pixels.data());
        return true;
    }

private:
    const ComPointer<IPicture> loaded_;
    const PictureSize size_;
};

}  // namespace

std::unique_ptr<Picture> MakePicture(ComPointer<IPicture> loaded)
{
    const auto size = SizeOf(*loaded);
    if (!size || size->width < 1 || size->height < 1) return nullptr;
    const auto width = static_cast<uint32_t>(size->width);
    const auto height = static_cast<uint32_t>(size->height);
    if (width > kMaxPictureSide || height > kMaxPictureSide || uint64_t{width} * height > kMaxPicturePixels)
        return nullptr;
    if (!size->hasPixels) return std::make_unique<SystemPicture>(std::move(loaded), *size);

    const BitmapCanvas canvas(width, height);
    if (canvas.Pixels() == nullptr) throw std::bad_alloc();
    if (!Render(*loaded, *size, {width, height, 0, height}, canvas))
        return std::make_unique<SystemPicture>(std::move(loaded), *size);
    // The system's copy goes before ours comes: each may have a quarter of a gigabyte.
    loaded.reset();
    std::optional<PixelBuffer> buffer = AllocatePixels(width, height);
    if (buffer) CopyColors(canvas, std::size_t{width} * height, buffer->pixels.get());
    return MakePicture(std::move(buffer));
}

std::unique_ptr<Picture> DecodeByOle(std::string_view file)
{
    ComPointer<IPicture> loaded = Load(file);
    return loaded ? MakePicture(std::move(loaded)) : nullptr;
}

}  // namespace marbex::platform
