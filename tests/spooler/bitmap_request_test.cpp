#include "spooler/bitmap_request.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "opos/common.h"
#include "opos/printer.h"
#include "spooler/request_log.h"
#include "temp_folder.h"

namespace marbex::spooler {
namespace {

using namespace opos;

// A BMP of one gray.
std::string GrayBmp(uint32_t width, uint32_t height, uint8_t gray)
{
    std::string file("BM\0\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0", 18);
    const auto append = [&file](uint32_t value, int count) {
        for (int i = 0; i < count; ++i)
            file += static_cast<char>(value >> (8 * i) & 0xFF);
    };
    append(width, 4);
    append(height, 4);
    append(1, 2);
    append(24, 2);
    file.append(24, '\0');
    for (uint32_t row = 0; row < height; ++row) {
        file.append(std::size_t{width} * 3, static_cast<char>(gray));
        file.append((4 - width * 3 % 4) % 4, '\0');
    }
    return file;
}

class BitmapRequestTest : public testing::Test {
protected:
    void SetUp() override { folder_ = tests::MakeTemporaryFolder(); }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    std::string Write(const std::string& bytes)
    {
        std::ofstream(folder_ / "x.bmp", std::ios::binary) << bytes;
        return (folder_ / "x.bmp").string();
    }

    int32_t Prepare(const std::string& file, int32_t width, int32_t alignment = PTR_BM_LEFT,
                    int32_t rotation = PTR_RP_NORMAL)
    {
        return PrepareBitmap("CPrintSpoolerOrven", {file, width, alignment, rotation}, &payload_);
    }

    static std::vector<std::string> Tagged(std::vector<std::string> lines)
    {
        for (std::string& line : lines)
            line.insert(0, "[CPrintSpoolerOrven] --- PrintBitmap");
        return lines;
    }

    test::RequestLog log_;
    std::filesystem::path folder_;
    printer::BitmapDataStruct payload_{};
};

TEST_F(BitmapRequestTest, WritesEveryLineAndFillsThePayload)
{
    const std::string file = Write(GrayBmp(200, 100, 0));
    ASSERT_EQ(Prepare(file, 300, 12, PTR_RP_RIGHT90), OPOS_SUCCESS);
    EXPECT_EQ(
        test::RequestLog::Take(),
        Tagged({" Begin", " - FileName " + file, " - Alignment of 12 dots From the Left", " - Rotation right 90\xB0",
                " - Load Image " + file + " OK", " - Image Width = 200", " - Image Height = 100", " - Width 300",
                " - New Image Width = 300", " - New Image Height = 150", " End"}));
    EXPECT_EQ(payload_.width, 300U);
    EXPECT_EQ(payload_.height, 150U);
    EXPECT_EQ(payload_.alignment, 12);
    EXPECT_EQ(payload_.rotation, PTR_RP_RIGHT90);
    for (std::size_t i = 0; i < 300U * 150U; ++i)
        ASSERT_EQ(payload_.pixels[i], 0x00);

    ASSERT_EQ(Prepare(file, PTR_BM_ASIS, PTR_BM_CENTER, 4711), OPOS_SUCCESS);
    EXPECT_EQ(test::RequestLog::Take(),
              Tagged({" Begin", " - FileName " + file, " - Alignment Center", " - Load Image " + file + " OK",
                      " - Image Width = 200", " - Image Height = 100", " - Width PTR_BM_ASIS",
                      " - New Image Width = 200", " - New Image Height = 100", " End"}));
    EXPECT_EQ(payload_.height, 100U);
}

TEST_F(BitmapRequestTest, NamesEveryAlignmentAndRotation)
{
    const std::string file = Write(GrayBmp(1, 1, 0));
    const auto lines = [&](int32_t alignment, int32_t rotation) {
        EXPECT_EQ(Prepare(file, 1, alignment, rotation), OPOS_SUCCESS);
        const std::vector<std::string> all = test::RequestLog::Take();
        return std::vector<std::string>{all[2], all[3]};
    };
    EXPECT_EQ(lines(PTR_BM_LEFT, PTR_RP_NORMAL), Tagged({" - Alignment Left", " - No rotation"}));
    EXPECT_EQ(lines(PTR_BM_RIGHT, PTR_RP_LEFT90), Tagged({" - Alignment Right", " - Rotation left 90\xB0"}));
    EXPECT_EQ(lines(0, PTR_RP_ROTATE180), Tagged({" - Alignment of 0 dots From the Left", " - Rotation 180\xB0"}));
}

TEST_F(BitmapRequestTest, HeightFollowsTheWidth)
{
    ASSERT_EQ(Prepare(Write(GrayBmp(3, 2, 200)), 2), OPOS_SUCCESS);
    EXPECT_EQ(payload_.height, 1U);  // truncated

    ASSERT_EQ(Prepare(Write(GrayBmp(40000, 1, 200)), 608), OPOS_SUCCESS);
    EXPECT_EQ(payload_.height, 1U);  // never nothing
    test::RequestLog::Take();

    ASSERT_EQ(Prepare(Write(GrayBmp(1, 40000, 200)), PTR_BM_ASIS), OPOS_SUCCESS);
    EXPECT_EQ(payload_.height, 40000U);
    test::RequestLog::Take();

    // 608 x 24320000 dots are too many.
    EXPECT_EQ(Prepare(Write(GrayBmp(1, 40000, 200)), 608), OPOS_E_ILLEGAL);
    const std::vector<std::string> lines = test::RequestLog::Take();
    EXPECT_EQ(lines[lines.size() - 2], "[CPrintSpoolerOrven] --- PrintBitmap - New Image Height = 24320000");
    EXPECT_EQ(lines.back(), "[CPrintSpoolerOrven] --- PrintBitmap - BitmapDataStruct Allocation failure");
    EXPECT_EQ(Prepare(Write(GrayBmp(1, 1, 200)), 0x7FFFFFFF), OPOS_E_ILLEGAL);
}

TEST_F(BitmapRequestTest, Refusals)
{
    const std::string text = Write("no picture");
    EXPECT_EQ(Prepare(text, 100), OPOS_E_NOEXIST);
    // A line of the log is cut at its length.
    const std::string refusal = "[CPrintSpoolerOrven] --- PrintBitmap - Load Image " + text + " NOT OK";
    EXPECT_EQ(test::RequestLog::Take().back(), refusal.substr(0, 124 - std::strlen("[2026/01/01 00:00:00:0000]")));
    EXPECT_EQ(Prepare(folder_.string(), 100), OPOS_E_NOEXIST);
    EXPECT_EQ(Prepare((folder_ / "missing.png").string(), 100), OPOS_E_NOEXIST);
    const std::string file = Write(GrayBmp(2, 2, 0));
    for (const int32_t width : {0, -1, -10, -12, INT32_MIN})
        EXPECT_EQ(Prepare(file, width), OPOS_E_ILLEGAL) << width;
}

}  // namespace
}  // namespace marbex::spooler
