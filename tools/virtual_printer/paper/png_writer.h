#pragma once

#include <zlib.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string_view>
#include <vector>

namespace marbex::virtual_printer {

// Writes a PNG picture (ISO/IEC 15948) of four colours, row by row, so that a long one needs little memory.
class PngWriter {
public:
    using Sink = std::function<void(std::span<const uint8_t>)>;
    using Colour = std::array<uint8_t, 3>;  // red, green, blue

    // The picture must get exactly that many rows.
    PngWriter(Sink sink, uint32_t width, uint32_t rows, std::span<const Colour> palette, uint32_t dotsPerMetre);
    ~PngWriter();
    PngWriter(const PngWriter&) = delete;
    PngWriter& operator=(const PngWriter&) = delete;

    // Four dots a byte, the leftmost in the top bits; (width + 3) / 4 bytes.
    void Row(std::span<const uint8_t> dots);
    void Finish();

private:
    void Compress(std::span<const uint8_t> bytes, int flush);
    void Chunk(std::string_view type, std::span<const uint8_t> data);

    Sink sink_;
    z_stream deflate_{};
    std::vector<uint8_t> compressed_;
    std::size_t used_ = 0;
};

}  // namespace marbex::virtual_printer
