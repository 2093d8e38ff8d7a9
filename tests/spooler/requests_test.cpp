// What becomes of a barcode and of a picture before they are jobs: the log to the letter, and the payload.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "common/service_log_capture.h"
#include "common/story.h"
#include "common/wire_text.h"
#include "spooler/barcode_request.h"
#include "spooler/bitmap_request.h"
#include "temp_folder.h"

namespace marbex::spooler {
namespace {

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

// "@" in a line stands for the tag and the request's name, "FILE" for the picture's path.
class RequestStory : public tests::StoryTeller {
protected:
    RequestStory()
    {
        // Data (of so many of a character: 98*A), symbology, height, width, alignment, place of the text.
        verbs["barcode"] = [this](const Words& w) {
            name_ = "PrintBarCode";
            const std::string data = Data(w[0]);
            const BarcodeRequest request{data, Int(w[1]), Int(w[2]), Int(w[3]), Int(w[4]), Int(w[5])};
            return std::to_string(PrepareBarcode("Tag", w.size() == 6, engine_, request, &barcode_));
        };
        verbs["barcodeHas"] = [this](const Words&) {
            const auto& one = barcode_;
            return std::string(reinterpret_cast<const char*>(one.data), one.dataLength) + " " +
                   tests::Joined(std::vector<int64_t>{one.widthDots, one.symbology, one.height, one.moduleWidth,
                                                      one.alignment, one.textPosition});
        };
        // Pairs of bytes are exchanged; the partner of an odd last one is the white byte behind it.
        verbs["barsAreExchanged"] = [this](const Words&) {
            const uint32_t used = (barcode_.widthDots + 7) / 8;
            for (std::size_t i = 0; i < sizeof barcode_.bars; ++i)
                EXPECT_EQ(barcode_.bars[i], i < used ? engine_.Bars()[i ^ 1U] : 0) << i;
            return "";
        };
        verbs["moduleWidth"] = [](const Words& w) { return std::to_string(BarcodeModuleWidth(Int(w[0]))); };
        verbs["picture"] = [this](const Words& w) {
            std::ofstream(file_, std::ios::binary)
                << GrayBmp(Number(w[0]), Number(w[1]), static_cast<uint8_t>(Number(w[2])));
            return "";
        };
        verbs["text"] = [this](const Words&) { return std::ofstream(file_) << "no picture", ""; };
        // Width, alignment, rotation; the file or another.
        verbs["bitmap"] = [this](const Words& w) {
            name_ = "PrintBitmap";
            const std::string file = w.size() > 3 ? (folder_ / w[3]).string() : file_;
            return std::to_string(PrepareBitmap("Tag", {file, Int(w[0]), Int(w[1]), Int(w[2])}, &bitmap_));
        };
        verbs["bitmapHas"] = [this](const Words&) {
            const std::span pixels(bitmap_.pixels.get(), std::size_t{bitmap_.width} * bitmap_.height);
            EXPECT_EQ(std::ranges::count(pixels, pixels[0]), static_cast<std::ptrdiff_t>(pixels.size()));
            return tests::Joined(
                std::vector<int64_t>{bitmap_.width, bitmap_.height, bitmap_.alignment, bitmap_.rotation, pixels[0]});
        };
    }
    ~RequestStory() override { std::filesystem::remove_all(folder_); }

    static int32_t Int(const std::string& word) { return std::stoi(word); }

    static std::string Data(const std::string& word)
    {
        const std::size_t times = word.find('*');
        if (times == std::string::npos) return word == "." ? "" : test::FromWireText(word);
        return std::string(Number(word.substr(0, times)), word[times + 1]);
    }

    Words Written() const override
    {
        Words lines;
        const std::string tag = "[Tag] --- " + name_;
        for (std::string line : log_.Taken()) {
            for (const auto& [text, shown] : {std::pair<std::string, std::string>{tag, "@"}, {file_, "FILE"}}) {
                if (const std::size_t at = line.find(text); at != std::string::npos)
                    line.replace(at, text.size(), shown);
            }
            lines.push_back(test::WireText(line));
        }
        return lines;
    }
    void Forget() override { log_.Forget(); }

private:
    const test::ServiceLogCapture log_;
    std::string name_;
    const std::filesystem::path folder_{tests::MakeTemporaryFolder()};
    const std::string file_ = (folder_ / "x.bmp").string();
    printer::BarcodeEngine engine_;
    printer::BarcodeDataStruct barcode_{};
    printer::BitmapDataStruct bitmap_{};
};

const std::vector<tests::TextCase> kStories = tests::TextCasesIn(
#include "spooler/requests.txt"
);

TEST_P(RequestStory, Holds)
{
    Tell();
}

INSTANTIATE_TEST_SUITE_P(Spooler, RequestStory, testing::ValuesIn(kStories), tests::StoryName);

}  // namespace
}  // namespace marbex::spooler
