#include "printer/raster_language.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "opos/printer.h"
#include "printer/scripted_port.h"

namespace marbex::printer {
namespace {

using namespace std::string_literals;
using test::ScriptedPort;
using test::Trace;

constexpr int32_t kRotations[] = {opos::PTR_RP_NORMAL, opos::PTR_RP_RIGHT90, opos::PTR_RP_LEFT90,
                                  opos::PTR_RP_ROTATE180};

BitmapDataStruct Bitmap(uint32_t width, uint32_t height, uint8_t gray, int32_t rotation = opos::PTR_RP_NORMAL)
{
    BitmapDataStruct bitmap{width, height, opos::PTR_BM_LEFT, rotation,
                            std::make_unique<uint8_t[]>(std::size_t{width} * height)};
    std::fill_n(bitmap.pixels.get(), std::size_t{width} * height, gray);
    return bitmap;
}

// The dot of the printed image, straight from the definition of the rotations.
bool IsBlack(const BitmapDataStruct& bitmap, uint32_t row, uint32_t column)
{
    uint32_t x = column, y = row;
    if (bitmap.rotation == opos::PTR_RP_ROTATE180) {
        x = bitmap.width - 1 - column;
        y = bitmap.height - 1 - row;
    } else if (bitmap.rotation == opos::PTR_RP_RIGHT90) {
        x = row;
        y = bitmap.height - 1 - column;
    } else if (bitmap.rotation == opos::PTR_RP_LEFT90) {
        x = bitmap.width - 1 - row;
        y = column;
    }
    return bitmap.pixels[std::size_t{y} * bitmap.width + x] < 127;
}

// Reads the raster language as the printer does.
class Paper {
public:
    explicit Paper(std::string stream) : rest_(std::move(stream))
    {
        announcedRows = Number("\x1B&l", 'P');
        leftEdge = Number("\x1B*p", 'X');
        EXPECT_EQ(Number("\x1B*b", 'M'), 2);
        while (rest_.starts_with("\x1B*b") && rest_ != "\x1B*b0M\x1B*rB") {
            const auto length = static_cast<std::size_t>(Number("\x1B*b", 'W'));
            rows.push_back(Expand(rest_.substr(0, length)));
            rest_.erase(0, length);
        }
        EXPECT_EQ(rest_, "\x1B*b0M\x1B*rB");
    }

    bool IsBlack(std::size_t row, std::size_t column) const
    {
        const std::string& bytes = rows[row];
        return column / 8 < bytes.size() && (static_cast<uint8_t>(bytes[column / 8]) >> (7 - column % 8) & 1) != 0;
    }

    int64_t announcedRows = 0;
    int64_t leftEdge = 0;
    std::vector<std::string> rows;

private:
    int64_t Number(const std::string& before, char after)
    {
        EXPECT_TRUE(rest_.starts_with(before));
        const std::size_t end = rest_.find(after, before.size());
        const int64_t number = std::stoll(rest_.substr(before.size(), end - before.size()));
        rest_.erase(0, end + 1);
        return number;
    }

    static std::string Expand(const std::string& compressed)
    {
        std::string bytes;
        for (std::size_t i = 0; i < compressed.size(); ++i) {
            bytes += compressed[i];
            if (i + 1 < compressed.size() && compressed[i + 1] == compressed[i]) {
                const auto run = static_cast<uint8_t>(compressed[i + 2]);
                EXPECT_GE(run, 2);
                bytes.append(run - 1u, compressed[i]);
                i += 2;
            }
        }
        EXPECT_TRUE(bytes.empty() || bytes.back() != 0) << "trailing white";
        return bytes;
    }

    std::string rest_;
};

class RasterTest : public testing::Test {
protected:
    int32_t Print(const BitmapDataStruct& bitmap, uint32_t rasterWidth = 608)
    {
        trace.clear();
        return PrintRaster(bitmap, rasterWidth, PrinterLink(&port));
    }

    std::string Sent() const
    {
        std::string sent;
        for (const std::string& line : trace)
            sent += line.substr(6);
        return sent;
    }

    Trace trace;
    ScriptedPort port{trace};
};

TEST_F(RasterTest, RunsOfMoreThan255BytesAreSplit)
{
    for (const uint32_t bytes : {255u, 256u, 257u, 510u, 600u}) {
        Print(Bitmap(bytes * 8, 1, 0));
        const Paper paper(Sent());
        ASSERT_EQ(paper.rows.size(), 1u);
        EXPECT_EQ(paper.rows[0], std::string(bytes, '\xFF'));
    }
}

TEST_F(RasterTest, EveryDotOfEveryRotationArrives)
{
    std::mt19937 random(20);
    for (const auto& [width, height] :
         {std::pair{1u, 1u}, {7u, 3u}, {8u, 8u}, {9u, 17u}, {33u, 16u}, {61u, 40u}, {100u, 75u}}) {
        for (const int32_t rotation : kRotations) {
            BitmapDataStruct bitmap = Bitmap(width, height, 0, rotation);
            for (std::size_t i = 0; i < std::size_t{width} * height; ++i) {
                // Long runs and lone dots, and grays around the limit.
                constexpr uint8_t kGrays[] = {0x00, 0xFF, 126, 127, 128};
                bitmap.pixels[i] = i % 50 < 25 ? 0 : kGrays[random() % 5];
            }
            ASSERT_EQ(Print(bitmap), 0);
            const Paper paper(Sent());
            const bool turned = rotation == opos::PTR_RP_RIGHT90 || rotation == opos::PTR_RP_LEFT90;
            const uint32_t rows = turned ? width : height, dots = turned ? height : width;
            ASSERT_EQ(paper.announcedRows, rows);
            ASSERT_EQ(paper.rows.size(), rows);
            for (uint32_t row = 0; row < rows; ++row) {
                EXPECT_LE(paper.rows[row].size(), (dots + 7) / 8);
                for (uint32_t column = 0; column < dots + 7; ++column) {
                    ASSERT_EQ(paper.IsBlack(row, column), column < dots && IsBlack(bitmap, row, column))
                        << width << " x " << height << " turned " << rotation << " at " << row << ", " << column;
                }
            }
        }
    }
}

TEST_F(RasterTest, PiecesHold900BytesAndEndBetweenRows)
{
    std::mt19937 random(21);
    BitmapDataStruct bitmap = Bitmap(608, 100, 0);
    for (std::size_t i = 0; i < 608 * 100; ++i)
        bitmap.pixels[i] = random() % 2 != 0 ? 0 : 0xFF;
    Print(bitmap);
    ASSERT_GT(trace.size(), 5u);
    for (std::size_t i = 2; i + 1 < trace.size(); ++i) {
        const std::size_t length = trace[i].size() - 6;
        EXPECT_GE(length, 900u);
        EXPECT_LT(length, 1020u);
        EXPECT_TRUE(trace[i].starts_with("write \x1B*b"));
    }
}

TEST_F(RasterTest, TheFirstFailingWriteEndsIt)
{
    std::mt19937 random(22);
    BitmapDataStruct bitmap = Bitmap(608, 100, 0);
    for (std::size_t i = 0; i < 608 * 100; ++i)
        bitmap.pixels[i] = random() % 2 != 0 ? 0 : 0xFF;
    for (const std::size_t failing : {0u, 1u, 2u, 4u}) {
        ScriptedPort fresh(trace);
        fresh.failingWrite = failing;
        trace.clear();
        EXPECT_EQ(PrintRaster(bitmap, 608, PrinterLink(&fresh)), kEncoderPortFailed);
        EXPECT_EQ(trace.size(), failing + 1);
    }
}

}  // namespace
}  // namespace marbex::printer
