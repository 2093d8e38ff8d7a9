#include "printer/picture.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "platform/files.h"
#include "temp_folder.h"

namespace marbex::printer {
namespace {

std::string& DebugOutput()
{
    static std::string output;
    return output;
}

class CPictureTest : public testing::Test {
protected:
    void SetUp() override
    {
        folder_ = tests::MakeTemporaryFolder();
        DebugOutput().clear();
        platform::CaptureDebugOutput([](std::string_view text) { DebugOutput() += text; });
    }
    void TearDown() override
    {
        platform::CaptureDebugOutput(nullptr);
        std::filesystem::remove_all(folder_);
    }

    std::string Write(const std::string& name, const std::string& bytes)
    {
        std::ofstream(folder_ / name, std::ios::binary) << bytes;
        return (folder_ / name).string();
    }

    std::filesystem::path folder_;
};

// Two black and two white pixels side by side: one bit a pixel.
const std::string kSmallBmp(
    "BM\x42\0\0\0\0\0\0\0\x3E\0\0\0"
    "\x28\0\0\0\4\0\0\0\1\0\0\0\1\0\1\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"
    "\0\0\0\0\xFF\xFF\xFF\0"
    "\x30\0\0\0",
    66);

TEST_F(CPictureTest, LoadsAndRenders)
{
    CPicture picture;
    std::vector<uint32_t> pixels(4, 7);
    EXPECT_FALSE(picture.Render(4, 1, 0, 1, pixels));
    EXPECT_EQ(pixels, std::vector<uint32_t>(4, 7));

    ASSERT_TRUE(picture.Load(Write("small.bmp", kSmallBmp)));
    EXPECT_EQ(picture.Width(), 4U);
    EXPECT_EQ(picture.Height(), 1U);
    ASSERT_TRUE(picture.Render(4, 1, 0, 1, pixels));
    EXPECT_EQ(pixels, (std::vector<uint32_t>{0, 0, 0xFFFFFF, 0xFFFFFF}));
    EXPECT_EQ(DebugOutput(), "");

    // A failed load lets go of the picture before.
    EXPECT_FALSE(picture.Load((folder_ / "missing.bmp").string()));
    EXPECT_EQ(picture.Width(), 0U);
}

TEST_F(CPictureTest, TellsWhatWentWrongWithoutABox)
{
    CPicture picture;
    EXPECT_FALSE(picture.Load((folder_ / "missing.bmp").string()));
    EXPECT_EQ(DebugOutput(), "CPicture Error: No such file or directory\n");

    DebugOutput().clear();
    EXPECT_FALSE(picture.Load(folder_.string()));
    EXPECT_EQ(DebugOutput().rfind("CPicture Error: ", 0), 0U);

    for (const std::string& bytes : {std::string(), std::string("Dear customer,\n"), kSmallBmp.substr(0, 60)}) {
        DebugOutput().clear();
        EXPECT_FALSE(picture.Load(Write("letter.bmp", bytes)));
        EXPECT_EQ(DebugOutput(), "CPicture Error: IPicture interface is not supported\t\n");
    }
}

}  // namespace
}  // namespace marbex::printer
