#include "platform/windows/picture_outline.h"

#include <algorithm>

namespace marbex::platform {

namespace {

// A scan of a progressive JPEG may say "nothing changes" for the whole picture in a few bytes; so many pixels may be
// gone through in all.
constexpr uint64_t kMaxScannedPixels = 1ULL << 30;

// The bytes of a file in order. Reading past the end gives zeros and is remembered.
class Cursor {
public:
    Cursor(std::string_view file, std::size_t position) : file_(file), position_(position) {}

    bool IsInside() const { return position_ <= file_.size(); }
    bool IsAtEnd() const { return position_ >= file_.size(); }
    std::size_t Position() const { return position_; }
    void Skip(uint64_t count)
    {
        const std::size_t left = file_.size() - std::min(position_, file_.size());
        position_ = count <= left ? position_ + static_cast<std::size_t>(count) : file_.size() + 1;
    }

    uint32_t Byte() { return position_ < file_.size() ? static_cast<uint8_t>(file_[position_++]) : Overrun(); }
    uint32_t Little16()
    {
        const uint32_t low = Byte();
        return low | Byte() << 8;
    }
    uint32_t Big16()
    {
        const uint32_t high = Byte();
        return high << 8 | Byte();
    }
    uint32_t Big32()
    {
        const uint32_t high = Big16();
        return high << 16 | Big16();
    }

private:
    uint32_t Overrun()
    {
        position_ = file_.size() + 1;
        return 0;
    }

    std::string_view file_;
    std::size_t position_;
};

using Outline = std::optional<PictureOutline>;

Outline Known(PictureKind kind, uint64_t width, uint64_t height)
{
    if (width == 0 || height == 0) return std::nullopt;
    return PictureOutline{kind, width, height};
}

bool IsFrameHeader(uint32_t marker)
{
    // Start of frame, without the tables that have numbers between them.
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

Outline ReadJpeg(std::string_view file)
{
    Cursor cursor(file, 2);
    uint64_t width = 0;
    uint64_t height = 0;
    uint64_t scans = 0;
    while (!cursor.IsAtEnd()) {
        // Behind a scan its pixels lie between markers: bytes other than 0xFF, and 0xFF with a zero.
        if (cursor.Byte() != 0xFF) continue;
        uint32_t marker = cursor.Byte();
        while (marker == 0xFF)
            marker = cursor.Byte();
        if (marker == 0xD9) return scans > 0 ? Known(PictureKind::kJpeg, width, height) : std::nullopt;
        if (marker <= 0x01 || (marker >= 0xD0 && marker <= 0xD8)) continue;  // these stand alone
        const std::size_t begin = cursor.Position();
        const uint32_t length = cursor.Big16();
        if (length < 2) return std::nullopt;
        if (IsFrameHeader(marker)) {
            cursor.Byte();
            height = cursor.Big16();
            width = cursor.Big16();
        } else if (marker == 0xDA && ++scans * width * height > kMaxScannedPixels) {
            return std::nullopt;
        }
        cursor = Cursor(file, begin);
        cursor.Skip(length);
    }
    return std::nullopt;
}

void SkipColorTable(Cursor& cursor, uint32_t flags)
{
    if ((flags & 0x80) != 0) cursor.Skip(3ULL << ((flags & 7) + 1));
}

void SkipSubBlocks(Cursor& cursor)
{
    while (const uint32_t length = cursor.Byte())
        cursor.Skip(length);
}

Outline ReadGif(std::string_view file)
{
    Cursor cursor(file, 6);
    const uint32_t screenWidth = cursor.Little16();
    const uint32_t screenHeight = cursor.Little16();
    const uint32_t screenFlags = cursor.Byte();
    cursor.Skip(2);
    SkipColorTable(cursor, screenFlags);
    uint64_t width = 0;
    uint64_t height = 0;
    while (!cursor.IsAtEnd()) {
        const uint32_t introducer = cursor.Byte();
        if (introducer == 0x3B) return Known(PictureKind::kGif, width, height);
        if (introducer == 0x21) {
            cursor.Byte();
            SkipSubBlocks(cursor);
            continue;
        }
        if (introducer != 0x2C) return std::nullopt;
        cursor.Skip(4);
        const uint32_t frameWidth = cursor.Little16();
        const uint32_t frameHeight = cursor.Little16();
        if (frameWidth == 0 || frameHeight == 0) return std::nullopt;
        width = std::max<uint64_t>({width, screenWidth, frameWidth});
        height = std::max<uint64_t>({height, screenHeight, frameHeight});
        SkipColorTable(cursor, cursor.Byte());
        cursor.Byte();
        SkipSubBlocks(cursor);
        if (!cursor.IsInside()) return std::nullopt;
    }
    // Only the end mark is missing.
    return cursor.IsInside() ? Known(PictureKind::kGif, width, height) : std::nullopt;
}

Outline ReadPng(std::string_view file)
{
    constexpr uint32_t kHeader = 0x49484452, kEnd = 0x49454E44;  // IHDR, IEND
    Cursor cursor(file, 8);
    if (cursor.Big32() != 13 || cursor.Big32() != kHeader) return std::nullopt;
    const uint64_t width = cursor.Big32();
    const uint64_t height = cursor.Big32();
    cursor.Skip(5 + 4);
    while (!cursor.IsAtEnd()) {
        const uint64_t length = cursor.Big32();
        const uint32_t type = cursor.Big32();
        cursor.Skip(length + 4);
        if (type == kEnd) return cursor.IsInside() ? Known(PictureKind::kPng, width, height) : std::nullopt;
    }
    return std::nullopt;
}

}  // namespace

std::optional<PictureOutline> ReadPictureOutline(std::string_view file)
{
    if (file.starts_with("\xFF\xD8\xFF")) return ReadJpeg(file);
    if (file.starts_with("GIF8")) return ReadGif(file);
    if (file.starts_with("\x89PNG\r\n\x1A\n")) return ReadPng(file);
    return PictureOutline{};
}

}  // namespace marbex::platform
