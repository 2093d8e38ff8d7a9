#include "account/paper_account.h"

#include <algorithm>

namespace marbex::soak {
namespace {

namespace vp = virtual_printer;

constexpr std::size_t kStreamKept = 1U << 18U;  // far more than a printer's buffer

}  // namespace

int PaperAccount::Found::Copies() const
{
    int most = 0;
    for (const auto& [line, count] : copies) {
        most = std::max(most, count);
    }
    return most;
}

bool PaperAccount::Found::Whole() const
{
    return static_cast<int>(copies.size()) == lines;
}

void PaperAccount::Begin()
{
    jobs_.clear();
    breaks_.clear();
    closedBreaks_ = 0;
    last_ = furthest_ = furthestWhole_ = {};
    line_.clear();
}

const PaperAccount::Found& PaperAccount::Of(JobKey job) const
{
    static const Found kNothing;
    const auto found = jobs_.find(job);
    return found == jobs_.end() ? kNothing : found->second;
}

bool PaperAccount::MayHaveBeenUnderWay(JobKey job, Loss loss) const
{
    return std::any_of(breaks_.begin(), breaks_.end(), [=](const Break& one) {
        return one.before <= job && job <= one.after && (one.power || loss == Loss::kAny);
    });
}

void PaperAccount::Happened(const vp::Happening& happening)
{
    const auto* image = std::get_if<vp::RasterImage>(&happening);
    for (const Mark& mark : MarksOf(happening)) {
        if (image == nullptr || image->complete) {
            See(mark, false);
        }
    }
    connections_ += std::holds_alternative<vp::Connected>(happening) ? 1 : 0;
    connections_ -= std::holds_alternative<vp::Disconnected>(happening) ? 1 : 0;
    if (const auto* off = std::get_if<vp::PowerOff>(&happening)) {
        LosePower(*off);
    }
    const auto* cancelled = std::get_if<vp::Cancelled>(&happening);
    const bool power =
        std::holds_alternative<vp::PowerOff>(happening) || std::holds_alternative<vp::PowerOn>(happening);
    if (power || std::holds_alternative<vp::Disconnected>(happening) ||
        (cancelled != nullptr && cancelled->discarded > 0)) {
        breaks_.push_back({furthest_, power});
    }
}

void PaperAccount::Received(std::span<const uint8_t> bytes)
{
    stream_.insert(stream_.end(), bytes.begin(), bytes.end());
    streamEnd_ += bytes.size();
    if (stream_.size() > 2 * kStreamKept) {
        stream_.erase(stream_.begin(), stream_.end() - kStreamKept);
    }
}

std::vector<Mark> PaperAccount::MarksOf(const vp::Happening& happening)
{
    if (const auto* text = std::get_if<vp::TextLine>(&happening)) {
        line_ += text->text;
        return text->wrapped ? std::vector<Mark>{} : MarksIn(std::exchange(line_, {}));
    }
    if (const auto* code = std::get_if<vp::Barcode>(&happening)) {
        return code->printed ? MarkOfBarcode(code->data) : std::vector<Mark>{};
    }
    if (const auto* image = std::get_if<vp::RasterImage>(&happening)) {
        return MarkOfPicture(image->rows);
    }
    return std::holds_alternative<vp::Cut>(happening) ? MarkOfCut() : std::vector<Mark>{};
}

// A cut bears no mark. It is that of the receipt seen last; but when the link broke since, and that receipt has been
// cut or its cut may have been lost unseen, it may as well be that of one of which nothing else has come.
std::vector<Mark> PaperAccount::MarkOfCut() const
{
    const Receipt receipt = MakeReceipt(seed_, last_.receipt);
    const Mark mark{receipt.number, static_cast<uint32_t>(receipt.jobs.size() - 1), 1, 1};
    const bool broken = closedBreaks_ != breaks_.size();
    const bool nobodys = broken && (!certain_ || Of({mark.receipt, mark.job}).Copies() > 0);
    const bool cuts = last_.receipt != 0 && receipt.jobs.back().kind == JobKind::kCut;
    return cuts && !nobodys ? std::vector<Mark>{mark} : std::vector<Mark>{};
}

void PaperAccount::See(const Mark& mark, bool lost)
{
    const JobKey key{mark.receipt, mark.job};
    Found& found = jobs_[key];
    found.lines = mark.lines;
    last_ = key;
    furthest_ = std::max(furthest_, key);
    // What comes again, or stands on a line begun before the loss, does not tell how far it went.
    for (; mark.last && closedBreaks_ < breaks_.size() && breaks_[closedBreaks_].before < key; ++closedBreaks_) {
        breaks_[closedBreaks_].after = key;
    }
    if (lost) {
        found.lostByPrinter = true;
        return;
    }
    if (++found.copies[mark.line] == 1 && found.Whole()) {
        found.inOrder = furthestWhole_ < key;
        furthestWhole_ = std::max(furthestWhole_, key);
    }
}

// What would have been printed of the bytes that were lost.
void PaperAccount::LosePower(const vp::PowerOff& off)
{
    const uint64_t streamBegin = streamEnd_ - stream_.size();
    const uint64_t from = std::max(off.from, streamBegin);
    vp::VirtualPrinter paper(model_);
    paper.Feed("\x1B*b2M");  // it may be in the middle of a picture, whose rows are compressed
    paper.Feed(std::span(stream_).subspan(static_cast<std::size_t>(from - streamBegin)));
    std::exchange(line_, {});
    for (const vp::Happening& happening : paper.Happenings()) {
        for (const Mark& mark : MarksOf(happening)) {
            See(mark, true);
        }
    }
}

}  // namespace marbex::soak
