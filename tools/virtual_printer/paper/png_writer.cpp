#include "virtual_printer/paper/png_writer.h"

#include <new>

namespace marbex::virtual_printer {
namespace {

constexpr std::size_t kChunk = 32768;  // bytes of compressed data in one chunk
constexpr int kLevel = 3;              // of compression: white paper needs no more
constexpr int kFilterBytes = 1;        // before each row; 0 says that it is not filtered

void Append32(std::vector<uint8_t>& bytes, std::size_t value)
{
    for (int shift = 24; shift >= 0; shift -= 8) {
        bytes.push_back(static_cast<uint8_t>(value >> shift));
    }
}

}  // namespace

PngWriter::PngWriter(Sink sink, uint32_t width, uint32_t rows, std::span<const Colour> palette, uint32_t dotsPerMetre)
    : sink_(std::move(sink)), compressed_(kChunk)
{
    if (deflateInit(&deflate_, kLevel) != Z_OK) {
        throw std::bad_alloc();
    }
    sink_(std::array<uint8_t, 8>{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'});
    std::vector<uint8_t> header;
    Append32(header, width);
    Append32(header, rows);
    header.insert(header.end(), {2, 3, 0, 0, 0});  // bits a dot, palette; deflate, the usual filters, not interlaced
    Chunk("IHDR", header);
    std::vector<uint8_t> colours;
    for (const Colour& colour : palette) {
        colours.insert(colours.end(), colour.begin(), colour.end());
    }
    Chunk("PLTE", colours);
    std::vector<uint8_t> size;
    Append32(size, dotsPerMetre);
    Append32(size, dotsPerMetre);
    size.push_back(1);  // metres
    Chunk("pHYs", size);
}

PngWriter::~PngWriter()
{
    deflateEnd(&deflate_);
}

void PngWriter::Row(std::span<const uint8_t> dots)
{
    constexpr std::array<uint8_t, kFilterBytes> kNotFiltered{};
    Compress(kNotFiltered, Z_NO_FLUSH);
    Compress(dots, Z_NO_FLUSH);
}

void PngWriter::Finish()
{
    Compress({}, Z_FINISH);
    Chunk("IDAT", std::span(compressed_).first(used_));
    Chunk("IEND", {});
}

void PngWriter::Compress(std::span<const uint8_t> bytes, int flush)
{
    deflate_.next_in = const_cast<uint8_t*>(bytes.data());  // zlib only reads it
    deflate_.avail_in = static_cast<uInt>(bytes.size());
    do {
        if (used_ == compressed_.size()) {
            Chunk("IDAT", compressed_);
            used_ = 0;
        }
        deflate_.next_out = compressed_.data() + used_;
        deflate_.avail_out = static_cast<uInt>(compressed_.size() - used_);
        const int result = deflate(&deflate_, flush);
        used_ = compressed_.size() - deflate_.avail_out;
        if (result == Z_STREAM_END) {
            return;
        }
    } while (deflate_.avail_out == 0 || deflate_.avail_in > 0);
}

void PngWriter::Chunk(std::string_view type, std::span<const uint8_t> data)
{
    std::vector<uint8_t> chunk;
    chunk.reserve(data.size() + 12);
    Append32(chunk, data.size());
    chunk.insert(chunk.end(), type.begin(), type.end());
    chunk.insert(chunk.end(), data.begin(), data.end());
    Append32(chunk, crc32(0, chunk.data() + 4, static_cast<uInt>(chunk.size() - 4)));
    sink_(chunk);
}

}  // namespace marbex::virtual_printer
