#pragma once

// The receipts that the tills print and the judge looks for. Till and judge make the same ones from the same numbers.

#include <cstdint>
#include <string>
#include <vector>

namespace marbex::soak {

// A small generator of our own: the same numbers everywhere.
class Dice {
public:
    explicit Dice(uint64_t seed) : state_(seed) {}
    uint64_t Next();
    uint32_t Below(uint32_t limit) { return static_cast<uint32_t>(Next() % limit); }
    bool Percent(uint32_t chance) { return Below(100) < chance; }
    // From least to most, short ones far more often: the logarithm of the result falls off quadratically.
    uint32_t MostlyShort(uint32_t least, uint32_t most);

private:
    uint64_t state_;
};

enum class JobKind : uint8_t { kText, kBarcode, kPicture, kCut };
enum class Mode : uint8_t { kSync, kAsync, kSyncTransaction, kAsyncTransaction };

struct Job {
    JobKind kind = JobKind::kText;
    int lines = 1;  // of a text
    std::string text;
};

struct Receipt {
    uint32_t number = 0;
    Mode mode = Mode::kSync;
    std::vector<Job> jobs;

    bool Async() const { return mode == Mode::kAsync || mode == Mode::kAsyncTransaction; }
    bool Transaction() const { return mode == Mode::kSyncTransaction || mode == Mode::kAsyncTransaction; }
};

// number: below 100000.
Receipt MakeReceipt(uint64_t seed, uint32_t number);

// Where something on the paper belongs: the receipt's number, the job's number in it, which line of how many.
struct Mark {
    uint32_t receipt = 0;
    uint32_t job = 0;
    int line = 1;
    int lines = 1;
    bool last = true;  // nothing follows on its line: else the link broke behind it
};

std::string BarcodeData(uint32_t receipt, uint32_t job);
// A picture of blocks, a bit each, as a file in the BMP format; its dots are to be printed one to one.
inline constexpr int kPictureWidth = 256;
void WritePicture(const std::string& file, uint32_t receipt, uint32_t job);

// What a line of text, the data of a bar code or the rows of a picture, one at least, say: the whole marks in them, in
// their order.
std::vector<Mark> MarksIn(const std::string& line);
std::vector<Mark> MarkOfBarcode(const std::string& data);
std::vector<Mark> MarkOfPicture(const std::vector<std::vector<uint8_t>>& rows);

}  // namespace marbex::soak
