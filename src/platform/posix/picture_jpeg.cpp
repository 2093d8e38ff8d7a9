// JPEG by libjpeg-turbo: baseline and progressive, gray, colour and the four inks of print.

#include <cstdio>  // jpeglib.h needs it first

#include <jpeglib.h>

#include <jerror.h>

#include <csetjmp>
#include <vector>

#include "platform/picture.h"
#include "platform/posix/picture_decoders.h"

namespace marbex::platform {

namespace {

// A scan of a progressive file may say "nothing changes" for the whole picture in a few bytes; so many pixels may be
// gone through in all.
constexpr uint64_t kMaxScannedPixels = 1ULL << 30;

struct ErrorExit {
    jpeg_error_mgr manager;
    std::jmp_buf target;
};

[[noreturn]] void Fail(j_common_ptr jpeg)
{
    std::longjmp(reinterpret_cast<ErrorExit*>(jpeg->err)->target, 1);
}

// The library fills what is missing of a file that is cut off with gray; here that is a failure. Only the missing end
// mark of a picture that is complete passes.
void OnMessage(j_common_ptr jpeg, int level)
{
    if (level >= 0) return;
    const int code = jpeg->err->msg_code;
    const bool inScans = reinterpret_cast<j_decompress_ptr>(jpeg)->progressive_mode != FALSE;
    if (code == JWRN_HIT_MARKER || (code == JWRN_JPEG_EOF && inScans)) Fail(jpeg);
}

void OnProgress(j_common_ptr jpeg)
{
    const auto& decompress = *reinterpret_cast<j_decompress_ptr>(jpeg);
    const uint64_t pixels = uint64_t{decompress.image_width} * decompress.image_height;
    if (static_cast<uint64_t>(decompress.input_scan_number) * pixels > kMaxScannedPixels) Fail(jpeg);
}

class JpegReader {
public:
    explicit JpegReader(std::string_view file) : file_(file)
    {
        jpeg_.err = jpeg_std_error(&error_.manager);
        error_.manager.error_exit = Fail;
        error_.manager.emit_message = OnMessage;
        error_.manager.output_message = [](j_common_ptr) {};
        progress_.progress_monitor = OnProgress;
    }
    ~JpegReader() { jpeg_destroy_decompress(&jpeg_); }
    JpegReader(const JpegReader&) = delete;
    JpegReader& operator=(const JpegReader&) = delete;

    // The library leaves a function by longjmp when a file is bad. The three functions that call it hold nothing that
    // would have to be destroyed.
    bool ReadHeader(uint32_t& width, uint32_t& height)
    {
        if (setjmp(error_.target) != 0) return false;
        jpeg_create_decompress(&jpeg_);
        jpeg_mem_src(&jpeg_, reinterpret_cast<const unsigned char*>(file_.data()), file_.size());
        jpeg_read_header(&jpeg_, TRUE);
        width = jpeg_.image_width;
        height = jpeg_.image_height;
        return true;
    }

    bool Start()
    {
        if (setjmp(error_.target) != 0) return false;
        jpeg_.progress = &progress_;
        jpeg_.out_color_space = HasInks() ? JCS_CMYK : JCS_RGB;
        return jpeg_start_decompress(&jpeg_) != FALSE;
    }

    bool ReadRow(unsigned char* row)
    {
        if (setjmp(error_.target) != 0) return false;
        return jpeg_read_scanlines(&jpeg_, &row, 1) == 1;
    }

    bool HasInks() const { return jpeg_.jpeg_color_space == JCS_CMYK || jpeg_.jpeg_color_space == JCS_YCCK; }
    bool InksAreInverted() const { return jpeg_.saw_Adobe_marker != FALSE; }

private:
    std::string_view file_;
    ErrorExit error_{};
    jpeg_progress_mgr progress_{};
    jpeg_decompress_struct jpeg_{};
};

// Cyan, magenta, yellow, black: what is left of white.
void ConvertInks(const unsigned char* row, uint32_t width, bool inverted, uint32_t* out)
{
    for (uint32_t x = 0; x < width; ++x) {
        const unsigned char* const inks = row + std::size_t{x} * 4;
        const auto light = [inverted](unsigned char ink) -> uint32_t { return inverted ? ink : 255U - ink; };
        const auto mix = [&](unsigned char ink) { return (light(ink) * light(inks[3]) + 127) / 255; };
        out[x] = PixelOf(mix(inks[0]), mix(inks[1]), mix(inks[2]));
    }
}

void ConvertColors(const unsigned char* row, uint32_t width, uint32_t* out)
{
    for (std::size_t x = 0; x < width; ++x)
        out[x] = PixelOf(row[3 * x], row[3 * x + 1], row[3 * x + 2]);
}

}  // namespace

std::optional<PixelBuffer> DecodeJpeg(std::string_view file)
{
    JpegReader reader(file);
    uint32_t width = 0;
    uint32_t height = 0;
    if (!reader.ReadHeader(width, height)) return std::nullopt;
    std::optional<PixelBuffer> buffer = AllocatePixels(width, height);
    if (!buffer || !reader.Start()) return std::nullopt;
    std::vector<unsigned char> row(std::size_t{width} * 4);
    for (uint32_t y = 0; y < height; ++y) {
        if (!reader.ReadRow(row.data())) return std::nullopt;
        uint32_t* const out = buffer->pixels.get() + std::size_t{y} * width;
        if (reader.HasInks()) {
            ConvertInks(row.data(), width, reader.InksAreInverted(), out);
        } else {
            ConvertColors(row.data(), width, out);
        }
    }
    return buffer;
}

}  // namespace marbex::platform
