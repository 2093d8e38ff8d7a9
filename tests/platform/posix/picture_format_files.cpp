#include "platform/posix/picture_format_files.h"

#include <cstdio>

#include <gif_lib.h>
#include <jpeglib.h>
#include <png.h>

#include <cstdlib>
#include <vector>

namespace marbex::test {

std::string MakePng(const Pixels& pixels, bool interlaced)
{
    std::string file;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(
        png, &file,
        [](png_structp writer, png_bytep data, std::size_t count) {
            static_cast<std::string*>(png_get_io_ptr(writer))->append(reinterpret_cast<char*>(data), count);
        },
        nullptr);
    png_set_IHDR(png, info, pixels.width, pixels.height, 8, PNG_COLOR_TYPE_RGB_ALPHA,
                 interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    png_set_gAMA(png, info, 1.0);  // must not change what is read
    png_write_info(png, info);
    png_set_bgr(png);
    std::vector<png_bytep> rows;
    std::vector<uint32_t> values = pixels.values;
    for (uint32_t y = 0; y < pixels.height; ++y) {
        rows.push_back(reinterpret_cast<png_bytep>(values.data() + std::size_t{y} * pixels.width));
    }
    png_write_image(png, rows.data());
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    return file;
}

std::string MakeJpeg(const Pixels& pixels, JpegKind kind, bool progressive)
{
    jpeg_compress_struct jpeg{};
    jpeg_error_mgr error{};
    jpeg.err = jpeg_std_error(&error);
    jpeg_create_compress(&jpeg);
    unsigned char* bytes = nullptr;
    unsigned long count = 0;
    jpeg_mem_dest(&jpeg, &bytes, &count);
    jpeg.image_width = pixels.width;
    jpeg.image_height = pixels.height;
    jpeg.input_components = kind == JpegKind::kGray ? 1 : kind == JpegKind::kColor ? 3 : 4;
    jpeg.in_color_space = kind == JpegKind::kGray ? JCS_GRAYSCALE : kind == JpegKind::kColor ? JCS_RGB : JCS_CMYK;
    jpeg_set_defaults(&jpeg);
    jpeg_set_quality(&jpeg, 100, TRUE);
    if (progressive) jpeg_simple_progression(&jpeg);
    jpeg_start_compress(&jpeg, TRUE);
    for (uint32_t y = 0; y < pixels.height; ++y) {
        std::vector<unsigned char> row;
        for (uint32_t x = 0; x < pixels.width; ++x) {
            const uint32_t pixel = pixels.At(x, y);
            if (kind == JpegKind::kGray) {
                row.push_back(static_cast<unsigned char>(pixel & 0xFF));
                continue;
            }
            for (const int shift : {16, 8, 0})
                row.push_back(static_cast<unsigned char>(pixel >> shift & 0xFF));
            // Inks the way print programs store them, inverted: what is left of white; no black.
            if (kind == JpegKind::kInks) row.push_back(0xFF);
        }
        unsigned char* line = row.data();
        jpeg_write_scanlines(&jpeg, &line, 1);
    }
    jpeg_finish_compress(&jpeg);
    jpeg_destroy_compress(&jpeg);
    std::string file(reinterpret_cast<char*>(bytes), count);
    free(bytes);
    return file;
}

std::string MakeGif(const Pixels& indices, const GifOptions& options)
{
    std::string file;
    GifFileType* const gif = EGifOpen(
        &file,
        [](GifFileType* writer, const GifByteType* bytes, int count) {
            static_cast<std::string*>(writer->UserData)
                ->append(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(count));
            return count;
        },
        nullptr);
    std::vector<GifColorType> colors(256);
    for (std::size_t i = 0; i < options.palette.size(); ++i) {
        const uint32_t color = options.palette[i];
        colors[i] = {static_cast<GifByteType>(color >> 16), static_cast<GifByteType>(color >> 8 & 0xFF),
                     static_cast<GifByteType>(color & 0xFF)};
    }
    ColorMapObject* const map = GifMakeMapObject(256, colors.data());
    const auto width = static_cast<int>(options.screenWidth != 0 ? options.screenWidth : indices.width);
    const auto height = static_cast<int>(options.screenHeight != 0 ? options.screenHeight : indices.height);
    EGifSetGifVersion(gif, true);
    EGifPutScreenDesc(gif, width, height, 8, 0, map);
    for (int frame = 0; frame < options.frames; ++frame) {
        GraphicsControlBlock control{};
        control.TransparentColor = options.transparent;
        GifByteType block[4];
        EGifGCBToExtension(&control, block);
        EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, sizeof block, block);
        EGifPutImageDesc(gif, static_cast<int>(options.left), static_cast<int>(options.top),
                         static_cast<int>(indices.width), static_cast<int>(indices.height), options.interlaced,
                         nullptr);
        const auto putRows = [&](uint32_t first, uint32_t step) {
            for (uint32_t y = first; y < indices.height; y += step) {
                std::vector<GifPixelType> row;
                for (uint32_t x = 0; x < indices.width; ++x) {
                    row.push_back(static_cast<GifPixelType>(frame == 0 ? indices.At(x, y) : 0));
                }
                EGifPutLine(gif, row.data(), static_cast<int>(indices.width));
            }
        };
        if (options.interlaced) {
            putRows(0, 8);
            putRows(4, 8);
            putRows(2, 4);
            putRows(1, 2);
        } else {
            putRows(0, 1);
        }
    }
    EGifCloseFile(gif, nullptr);
    GifFreeMapObject(map);
    return file;
}

}  // namespace marbex::test
