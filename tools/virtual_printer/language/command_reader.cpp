#include "virtual_printer/language/command_reader.h"

#include <cctype>
#include <utility>

namespace marbex::virtual_printer {
namespace {

constexpr uint8_t kLf = 0x0A;
constexpr uint8_t kCr = 0x0D;
constexpr uint8_t kCan = 0x18;
constexpr uint8_t kEsc = 0x1B;
constexpr uint8_t kFs = 0x1C;
constexpr uint8_t kGs = 0x1D;
constexpr uint8_t kUs = 0x1F;

constexpr std::size_t kLongestNumber = 8;  // digits of a raster command
constexpr int kLongestRow = 4096;          // bytes of a compressed raster row
constexpr std::size_t kLongestStartUp = 32;

}  // namespace

CommandReader::CommandReader(std::function<void(const Command&)> sink, bool displayLine)
    : sink_(std::move(sink)), displayLine_(displayLine)
{
}

void CommandReader::Put(uint8_t byte)
{
    if (current_.bytes.empty()) {
        current_.at = position_;
    }
    ++position_;
    current_.bytes.push_back(byte);
    if (length_ == 0) {
        Judge();
    } else if (current_.bytes.size() == length_) {
        Done(current_.op);
    }
}

Bytes CommandReader::Abandon()
{
    Bytes bytes = std::exchange(current_.bytes, {});
    length_ = 0;
    inPayload_ = false;
    return bytes;
}

void CommandReader::Judge()
{
    const uint8_t first = current_.bytes[0];
    switch (first) {
        case kEsc:
            return JudgeEscape();
        case kGs:
            return JudgeGroup();
        case kFs:
            return JudgeField();
        case kUs:
            if (current_.bytes.size() < 2) {
                return;
            }
            return current_.bytes[1] == '$' ? Expect(Op::kDisplayPosition, displayLine_ ? 3 : 4)
                                            : UnknownUpTo(1, "control character");
        case kLf:
            return Done(Op::kLineFeed);
        case kCr:
            return Done(Op::kCarriageReturn);
        case kCan:
            return Done(Op::kCancel);
        default:
            return first < 0x20 || first == 0x7F ? UnknownUpTo(1, "control character") : Done(Op::kCharacter);
    }
}

void CommandReader::JudgeEscape()
{
    const Bytes& b = current_.bytes;
    if (b.size() < 2) {
        return;
    }
    switch (b[1]) {
        case '@':
            return Done(Op::kInitialise);
        case 'i':
            return Done(Op::kFullCut);
        case 'm':
            return Done(Op::kPartialCut);
        case '!':
            return Expect(Op::kPrintMode, 3);
        case 't':
            return Expect(Op::kTable, 3);
        case 'a':
            return Expect(Op::kAlign, 3);
        case '$':
            return Expect(Op::kPosition, 4);
        case 'p':
            return Expect(Op::kDrawer, 5);
        case 0xB2:
            return Expect(Op::kDisplaySelect, 3);
        case 0xA0:
            return Expect(Op::kDisplayClear, 3);
        case '&':
        case '*':
            return JudgeRaster();
        default:
            // A control character may begin a command of its own.
            return UnknownUpTo(b[1] < 0x20 ? 1 : 2, "no such ESC command");
    }
}

void CommandReader::JudgeGroup()
{
    const Bytes& b = current_.bytes;
    if (b.size() < 2) {
        return;
    }
    switch (b[1]) {
        case '!':
            return Expect(Op::kScale, 3);
        case 'L':
            return Expect(Op::kMargin, 4);
        case 'I':
            return Expect(Op::kIdentity, 3);
        case 'h':
            return Expect(Op::kBarcodeHeight, 3);
        case 'w':
            return Expect(Op::kBarcodeModule, 3);
        case 'H':
            return Expect(Op::kBarcodeText, 3);
        case 0xF8:
            return Done(Op::kMarkFeed);
        case 'e':
            if (b.size() == 3) {
                b[2] == 3 ? Expect(Op::kPresenter, 4) : Done(Op::kPresenter);
            }
            return;
        case 'k':
            return JudgeBarcode();
        default:
            return UnknownUpTo(b[1] < 0x20 ? 1 : 2, "no such GS command");
    }
}

void CommandReader::JudgeField()
{
    const Bytes& b = current_.bytes;
    if (b.size() < 2) {
        return;
    }
    switch (b[1]) {
        case '%':
            return Expect(Op::kDoubleByte, 3);
        case 0xDD:
            return Expect(Op::kMechanism, 5);
        case '<':
            return JudgeStartUp();
        default:
            return UnknownUpTo(b[1] < 0x20 ? 1 : 2, "no such FS command");
    }
}

void CommandReader::JudgeStartUp()
{
    const uint8_t last = current_.bytes.back();
    if (last == '>') {
        Done(Op::kStartUp);
    } else if (last < 0x20) {
        UnknownUpTo(current_.bytes.size() - 1, "unfinished FS < command");
    } else if (current_.bytes.size() > kLongestStartUp) {
        UnknownUpTo(current_.bytes.size(), "unfinished FS < command");
    }
}

void CommandReader::JudgeBarcode()
{
    const Bytes& b = current_.bytes;
    inPayload_ = true;
    if (b.size() < 3) {
        return;
    }
    if (b[2] < 0x41 || b[2] > 0x49) {
        UnknownUpTo(3, "no such barcode");
    } else if (b.size() == 4) {
        current_.dataAt = 4;
        if (b[3] == 0) {
            Done(Op::kBarcode);
        } else {
            Expect(Op::kBarcode, 4U + b[3]);
        }
    }
}

// ESC & l # P, ESC * p # X, ESC * b # M, ESC * b # W data, ESC * r B: a group, a number in digits, a final capital.
void CommandReader::JudgeRaster()
{
    const Bytes& b = current_.bytes;
    if (b.size() < 4) {
        return;
    }
    const uint8_t last = b.back();
    if (std::isdigit(last) != 0 && b.size() <= 3 + kLongestNumber) {
        return;
    }
    if (last < 0x20) {
        return UnknownUpTo(b.size() - 1, "unfinished raster command");
    }
    current_.value = 0;
    for (std::size_t i = 3; i + 1 < b.size(); ++i) {
        current_.value = current_.value * 10 + (b[i] - '0');
    }
    const std::string form{static_cast<char>(b[1]), static_cast<char>(b[2]), static_cast<char>(last)};
    if (form == "&lP") {
        Done(Op::kRasterRows);
    } else if (form == "*pX") {
        Done(Op::kRasterX);
    } else if (form == "*bM") {
        Done(Op::kRasterMode);
    } else if (form == "*rB") {
        Done(Op::kRasterEnd);
    } else if (form == "*bW" && current_.value <= kLongestRow) {
        current_.dataAt = b.size();
        if (current_.value == 0) {
            Done(Op::kRasterRow);
        } else {
            inPayload_ = true;
            Expect(Op::kRasterRow, b.size() + static_cast<std::size_t>(current_.value));
        }
    } else {
        UnknownUpTo(b.size(), "no such raster command");
    }
}

void CommandReader::Expect(Op op, std::size_t length)
{
    current_.op = op;
    length_ = length;
}

void CommandReader::Done(Op op)
{
    current_.op = op;
    length_ = 0;
    inPayload_ = false;
    sink_(current_);
    current_.bytes.clear();
}

void CommandReader::UnknownUpTo(std::size_t length, const char* why)
{
    const Bytes all = Abandon();
    const auto end = all.begin() + static_cast<std::ptrdiff_t>(length);
    Command unknown;
    unknown.bytes.assign(all.begin(), end);
    unknown.why = why;
    unknown.at = current_.at;
    sink_(unknown);
    position_ -= all.size() - length;
    for (auto byte = end; byte != all.end(); ++byte) {
        Put(*byte);
    }
}

}  // namespace marbex::virtual_printer
