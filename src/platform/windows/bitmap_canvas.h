#pragma once

// A bitmap in memory whose pixels can be drawn on by GDI and read by us.

#include <windows.h>

#include <cstdint>
#include <memory>
#include <type_traits>

namespace marbex::platform {

struct GdiDelete {
    void operator()(HGDIOBJ object) const { DeleteObject(object); }
};

class BitmapCanvas {
public:
    // 32 bits a pixel, 0x??RRGGBB, row by row from the top. Without pixels when the system has no memory for them.
    BitmapCanvas(uint32_t width, uint32_t height)
    {
        BITMAPINFO info{};
        info.bmiHeader.biSize = sizeof info.bmiHeader;
        info.bmiHeader.biWidth = static_cast<LONG>(width);
        info.bmiHeader.biHeight = -static_cast<LONG>(height);
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = 32;
        info.bmiHeader.biCompression = BI_RGB;
        void* pixels = nullptr;
        bitmap_.reset(CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &pixels, nullptr, 0));
        pixels_ = bitmap_ ? static_cast<uint32_t*>(pixels) : nullptr;
    }

    HBITMAP Bitmap() const { return bitmap_.get(); }
    uint32_t* Pixels() const { return pixels_; }

private:
    uint32_t* pixels_ = nullptr;
    std::unique_ptr<std::remove_pointer_t<HBITMAP>, GdiDelete> bitmap_;
};

}  // namespace marbex::platform
