// Pictures that the decoders of Windows read.

#include <gtest/gtest.h>
#include <windows.h>

#include <future>

#include "platform/picture_checks.h"

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

// A drawing of an inch by half an inch, its left half black.
std::string MakeMetafile()
{
    const RECT frame{0, 0, 2540, 1270};
    const HDC dc = CreateEnhMetaFileA(nullptr, nullptr, &frame, nullptr);
    const int width = MulDiv(2540, GetDeviceCaps(dc, HORZRES), 100 * GetDeviceCaps(dc, HORZSIZE));
    const int height = MulDiv(1270, GetDeviceCaps(dc, VERTRES), 100 * GetDeviceCaps(dc, VERTSIZE));
    const RECT left{0, 0, width / 2, height};
    FillRect(dc, &left, static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH)));
    const HENHMETAFILE metafile = CloseEnhMetaFile(dc);
    std::string file(GetEnhMetaFileBits(metafile, 0, nullptr), '\0');
    GetEnhMetaFileBits(metafile, static_cast<UINT>(file.size()), reinterpret_cast<BYTE*>(file.data()));
    DeleteEnhMetaFile(metafile);
    return file;
}

TEST(PictureFormats, MetafileHasItsSizeAtNinetySixDotsPerInch)
{
    const Pixels decoded = Decode(MakeMetafile());
    ASSERT_EQ(decoded.width, 96U);
    ASSERT_EQ(decoded.height, 48U);
    EXPECT_EQ(decoded.At(20, 24), 0U);
    EXPECT_EQ(decoded.At(76, 24), 0xFFFFFFU) << "what the drawing leaves is white";
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
