// Pictures that the decoders of Windows read.

#include <gtest/gtest.h>
// clang-format off
#include <windows.h>
#include <olectl.h>
// clang-format on

#include <algorithm>
#include <future>

#include "platform/picture_checks.h"
#include "platform/windows/bitmap_canvas.h"
#include "platform/windows/picture_decoders.h"

namespace marbex::platform {
namespace {

TEST(PictureFormats, PngIsReadThoughOleLoadPictureDoesNotKnowIt)
{
    ExpectPixels(Samples().png, ColorfulPixels(24, 16));
    ExpectPixels(Samples().interlacedPng, ColorfulPixels(24, 16));
}

TEST(PictureFormats, Jpeg)
{
    const Pixels expected = CornerPixels();
    const Pixels decoded = Decode(Samples().jpeg);
    ASSERT_EQ(decoded.values.size(), expected.values.size());
    for (const auto& [x, y] : kInnerPoints) {
        for (const uint32_t shift : {0U, 8U, 16U}) {
            EXPECT_NEAR(static_cast<int>(decoded.At(x, y) >> shift & 0xFF),
                        static_cast<int>(expected.At(x, y) >> shift & 0xFF), 4)
                << x << ", " << y;
        }
    }
}

TEST(PictureFormats, TransparencyOfAGifLetsWhiteThrough)
{
    const auto palette = MakePalette(16);
    ExpectPixels(Samples().gif, test::MakePixels(24, 16, [&](uint32_t x, uint32_t y) {
                     const uint32_t index = (x + y) % 16;
                     return index == 3 ? 0xFFFFFFU : palette[index];
                 }));
}

// A drawing of an inch by half an inch with a black triangle, its right angle in the top left corner.
std::string MakeMetafile()
{
    const RECT frame{0, 0, 2540, 1270};
    const HDC dc = CreateEnhMetaFileA(nullptr, nullptr, &frame, nullptr);
    const int width = MulDiv(2540, GetDeviceCaps(dc, HORZRES), 100 * GetDeviceCaps(dc, HORZSIZE));
    const int height = MulDiv(1270, GetDeviceCaps(dc, VERTRES), 100 * GetDeviceCaps(dc, VERTSIZE));
    const POINT corners[] = {{0, 0}, {width, 0}, {0, height}};
    SelectObject(dc, GetStockObject(BLACK_BRUSH));
    SelectObject(dc, GetStockObject(NULL_PEN));
    Polygon(dc, corners, 3);
    const HENHMETAFILE metafile = CloseEnhMetaFile(dc);
    std::string file(GetEnhMetaFileBits(metafile, 0, nullptr), '\0');
    GetEnhMetaFileBits(metafile, static_cast<UINT>(file.size()), reinterpret_cast<BYTE*>(file.data()));
    DeleteEnhMetaFile(metafile);
    return file;
}

TEST(PictureFormats, MetafileHasItsSizeAtNinetySixDotsPerInchAndIsDrawnAtAnyOther)
{
    PictureError error = PictureError::kNone;
    const std::unique_ptr<Picture> picture = DecodePicture(MakeMetafile(), error);
    ASSERT_TRUE(picture);
    ASSERT_EQ(picture->Width(), 96U);
    ASSERT_EQ(picture->Height(), 48U);
    const Pixels small = Draw(*picture, 96, 48);
    EXPECT_EQ(small.At(20, 12), 0U);
    EXPECT_EQ(small.At(76, 36), 0xFFFFFFU) << "what the drawing leaves is white";

    // In bands, as pictures are printed. Stretched from its own size, its slope would have steps of twenty.
    constexpr uint32_t kWidth = 960, kHeight = 480, kBand = 96;
    std::vector<uint32_t> band(std::size_t{kWidth} * kBand);
    for (uint32_t first = 0; first < kHeight; first += kBand) {
        ASSERT_TRUE(picture->Draw(kWidth, kHeight, first, kBand, band));
        for (uint32_t row = 0; row < kBand; ++row) {
            const auto begin = band.begin() + row * kWidth;
            const auto black = static_cast<int>(std::count(begin, begin + kWidth, 0U));
            ASSERT_NEAR(black, static_cast<int>(kWidth - 2 * (first + row)), 4) << first + row;
        }
    }
    EXPECT_FALSE(picture->Draw(kMaxPictureSide, kMaxPictureSide, 0, 4096, {})) << "too large for any canvas";
}

// What the system loaded and will not draw.
class Undrawable final : public IPicture {
public:
    explicit Undrawable(HBITMAP bitmap) : bitmap_(bitmap) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE get_Handle(OLE_HANDLE* handle) override
    {
        *handle = static_cast<OLE_HANDLE>(HandleToLong(bitmap_));
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_hPal(OLE_HANDLE*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Type(SHORT* type) override
    {
        *type = PICTYPE_BITMAP;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_Width(OLE_XSIZE_HIMETRIC* width) override
    {
        *width = 80;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_Height(OLE_YSIZE_HIMETRIC* height) override
    {
        *height = 53;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Render(HDC, LONG, LONG, LONG, LONG, OLE_XPOS_HIMETRIC, OLE_YPOS_HIMETRIC,
                                     OLE_XSIZE_HIMETRIC, OLE_YSIZE_HIMETRIC, LPCRECT) override
    {
        return E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE set_hPal(OLE_HANDLE) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_CurDC(HDC*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SelectPicture(HDC, HDC*, OLE_HANDLE*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_KeepOriginalFormat(BOOL*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_KeepOriginalFormat(BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE PictureChanged() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SaveAsFile(LPSTREAM, BOOL, LONG*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Attributes(DWORD*) override { return E_NOTIMPL; }

private:
    const HBITMAP bitmap_;
};

TEST(PictureFormats, WhatCannotBeDrawnIsAPictureAllTheSame)
{
    const BitmapCanvas canvas(3, 2);
    Undrawable undrawable(canvas.Bitmap());
    const std::unique_ptr<Picture> picture = MakePicture(ComPointer<IPicture>(&undrawable));
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->Width(), 3U);
    EXPECT_EQ(picture->Height(), 2U);
    std::vector<uint32_t> pixels(6, 7);
    EXPECT_FALSE(picture->Draw(3, 2, 0, 2, pixels));
    EXPECT_EQ(pixels, std::vector<uint32_t>(6, 7));
}

// The spool thread, or an application that never heard of COM.
TEST(PictureFormats, AnyThreadDecodes)
{
    auto sizes = std::async(std::launch::async, [] {
        std::vector<std::size_t> counts;
        for (const std::string& file : {Samples().png, Samples().jpeg, Samples().gif})
            counts.push_back(Decode(file).values.size());
        return counts;
    });
    EXPECT_EQ(sizes.get(), (std::vector<std::size_t>{384, 960, 384}));
}

}  // namespace
}  // namespace marbex::platform
