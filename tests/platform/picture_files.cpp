#include "platform/picture_files.h"

namespace marbex::test {

namespace {

void Append(std::string& bytes, uint32_t value, int count)
{
    for (int i = 0; i < count; ++i)
        bytes += static_cast<char>(value >> (8 * i) & 0xFF);
}

}  // namespace

Pixels MakePixels(uint32_t width, uint32_t height, const std::function<uint32_t(uint32_t, uint32_t)>& at)
{
    Pixels pixels{width, height, {}};
    for (uint32_t y = 0; y < height; ++y) {
        for (uint32_t x = 0; x < width; ++x)
            pixels.values.push_back(at(x, y));
    }
    return pixels;
}

std::string MakeBmp(uint32_t width, uint32_t height, const BmpOptions& options)
{
    std::string header;
    Append(header, options.headerSize, 4);
    if (options.headerSize == 12) {
        Append(header, width, 2);
        Append(header, height, 2);
        Append(header, 1, 2);
        Append(header, options.bits, 2);
    } else {
        Append(header, width, 4);
        Append(header, options.topDown ? 0U - height : height, 4);
        Append(header, 1, 2);
        Append(header, options.bits, 2);
        Append(header, options.compression, 4);
        for (int i = 0; i < 3; ++i)
            Append(header, 0, 4);
        Append(header, static_cast<uint32_t>(options.palette.size()), 4);
        Append(header, 0, 4);
        for (const uint32_t mask : options.masks)
            Append(header, mask, 4);
        if (header.size() < options.headerSize) header.resize(options.headerSize, '\0');
    }
    for (const uint32_t color : options.palette)
        Append(header, color, options.headerSize == 12 ? 3 : 4);

    std::string file = "BM";
    Append(file, static_cast<uint32_t>(14 + header.size() + options.pixelData.size()), 4);
    Append(file, 0, 4);
    Append(file, static_cast<uint32_t>(14 + header.size()), 4);
    return file + header + options.pixelData;
}

std::string PackBmpRows(const Pixels& values, uint32_t bits, bool topDown)
{
    std::string data;
    for (uint32_t row = 0; row < values.height; ++row) {
        const uint32_t y = topDown ? row : values.height - 1 - row;
        std::string packed;
        for (uint32_t x = 0; x < values.width; ++x) {
            const uint32_t value = values.At(x, y);
            if (bits >= 8) {
                Append(packed, value, static_cast<int>(bits / 8));
                continue;
            }
            const uint32_t perByte = 8 / bits;
            if (x % perByte == 0) packed += '\0';
            const uint32_t shift = (perByte - 1 - x % perByte) * bits;
            packed.back() = static_cast<char>(static_cast<unsigned char>(packed.back()) | value << shift);
        }
        packed.resize((packed.size() + 3) / 4 * 4, '\0');
        data += packed;
    }
    return data;
}

}  // namespace marbex::test
