// Pictures by OleLoadPicture, which keeps them as GDI objects.

// clang-format off
#include <windows.h>
#include <objbase.h>
#include <olectl.h>
// clang-format on

#include <algorithm>
#include <cstring>
#include <new>

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
};

std::optional<PictureSize> SizeOf(IPicture& picture)
{
    PictureSize size;
    SHORT type = PICTYPE_NONE;
    if (FAILED(picture.get_Width(&size.himetricWidth)) || FAILED(picture.get_Height(&size.himetricHeight)) ||
        FAILED(picture.get_Type(&type)))
        return std::nullopt;
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

bool Render(IPicture& picture, const PictureSize& size, const BitmapCanvas& canvas)
{
    const UniqueDc dc(CreateCompatibleDC(nullptr));
    if (dc == nullptr) throw std::bad_alloc();
    const HGDIOBJ before = SelectObject(dc.get(), canvas.Bitmap());
    PatBlt(dc.get(), 0, 0, size.width, size.height, WHITENESS);
    // A picture that is drawn larger or smaller than it is, as metafiles are, keeps its thin lines in this mode.
    SetStretchBltMode(dc.get(), HALFTONE);
    SetBrushOrgEx(dc.get(), 0, 0, nullptr);
    // The source is measured from the bottom up.
    const HRESULT result = picture.Render(dc.get(), 0, 0, size.width, size.height, 0, size.himetricHeight,
                                          size.himetricWidth, -size.himetricHeight, nullptr);
    GdiFlush();
    SelectObject(dc.get(), before);
    return SUCCEEDED(result);
}

}  // namespace

std::optional<PixelBuffer> DecodeByOle(std::string_view file)
{
    ComPointer<IPicture> picture = Load(file);
    const auto size = picture ? SizeOf(*picture) : std::nullopt;
    if (!size || size->width < 1 || size->height < 1) return std::nullopt;
    const auto width = static_cast<uint32_t>(size->width);
    const auto height = static_cast<uint32_t>(size->height);
    if (width > kMaxPictureSide || height > kMaxPictureSide || uint64_t{width} * height > kMaxPicturePixels)
        return std::nullopt;
    const BitmapCanvas canvas(width, height);
    if (canvas.Pixels() == nullptr) throw std::bad_alloc();
    if (!Render(*picture, *size, canvas)) return std::nullopt;
    // The system's copy goes before ours comes: each may have a quarter of a gigabyte.
    picture.reset();
    std::optional<PixelBuffer> buffer = AllocatePixels(width, height);
    if (!buffer) return std::nullopt;
    const std::size_t count = std::size_t{width} * height;
    // The highest byte of a pixel is whatever the drawing left there.
    std::transform(canvas.Pixels(), canvas.Pixels() + count, buffer->pixels.get(),
                   [](uint32_t pixel) { return pixel & 0xFFFFFF; });
    return buffer;
}

}  // namespace marbex::platform
