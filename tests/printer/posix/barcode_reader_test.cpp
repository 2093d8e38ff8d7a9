// A barcode is right when a reader that nobody here wrote reads it. zbarimg reads every symbology that we draw; one
// call reads all pictures of a symbology.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "printer/barcode_engine.h"
#include "temp_folder.h"

namespace marbex::printer {
namespace {

constexpr uint32_t kModuleWidth = 2;
constexpr int kSamples = 80;

struct Sample {
    std::string data;
    std::string text;  // what a reader gives for it
};

class RandomData {
public:
    std::string Of(std::string_view characters, std::size_t length)
    {
        std::string text;
        for (std::size_t i = 0; i < length; ++i)
            text += characters[Below(characters.size())];
        return text;
    }
    std::string Digits(std::size_t length) { return Of("0123456789", length); }
    std::size_t Below(std::size_t limit) { return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random_); }

private:
    std::mt19937 random_{20240611};
};

class BarcodeReader : public testing::Test {
protected:
    void SetUp() override
    {
        if (std::system("command -v zbarimg >/dev/null") != 0) GTEST_SKIP() << "zbarimg (zbar-tools) is not installed";
        folder_ = tests::MakeTemporaryFolder();
    }
    void TearDown() override
    {
        if (!folder_.empty()) std::filesystem::remove_all(folder_);
    }

    void ExpectRead(Symbology symbology, const std::string& zbarName, const std::vector<Sample>& samples)
    {
        std::ofstream list(folder_ / "list");
        for (std::size_t i = 0; i < samples.size(); ++i) {
            BarcodeEngine engine;
            ASSERT_TRUE(engine.Encode(samples[i].data, symbology, kModuleWidth)) << samples[i].data;
            ASSERT_LT(engine.GetWidth(), BarRow::kDots);
            WritePicture(engine, folder_ / std::to_string(i));
            list << (folder_ / std::to_string(i)).string() << "\n";
        }
        list.close();
        const std::map<std::string, std::string> read = ReadPictures(zbarName);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            const auto found = read.find((folder_ / std::to_string(i)).string());
            ASSERT_NE(found, read.end()) << "not read: " << testing::PrintToString(samples[i].data);
            EXPECT_EQ(found->second, samples[i].text);
        }
    }

    // Of data that a reader gives back as they are.
    void ExpectItself(Symbology symbology, const std::string& zbarName,
                      const std::function<std::string(RandomData&)>& make)
    {
        RandomData random;
        std::vector<Sample> samples;
        for (int i = 0; i < kSamples; ++i) {
            const std::string data = make(random);
            samples.push_back({data, data});
        }
        ExpectRead(symbology, zbarName, samples);
    }

private:
    static void WritePicture(const BarcodeEngine& engine, const std::filesystem::path& path)
    {
        constexpr uint32_t kQuiet = 24 * kModuleWidth;
        constexpr int kRows = 40;
        std::string row(kQuiet, '\xFF');
        for (uint32_t dot = 0; dot < engine.GetWidth(); ++dot) {
            const bool black = (engine.Bars()[dot / 8] & (0x80U >> (dot % 8))) != 0;
            row += black ? '\0' : '\xFF';
        }
        row.append(kQuiet, '\xFF');
        std::ofstream file(path, std::ios::binary);
        file << "P5\n" << row.size() << " " << kRows << "\n255\n";
        for (int i = 0; i < kRows; ++i)
            file << row;
    }

    // What zbarimg read, by picture.
    std::map<std::string, std::string> ReadPictures(const std::string& zbarName) const
    {
        const std::string command = "xargs zbarimg --nodbus --quiet --xml '-S*.disable' -S" + zbarName + ".enable <" +
                                    (folder_ / "list").string() + " 2>/dev/null";
        std::string output;
        FILE* const pipe = popen(command.c_str(), "r");
        char buffer[4096];
        for (std::size_t count = 0; (count = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
            output.append(buffer, count);
        pclose(pipe);

        std::map<std::string, std::string> read;
        const auto between = [&output](std::size_t& at, const std::string& before, const std::string& after) {
            at = output.find(before, at);
            if (at == std::string::npos) return std::string();
            const std::size_t first = at + before.size();
            at = output.find(after, first);
            return output.substr(first, at - first);
        };
        for (std::size_t at = 0; at != std::string::npos;) {
            const std::string picture = between(at, "<source href='", "'");
            const std::size_t end = output.find("</source>", at);
            const std::string data = between(at, "<![CDATA[", "]]>");
            if (at < end) read[picture] = data;
            at = end;
        }
        return read;
    }

    std::filesystem::path folder_;
};

std::vector<Sample> WithCheckDigits(Symbology symbology, std::size_t digits)
{
    RandomData random;
    std::vector<Sample> samples;
    for (int i = 0; i < kSamples; ++i) {
        const std::string data = random.Digits(digits);
        BarcodeEngine engine;
        EXPECT_TRUE(engine.Encode(data, symbology, kModuleWidth));
        samples.push_back({data, engine.GetHriText()});
        samples.push_back({engine.GetHriText(), engine.GetHriText()});
    }
    return samples;
}

TEST_F(BarcodeReader, ReadsUpcA)
{
    // The reader takes a UPC-A for the EAN 13 that begins with 0, which it is.
    std::vector<Sample> samples = WithCheckDigits(Symbology::kUpcA, 11);
    for (Sample& sample : samples)
        sample.text.insert(0, "0");
    ExpectRead(Symbology::kUpcA, "ean13", samples);
}
TEST_F(BarcodeReader, ReadsEan13)
{
    ExpectRead(Symbology::kEan13, "ean13", WithCheckDigits(Symbology::kEan13, 12));
}
TEST_F(BarcodeReader, ReadsEan8)
{
    ExpectRead(Symbology::kEan8, "ean8", WithCheckDigits(Symbology::kEan8, 7));
}

TEST_F(BarcodeReader, ReadsUpcE)
{
    // Expands the six digits of a UPC-E by the standard's table, so that every row of it is met, and shortens them
    // again.
    RandomData random;
    std::vector<Sample> samples;
    for (int i = 0; i < 2 * kSamples; ++i) {
        const std::string six = random.Digits(6);
        const char last = six[5];
        std::string upcA = "0";
        if (last <= '2') {
            upcA += six.substr(0, 2) + last + "0000" + six.substr(2, 3);
        } else if (last == '3') {
            if (six[2] <= '2') continue;  // another row of the table is right for it
            upcA += six.substr(0, 3) + "00000" + six.substr(3, 2);
        } else if (last == '4') {
            if (six[3] == '0') continue;
            upcA += six.substr(0, 4) + "00000" + six[4];
        } else {
            if (six[4] == '0') continue;
            upcA += six.substr(0, 5) + "0000" + last;
        }
        BarcodeEngine engine;
        ASSERT_TRUE(engine.Encode(upcA, Symbology::kUpcA, 1));
        const char check = engine.GetHriText().back();
        samples.push_back({upcA, "0" + six + check});
    }
    ASSERT_GT(samples.size(), 100U);
    ExpectRead(Symbology::kUpcE, "upce", samples);
}

TEST_F(BarcodeReader, ReadsCode39)
{
    ExpectItself(Symbology::kCode39, "code39", [](RandomData& random) {
        return random.Of("0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ-./ $%+", 1 + random.Below(30));
    });
}

TEST_F(BarcodeReader, ReadsCode32AsCode39)
{
    RandomData random;
    std::vector<Sample> samples;
    for (int i = 0; i < kSamples; ++i) {
        BarcodeEngine engine;
        ASSERT_TRUE(engine.Encode(random.Digits(8), Symbology::kCode32, kModuleWidth));
        const std::string nine = engine.GetHriText();
        ASSERT_EQ(nine.size(), 9U);
        std::string letters;
        for (unsigned long value = std::stoul(nine); letters.size() < 6; value /= 32) {
            letters.insert(letters.begin(), "0123456789BCDFGHJKLMNPQRSTUVWXYZ"[value % 32]);
        }
        samples.push_back({nine, letters});
    }
    ExpectRead(Symbology::kCode32, "code39", samples);
}

TEST_F(BarcodeReader, ReadsItf)
{
    ExpectItself(Symbology::kItf, "i25", [](RandomData& random) { return random.Digits(6 + 2 * random.Below(20)); });
}

TEST_F(BarcodeReader, ReadsCodabar)
{
    ExpectItself(Symbology::kCodabar, "codabar", [](RandomData& random) {
        return random.Of("ABCD", 1) + random.Of("0123456789-./:$+", 4 + random.Below(30)) + random.Of("ABCD", 1);
    });
}

std::string PrintableAscii()
{
    std::string characters;
    for (char c = ' '; c < 0x7F; ++c) {
        if (c != ']') characters += c;  // would end the CDATA section of the reader's answer
    }
    return characters;
}

TEST_F(BarcodeReader, ReadsCode93)
{
    ExpectItself(Symbology::kCode93, "code93",
                 [](RandomData& random) { return random.Of(PrintableAscii(), 1 + random.Below(40)); });
}

TEST_F(BarcodeReader, ReadsCode128InEveryCodeSet)
{
    RandomData random;
    std::string setA;
    for (char c = ' '; c <= '_'; ++c) {
        if (c != ']') setA += c;
    }
    std::vector<Sample> samples;
    for (int i = 0; i < 2 * kSamples; ++i) {
        Sample sample;
        char codeSet = '\0';
        for (std::size_t run = 0; run < 1 + random.Below(4); ++run) {
            const char next = "ABC"[random.Below(3)];
            if (next != codeSet) sample.data += {'{', next};
            codeSet = next;
            const std::size_t length = 1 + random.Below(10);
            const std::string text = codeSet == 'A'   ? random.Of(setA, length)
                                     : codeSet == 'B' ? random.Of(PrintableAscii(), length)
                                                      : random.Digits(2 * length);
            sample.text += text;
            for (const char c : text)
                sample.data += c == '{' ? "{{" : std::string(1, c);
        }
        samples.push_back(sample);
    }
    samples.push_back({"{Aab1C", "ab1C"});  // not in set A: shifted
    ExpectRead(Symbology::kCode128, "code128", samples);
}

}  // namespace
}  // namespace marbex::printer
