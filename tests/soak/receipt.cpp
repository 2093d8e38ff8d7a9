#include "receipt.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <numeric>
#include <string_view>

namespace marbex::soak {
namespace {

constexpr int kBlock = 8;  // dots
constexpr int kBits = kPictureWidth / kBlock;
constexpr int kPictureHeight = 16;

std::string Numbered(const char* format, auto... numbers)
{
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), format, numbers...);
    return text.data();
}

unsigned CheckOf(std::string_view text)
{
    return std::accumulate(text.begin(), text.end(), 0U,
                           [](unsigned sum, char c) { return (sum * 31 + static_cast<uint8_t>(c)) & 0xFFFF; });
}

// "<00012.03.001/004 some filling 5A5A>": a line that a hole in it would damage.
std::string MarkedLine(const Mark& mark, Dice& dice)
{
    std::string line = Numbered("<%05u.%02u.%03d/%03d ", mark.receipt, mark.job, mark.line, mark.lines);
    for (uint32_t left = dice.Below(21); left > 0; --left) {
        line.push_back(static_cast<char>('a' + dice.Below(26)));
    }
    line.push_back(' ');
    return line + Numbered("%04X>", CheckOf(line));
}

Job TextJob(uint32_t receipt, uint32_t number, int lines, Dice& dice)
{
    Job job{JobKind::kText, lines, {}};
    for (int line = 1; line <= lines; ++line) {
        const bool bold = dice.Percent(10);
        job.text +=
            (bold ? "\x1B|bC" : "") + MarkedLine({receipt, number, line, lines}, dice) + (bold ? "\x1B|N" : "") + "\n";
    }
    return job;
}

uint32_t PictureBits(uint32_t receipt, uint32_t job)
{
    const uint32_t key = receipt << 6U | job;  // 17 and 6 bits
    return key << 9U | (key * 2654435761U >> 23U);
}

}  // namespace

uint64_t Dice::Next()
{
    // SplitMix64.
    uint64_t z = (state_ += 0x9E3779B97F4A7C15U);
    z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9U;
    z = (z ^ (z >> 27U)) * 0x94D049BB133111EBU;
    return z ^ (z >> 31U);
}

uint32_t Dice::MostlyShort(uint32_t least, uint32_t most)
{
    const double u = static_cast<double>(Below(1U << 20U)) / (1U << 20U);
    return static_cast<uint32_t>(least * std::pow(static_cast<double>(most) / least, u * u));
}

Receipt MakeReceipt(uint64_t seed, uint32_t number)
{
    Dice dice(seed * 1'000'003 + number);
    Receipt receipt{number, Mode::kAsync, {}};
    const uint32_t mode = dice.Below(100);
    receipt.mode = mode < 55   ? Mode::kAsync
                   : mode < 75 ? Mode::kSync
                   : mode < 90 ? Mode::kAsyncTransaction
                               : Mode::kSyncTransaction;
    const auto add = [&](int lines) {
        receipt.jobs.push_back(TextJob(number, static_cast<uint32_t>(receipt.jobs.size()), lines, dice));
    };
    add(1 + static_cast<int>(dice.Below(3)));
    if (dice.Percent(8)) {
        receipt.jobs.push_back({JobKind::kPicture, 1, {}});
    }
    for (uint32_t left = 1 + dice.Below(3); left > 0; --left) {
        // Now and then more than the printer, and all that lies between, takes at once.
        add(static_cast<int>(dice.Percent(2) ? 100 + dice.Below(700) : 1 + dice.Below(6)));
    }
    if (dice.Percent(12)) {
        receipt.jobs.push_back({JobKind::kBarcode, 1, {}});
    }
    add(1);
    if (dice.Percent(90)) {
        receipt.jobs.push_back({JobKind::kCut, 1, {}});
    }
    return receipt;
}

std::string BarcodeData(uint32_t receipt, uint32_t job)
{
    return Numbered("{B%05u.%02u", receipt, job);
}

void WritePicture(const std::string& file, uint32_t receipt, uint32_t job)
{
    // 24 bits a dot, bottom row first; every row is as the others.
    constexpr uint32_t kHeader = 54;
    constexpr uint32_t kSize = kHeader + kPictureWidth * kPictureHeight * 3;
    std::vector<uint8_t> bytes{'B', 'M'};
    const auto put = [&bytes](uint32_t number, int size) {
        for (int i = 0; i < size; ++i) {
            bytes.push_back(static_cast<uint8_t>(number >> (8 * i)));
        }
    };
    for (const uint32_t number :
         {kSize, 0U, kHeader, 40U, static_cast<uint32_t>(kPictureWidth), static_cast<uint32_t>(kPictureHeight)}) {
        put(number, 4);
    }
    put(1, 2);
    put(24, 2);
    for (int i = 0; i < 6; ++i) {
        put(0, 4);
    }
    const uint32_t bits = PictureBits(receipt, job);
    for (int row = 0; row < kPictureHeight; ++row) {
        for (int x = 0; x < kPictureWidth; ++x) {
            const bool black = (bits >> (kBits - 1 - x / kBlock) & 1U) != 0;
            bytes.insert(bytes.end(), 3, black ? uint8_t{0} : uint8_t{255});
        }
    }
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

std::vector<Mark> MarksIn(const std::string& line)
{
    std::vector<Mark> marks;
    for (std::size_t begin = line.find('<'); begin != std::string::npos; begin = line.find('<', begin + 1)) {
        const std::size_t end = line.find('>', begin);
        if (end == std::string::npos || end < begin + 23) {
            continue;
        }
        Mark mark;
        unsigned check = 0;
        const bool whole = std::sscanf(line.c_str() + begin, "<%5u.%2u.%3d/%3d ", &mark.receipt, &mark.job, &mark.line,
                                       &mark.lines) == 4 &&
                           std::sscanf(line.c_str() + end - 4, "%4X>", &check) == 1;
        if (whole && check == CheckOf(std::string_view(line).substr(begin, end - 4 - begin))) {
            mark.last = end + 1 == line.size();
            marks.push_back(mark);
        }
    }
    return marks;
}

std::vector<Mark> MarkOfBarcode(const std::string& data)
{
    Mark mark;
    if (std::sscanf(data.c_str(), "{B%5u.%2u", &mark.receipt, &mark.job) != 2) {
        return {};
    }
    return {mark};
}

std::vector<Mark> MarkOfPicture(const std::vector<std::vector<uint8_t>>& rows)
{
    if (rows.empty()) {
        return {};
    }
    const std::vector<uint8_t>& row = rows.front();
    uint32_t bits = 0;
    for (std::size_t i = 0; i < kBits; ++i) {
        bits = bits << 1U | (i < row.size() && row[i] == 0xFF ? 1U : 0U);
    }
    const uint32_t key = bits >> 9U;
    if (bits != PictureBits(key >> 6U, key & 0x3FU)) {
        return {};
    }
    return {{key >> 6U, key & 0x3FU, 1, 1}};
}

}  // namespace marbex::soak
