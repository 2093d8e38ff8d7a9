#include "spooler/bitmap_request.h"

#include <algorithm>
#include <cinttypes>
#include <memory>
#include <new>
#include <vector>

#include "opos/common.h"
#include "opos/printer.h"
#include "printer/floyd_steinberg.h"
#include "printer/picture.h"
#include "support/service_log.h"

namespace marbex::spooler {

using namespace opos;
using support::LogWrite;

namespace {

constexpr uint64_t kMaxDots = 64U << 20;
constexpr uint64_t kBandPixels = 64U << 10;  // drawn at a time, so that the band stays in the cache
constexpr uint32_t kWhite = 0xFFFFFF;

void LogAlignment(const char* tag, int32_t alignment)
{
    switch (alignment) {
        case PTR_BM_LEFT:
            LogWrite("[%s] --- PrintBitmap - Alignment Left", tag);
            break;
        case PTR_BM_CENTER:
            LogWrite("[%s] --- PrintBitmap - Alignment Center", tag);
            break;
        case PTR_BM_RIGHT:
            LogWrite("[%s] --- PrintBitmap - Alignment Right", tag);
            break;
        default:
            LogWrite("[%s] --- PrintBitmap - Alignment of %d dots From the Left", tag, alignment);
            break;
    }
}

// The degree sign is one byte, as in code page 1252.
void LogRotation(const char* tag, int32_t rotation)
{
    switch (rotation) {
        case PTR_RP_NORMAL:
            LogWrite("[%s] --- PrintBitmap - No rotation", tag);
            break;
        case PTR_RP_RIGHT90:
            LogWrite("[%s] --- PrintBitmap - Rotation right 90\xB0", tag);
            break;
        case PTR_RP_LEFT90:
            LogWrite("[%s] --- PrintBitmap - Rotation left 90\xB0", tag);
            break;
        case PTR_RP_ROTATE180:
            LogWrite("[%s] --- PrintBitmap - Rotation 180\xB0", tag);
            break;
        default:
            break;
    }
}

struct Size {
    uint64_t width;
    uint64_t height;
};

// None for a width that is none.
bool TargetSize(const char* tag, int32_t width, const printer::CPicture& picture, Size& size)
{
    size = {picture.Width(), picture.Height()};
    if (width == PTR_BM_ASIS) {
        LogWrite("[%s] --- PrintBitmap - Width PTR_BM_ASIS", tag);
    } else {
        LogWrite("[%s] --- PrintBitmap - Width %d", tag, width);
        if (width < 1) return false;
        size.height = std::max<uint64_t>(size.height * static_cast<uint64_t>(width) / size.width, 1);
        size.width = static_cast<uint64_t>(width);
    }
    LogWrite("[%s] --- PrintBitmap - New Image Width = %" PRIu64, tag, size.width);
    LogWrite("[%s] --- PrintBitmap - New Image Height = %" PRIu64, tag, size.height);
    return true;
}

// Band by band, so that only the dots and not the colours of the whole have to be held. What cannot be drawn is white.
void DrawDots(const printer::CPicture& picture, const Size& size, uint8_t* dots)
{
    const auto width = static_cast<uint32_t>(size.width);
    const auto height = static_cast<uint32_t>(size.height);
    const auto bandRows = static_cast<uint32_t>(std::clamp<uint64_t>(kBandPixels / width, 1, height));
    std::vector<uint32_t> band(std::size_t{bandRows} * width);
    printer::Ditherer ditherer(width);
    bool drawn = true;
    for (uint32_t first = 0; first < height; first += bandRows) {
        const uint32_t rows = std::min(bandRows, height - first);
        std::ranges::fill(band, kWhite);
        drawn = drawn && picture.Render(width, height, first, rows, band);
        ditherer.DitherRows(band.data(), rows, dots + std::size_t{first} * width);
    }
}

std::unique_ptr<uint8_t[]> MakeDots(const printer::CPicture& picture, const Size& size)
{
    if (size.height > kMaxDots || size.width * size.height > kMaxDots) return nullptr;
    try {
        auto dots = std::make_unique_for_overwrite<uint8_t[]>(static_cast<std::size_t>(size.width * size.height));
        DrawDots(picture, size, dots.get());
        return dots;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

int32_t RefuseWithoutMemory(const char* tag)
{
    LogWrite("[%s] --- PrintBitmap - BitmapDataStruct Allocation failure", tag);
    return OPOS_E_ILLEGAL;
}

}  // namespace

int32_t PrepareBitmap(const char* tag, const BitmapRequest& request, printer::BitmapDataStruct* out)
{
    LogWrite("[%s] --- PrintBitmap Begin", tag);
    LogWrite("[%s] --- PrintBitmap - FileName %s", tag, request.fileName.c_str());
    if (out == nullptr) return RefuseWithoutMemory(tag);
    LogAlignment(tag, request.alignment);
    LogRotation(tag, request.rotation);

    printer::CPicture picture;
    if (!picture.Load(request.fileName)) {
        LogWrite("[%s] --- PrintBitmap - Load Image %s NOT OK", tag, request.fileName.c_str());
        return OPOS_E_NOEXIST;
    }
    LogWrite("[%s] --- PrintBitmap - Load Image %s OK", tag, request.fileName.c_str());
    LogWrite("[%s] --- PrintBitmap - Image Width = %u", tag, picture.Width());
    LogWrite("[%s] --- PrintBitmap - Image Height = %u", tag, picture.Height());

    Size size{};
    if (!TargetSize(tag, request.width, picture, size)) return OPOS_E_ILLEGAL;
    std::unique_ptr<uint8_t[]> dots = MakeDots(picture, size);
    if (dots == nullptr) return RefuseWithoutMemory(tag);
    out->width = static_cast<uint32_t>(size.width);
    out->height = static_cast<uint32_t>(size.height);
    out->alignment = request.alignment;
    out->rotation = request.rotation;
    out->pixels = std::move(dots);
    LogWrite("[%s] --- PrintBitmap End", tag);
    return OPOS_SUCCESS;
}

}  // namespace marbex::spooler
