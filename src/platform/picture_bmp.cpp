// BMP as Windows and OS/2 write it: 1, 4, 8, 16, 24 and 32 bits, RLE4 and RLE8, bit fields, bottom-up and top-down.

#include <algorithm>
#include <array>
#include <bit>
#include <vector>

#include "platform/picture_decoders.h"

namespace marbex::platform {

namespace {

constexpr uint32_t kFileHeaderSize = 14;
constexpr uint32_t kCoreHeaderSize = 12;  // BITMAPCOREHEADER
constexpr uint32_t kInfoHeaderSize = 40;  // BITMAPINFOHEADER; later headers only append to it
constexpr uint32_t kInfoHeaderWithMasks = 52;
constexpr uint32_t kInfoHeaderWithAlpha = 56;
constexpr uint32_t kLargestHeader = 124;  // BITMAPV5HEADER

enum Compression : uint32_t { kRgb = 0, kRle8 = 1, kRle4 = 2, kBitFields = 3, kAlphaBitFields = 6 };

// The bytes of the file, numbers little-endian. Reading outside gives 0; callers check Has first where it matters.
class Bytes {
public:
    explicit Bytes(std::string_view file) : file_(file) {}

    bool Has(uint64_t offset, uint64_t count) const { return offset <= file_.size() && count <= file_.size() - offset; }
    uint32_t At(uint64_t offset) const
    {
        return offset < file_.size() ? static_cast<uint8_t>(file_[static_cast<std::size_t>(offset)]) : 0;
    }
    uint32_t U16(uint64_t offset) const { return At(offset) | At(offset + 1) << 8; }
    uint32_t U32(uint64_t offset) const { return U16(offset) | U16(offset + 2) << 16; }
    int32_t I32(uint64_t offset) const { return static_cast<int32_t>(U32(offset)); }
    const uint8_t* Data(uint64_t offset) const { return reinterpret_cast<const uint8_t*>(file_.data()) + offset; }
    uint64_t Size() const { return file_.size(); }

private:
    std::string_view file_;
};

// One colour of a pixel with bit fields.
class Field {
public:
    Field() = default;
    explicit Field(uint32_t mask) : mask_(mask)
    {
        if (mask == 0) return;
        shift_ = std::countr_zero(mask);
        highest_ = mask >> shift_;
    }

    bool IsPresent() const { return mask_ != 0; }
    bool IsContiguous() const { return (highest_ & (highest_ + 1)) == 0; }
    uint32_t Of(uint32_t pixel) const
    {
        const uint32_t value = (pixel & mask_) >> shift_;
        if (highest_ == 255 || highest_ == 0) return value;
        return static_cast<uint32_t>((uint64_t{value} * 255 + highest_ / 2) / highest_);
    }

private:
    uint32_t mask_ = 0;
    int shift_ = 0;
    uint32_t highest_ = 0;
};

struct Header {
    uint32_t width = 0;
    uint32_t height = 0;
    bool topDown = false;
    uint32_t bits = 0;
    uint32_t compression = kRgb;
    std::array<uint32_t, 4> masks{};  // red, green, blue, alpha
    uint64_t paletteOffset = 0;
    uint32_t paletteEntries = 0;
    uint32_t paletteEntrySize = 4;
    uint64_t pixelOffset = 0;
};

bool ReadCoreHeader(const Bytes& bytes, Header& header)
{
    header.width = bytes.U16(18);
    header.height = bytes.U16(20);
    header.bits = bytes.U16(24);
    header.paletteOffset = kFileHeaderSize + kCoreHeaderSize;
    header.paletteEntrySize = 3;
    header.paletteEntries = header.bits <= 8 ? 1U << header.bits : 0;
    return bytes.U16(22) == 1;
}

bool ReadInfoHeader(const Bytes& bytes, uint32_t size, Header& header)
{
    const int32_t width = bytes.I32(18);
    const int32_t height = bytes.I32(22);
    if (width <= 0 || height == 0 || height == INT32_MIN) return false;
    header.width = static_cast<uint32_t>(width);
    header.topDown = height < 0;
    header.height = static_cast<uint32_t>(header.topDown ? -height : height);
    header.bits = bytes.U16(28);
    header.compression = bytes.U32(30);
    header.paletteOffset = uint64_t{kFileHeaderSize} + size;
    if (header.compression == kBitFields || header.compression == kAlphaBitFields) {
        const bool withAlpha = header.compression == kAlphaBitFields;
        const uint64_t masksAt = kFileHeaderSize + kInfoHeaderSize;
        for (uint32_t i = 0; i < 3; ++i)
            header.masks[i] = bytes.U32(masksAt + uint64_t{4} * i);
        if (withAlpha || size >= kInfoHeaderWithAlpha) header.masks[3] = bytes.U32(masksAt + 12);
        // Behind the plain header the masks stand where a palette would.
        if (size < kInfoHeaderWithMasks) header.paletteOffset += withAlpha ? 16 : 12;
    }
    const uint32_t used = bytes.U32(46);
    if (header.bits <= 8) {
        const uint32_t all = 1U << header.bits;
        if (used > all) return false;
        header.paletteEntries = used != 0 ? used : all;
    }
    return bytes.U16(26) == 1;
}

bool IsKnownFormat(const Header& header)
{
    switch (header.compression) {
        case kRgb:
            return header.bits == 1 || header.bits == 4 || header.bits == 8 || header.bits == 16 || header.bits == 24 ||
                   header.bits == 32;
        case kRle8:
            return header.bits == 8 && !header.topDown;
        case kRle4:
            return header.bits == 4 && !header.topDown;
        case kBitFields:
        case kAlphaBitFields:
            return header.bits == 16 || header.bits == 32;
        default:
            return false;
    }
}

bool ReadHeader(const Bytes& bytes, Header& header)
{
    if (!bytes.Has(0, kFileHeaderSize + kCoreHeaderSize)) return false;
    header.pixelOffset = bytes.U32(10);
    const uint32_t size = bytes.U32(kFileHeaderSize);
    if (size != kCoreHeaderSize && (size < kInfoHeaderSize || size > kLargestHeader)) return false;
    if (!bytes.Has(kFileHeaderSize, size)) return false;
    const bool read = size == kCoreHeaderSize ? ReadCoreHeader(bytes, header) : ReadInfoHeader(bytes, size, header);
    if (!read || !IsKnownFormat(header)) return false;
    return header.pixelOffset >= uint64_t{kFileHeaderSize} + size && header.pixelOffset <= bytes.Size();
}

// 256 colours; those that the file does not hold are black.
std::optional<std::array<uint32_t, 256>> ReadPalette(const Bytes& bytes, const Header& header)
{
    std::array<uint32_t, 256> palette{};
    const uint64_t size = uint64_t{header.paletteEntries} * header.paletteEntrySize;
    if (!bytes.Has(header.paletteOffset, size)) return std::nullopt;
    for (uint32_t i = 0; i < header.paletteEntries; ++i) {
        const uint64_t at = header.paletteOffset + uint64_t{i} * header.paletteEntrySize;
        palette[i] = PixelOf(bytes.At(at + 2), bytes.At(at + 1), bytes.At(at));
    }
    return palette;
}

uint32_t* RowOf(PixelBuffer& buffer, const Header& header, uint32_t storedRow)
{
    const uint32_t row = header.topDown ? storedRow : header.height - 1 - storedRow;
    return buffer.pixels.get() + std::size_t{row} * header.width;
}

const uint8_t* StoredRow(const Bytes& bytes, const Header& header, uint32_t row)
{
    const uint64_t rowSize = (uint64_t{header.width} * header.bits + 31) / 32 * 4;
    return bytes.Data(header.pixelOffset + row * rowSize);
}

void DecodePaletteRow(const uint8_t* stored, const Header& header, const std::array<uint32_t, 256>& palette,
                      uint32_t* row)
{
    const uint32_t perByte = 8 / header.bits;
    const uint32_t mask = (1U << header.bits) - 1;
    for (uint32_t x = 0; x < header.width; ++x) {
        const uint32_t shift = (perByte - 1 - x % perByte) * header.bits;
        row[x] = palette[static_cast<uint32_t>(stored[x / perByte]) >> shift & mask];
    }
}

// Rows of 16 and 32 bits. An alpha field counts only when it is used: many writers leave it 0 all over and mean opaque.
class FieldRows {
public:
    FieldRows(const Bytes& bytes, const Header& header) : bytes_(bytes), header_(header)
    {
        std::array<uint32_t, 4> masks = header.masks;
        if (header.compression == kRgb) {
            masks = header.bits == 16 ? std::array<uint32_t, 4>{0x7C00, 0x03E0, 0x001F, 0}
                                      : std::array<uint32_t, 4>{0xFF0000, 0xFF00, 0xFF, 0};
        }
        for (std::size_t i = 0; i < masks.size(); ++i)
            fields_[i] = Field(masks[i]);
    }

    bool AreUsable() const { return std::ranges::all_of(fields_, &Field::IsContiguous); }

    void Decode(PixelBuffer& buffer)
    {
        const bool hasAlpha = fields_[3].IsPresent() && AnyAlpha();
        for (uint32_t row = 0; row < header_.height; ++row) {
            uint32_t* const out = RowOf(buffer, header_, row);
            for (uint32_t x = 0; x < header_.width; ++x) {
                const uint32_t pixel = PixelAt(row, x);
                const uint32_t alpha = hasAlpha ? fields_[3].Of(pixel) : 255;
                out[x] = OverWhite(fields_[0].Of(pixel), fields_[1].Of(pixel), fields_[2].Of(pixel), alpha);
            }
        }
    }

private:
    uint32_t PixelAt(uint32_t row, uint32_t x) const
    {
        const uint8_t* const stored = StoredRow(bytes_, header_, row) + std::size_t{x} * (header_.bits / 8);
        uint32_t pixel = stored[0] | static_cast<uint32_t>(stored[1]) << 8;
        if (header_.bits == 32)
            pixel |= static_cast<uint32_t>(stored[2]) << 16 | static_cast<uint32_t>(stored[3]) << 24;
        return pixel;
    }

    bool AnyAlpha() const
    {
        for (uint32_t row = 0; row < header_.height; ++row) {
            for (uint32_t x = 0; x < header_.width; ++x) {
                if (fields_[3].Of(PixelAt(row, x)) != 0) return true;
            }
        }
        return false;
    }

    const Bytes& bytes_;
    const Header& header_;
    std::array<Field, 4> fields_;
};

bool DecodePlain(const Bytes& bytes, const Header& header, const std::array<uint32_t, 256>& palette,
                 PixelBuffer& buffer)
{
    const uint64_t rowSize = (uint64_t{header.width} * header.bits + 31) / 32 * 4;
    if (!bytes.Has(header.pixelOffset, rowSize * header.height)) return false;
    if (header.bits == 16 || header.bits == 32) {
        FieldRows rows(bytes, header);
        if (!rows.AreUsable()) return false;
        rows.Decode(buffer);
        return true;
    }
    for (uint32_t row = 0; row < header.height; ++row) {
        const uint8_t* const stored = StoredRow(bytes, header, row);
        uint32_t* const out = RowOf(buffer, header, row);
        if (header.bits <= 8) {
            DecodePaletteRow(stored, header, palette, out);
        } else {
            for (std::size_t x = 0; x < header.width; ++x) {
                out[x] = PixelOf(stored[3 * x + 2], stored[3 * x + 1], stored[3 * x]);
            }
        }
    }
    return true;
}

// Run-length coding: pairs of count and value; a count of 0 announces end of line, end of picture, a move, or so many
// values as they are, padded to 16 bits. What no run touches stays white; what runs past a row is lost.
class RleReader {
public:
    RleReader(const Bytes& bytes, const Header& header, const std::array<uint32_t, 256>& palette, PixelBuffer& buffer)
        : bytes_(bytes), header_(header), palette_(palette), buffer_(buffer), at_(header.pixelOffset)
    {
    }

    // False when the data ends before the picture does.
    bool Decode()
    {
        std::fill_n(buffer_.pixels.get(), std::size_t{header_.width} * header_.height, kWhitePixel);
        while (y_ < header_.height) {
            // The last row is complete: some writers leave out the end of the picture.
            if (!bytes_.Has(at_, 2)) return y_ + 1 == header_.height && x_ >= header_.width;
            const uint32_t count = Next();
            const uint32_t value = Next();
            if (count > 0) {
                for (uint32_t i = 0; i < count; ++i)
                    Put(Index(value, i));
            } else if (value == kEndOfPicture) {
                return true;
            } else if (!Escape(value)) {
                return false;
            }
        }
        return true;
    }

private:
    static constexpr uint32_t kEndOfLine = 0;
    static constexpr uint32_t kEndOfPicture = 1;
    static constexpr uint32_t kMove = 2;

    bool Escape(uint32_t code)
    {
        if (code == kEndOfLine) {
            x_ = 0;
            ++y_;
            return true;
        }
        if (code == kMove) {
            if (!bytes_.Has(at_, 2)) return false;
            x_ += Next();
            y_ += Next();
            return true;
        }
        const uint32_t size = header_.bits == 8 ? code : (code + 1) / 2;
        if (!bytes_.Has(at_, size)) return false;
        for (uint32_t i = 0; i < code; ++i) {
            const uint64_t byte = at_ + (header_.bits == 8 ? i : i / 2);
            Put(Index(bytes_.At(byte), i));
        }
        at_ += size + size % 2;
        return true;
    }

    uint32_t Next() { return bytes_.At(at_++); }

    // The colour of value i of a run: in four bits the two halves of the byte take turns.
    uint32_t Index(uint32_t value, uint32_t i) const
    {
        if (header_.bits == 8) return value;
        return i % 2 == 0 ? value >> 4 : value & 0x0F;
    }

    void Put(uint32_t index)
    {
        if (x_ < header_.width && y_ < header_.height) RowOf(buffer_, header_, y_)[x_] = palette_[index];
        if (x_ < header_.width) ++x_;
    }

    const Bytes& bytes_;
    const Header& header_;
    const std::array<uint32_t, 256>& palette_;
    PixelBuffer& buffer_;
    uint64_t at_;
    uint32_t x_ = 0;
    uint32_t y_ = 0;
};

}  // namespace

std::optional<PixelBuffer> DecodeBmp(std::string_view file)
{
    const Bytes bytes(file);
    Header header;
    if (!ReadHeader(bytes, header)) return std::nullopt;
    const auto palette = ReadPalette(bytes, header);
    if (!palette) return std::nullopt;
    std::optional<PixelBuffer> buffer = AllocatePixels(header.width, header.height);
    if (!buffer) return std::nullopt;
    const bool runs = header.compression == kRle8 || header.compression == kRle4;
    const bool decoded =
        runs ? RleReader(bytes, header, *palette, *buffer).Decode() : DecodePlain(bytes, header, *palette, *buffer);
    if (!decoded) return std::nullopt;
    return buffer;
}

}  // namespace marbex::platform
