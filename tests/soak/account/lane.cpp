#include "account/lane.h"

#include <algorithm>
#include <chrono>
#include <sstream>
#include <utility>

#include "virtual_printer/operator/json_report.h"

namespace marbex::soak {
namespace {

namespace vp = virtual_printer;
using std::chrono::milliseconds;

constexpr auto kPatience = std::chrono::seconds(120);  // with a till that says nothing
constexpr auto kOpening = std::chrono::seconds(30);

}  // namespace

Lane::Lane(int number, uint64_t seed, const LaneOptions& options, std::string folder, Tally& tally)
    : tally_(tally),
      calm_(options.calm),
      seed_(seed),
      paper_(Station::ModelOf(number, static_cast<Cable>(number % kCables)), seed, options.confirms),
      station_(
          number, static_cast<Cable>(number % kCables), options.confirms, std::move(folder),
          [this](const vp::VirtualPrinter&, const vp::Happening& happening) { Happened(happening); },
          [this](std::span<const uint8_t> bytes) { paper_.Received(bytes); }),
      till_(std::make_unique<TillProcess>(station_.Folder()))
{
}

void Lane::Run(uint32_t receipts, uint32_t aSession)
{
    for (uint32_t first = 1; first <= receipts; first += aSession) {
        if (!RunSession(first, std::min(aSession, receipts - first + 1))) {
            return;
        }
    }
    tally_.Held(vitals_, station_.Title());
}

// False when the till does not go on.
bool Lane::RunSession(uint32_t first, uint32_t count)
{
    ++session_;
    failures_.clear();
    errors_ = 0;
    cleared_ = false;
    story_.Begin();
    station_.Printer().With([this](vp::VirtualPrinter&) { paper_.Begin(); });
    till_->Say("session " + std::to_string(seed_) + " " + std::to_string(first) + " " + std::to_string(count));
    if (!Opened()) {
        TellFailures();
        return false;
    }
    tally_.Opened();
    std::vector<Fate> fates;
    Vitals vitals;
    bool goesOn = false;
    {
        std::optional<Faults> faults;
        if (!calm_) {
            faults.emplace(station_.Printer(), seed_ * 7919 + session_, station_.CanLoseItsLink(),
                           [this](const std::string& fault) { story_.Note("FAULT " + fault); });
        }
        goesOn = Follow(fates, vitals);
        tally_.Did(static_cast<uint64_t>(faults ? faults->Done() : 0), fates.size(), errors_);
    }
    Quiesce();
    Judge(fates, first, count);
    if (!goesOn) {
        Fail(first, "the till said nothing for " + std::to_string(kPatience.count()) + " s, or ended");
    }
    TellFailures();
    if (goesOn) {
        vitals_.push_back(vitals);
        story_.Forget(station_.Folder());
    }
    return goesOn;
}

bool Lane::Opened()
{
    const auto line = till_->Next(kOpening);
    if (line) {
        story_.Note(*line);
    }
    if (line == "opened 0") {
        return true;
    }
    Fail(0, "cannot open a printer that nothing is done to: " + line.value_or("no answer"));
    return false;
}

// Reads what the till tells until the session is over.
bool Lane::Follow(std::vector<Fate>& fates, Vitals& vitals)
{
    while (const auto line = till_->Next(kPatience)) {
        std::istringstream words(*line);
        std::string what;
        words >> what;
        if (what == "fate") {
            Fate fate;
            words >> fate.job.receipt >> fate.job.job >> fate.fate >> fate.retries;
            fates.push_back(fate);
            continue;
        }
        story_.Note(*line);
        errors_ += what == "error" ? 1 : 0;
        cleared_ = cleared_ || line->ends_with(" CLEAR");
        if (what == "closed") {
            long close = 0;
            long slowest = 0;
            words >> close >> slowest;
            tally_.Closed(close, slowest);
        } else if (what == "vitals") {
            words >> vitals.heap >> vitals.descriptors >> vitals.threads;
            return true;
        }
    }
    return false;
}

// Until everything that was sent has come to the printer and is on paper, now that nothing is done to it any more.
void Lane::Quiesce()
{
    vp::PrinterServer& printer = station_.Printer();
    if (!printer.WaitFor([this](const vp::VirtualPrinter&) { return !paper_.Connected(); })) {
        Fail(0, "the till has closed the link, and it is still open");
    }
    // A plain line has no end; on a pseudo-terminal it is silent when all has come.
    uint64_t before = UINT64_MAX;
    for (uint64_t received = 0; received != before;) {
        before = received;
        printer.TakeWhatHasArrived();
        printer.With([&received](vp::VirtualPrinter& one) { received = one.Received(); });
    }
    printer.WaitFor([](const vp::VirtualPrinter& one) { return one.State().waitingBytes == 0; });
    station_.ForgetInput();
}

void Lane::Judge(const std::vector<Fate>& fates, uint32_t first, uint32_t count)
{
    station_.Printer().With([&](vp::VirtualPrinter&) {
        for (uint32_t number = first; number < first + count; ++number) {
            std::vector<Fate> own;
            for (const Fate& fate : fates) {
                if (fate.job.receipt == number) {
                    own.push_back(fate);
                }
            }
            JudgeReceipt(number, own);
        }
    });
}

void Lane::JudgeReceipt(uint32_t number, const std::vector<Fate>& fates)
{
    ReceiptEnd worst =
        fates.size() < MakeReceipt(seed_, number).jobs.size() ? ReceiptEnd::kReported : ReceiptEnd::kPrinted;
    bool twice = false;
    bool told = cleared_;
    for (const Fate& fate : fates) {
        ReceiptEnd end = ReceiptEnd::kPrinted;
        const std::string verdict = Verdict(fate, end);
        worst = std::max(worst, end);
        twice = twice || paper_.Of(fate.job).Copies() > 1;
        told = told || fate.fate != "done";
        if (!verdict.empty()) {
            Fail(number, "job " + std::to_string(fate.job.job) + " " + verdict);
        }
    }
    if (fates.size() < MakeReceipt(seed_, number).jobs.size() && !told) {
        worst = ReceiptEnd::kWrong;
        Fail(number, "ends in the middle, and nobody said why");
    }
    tally_.Ended(worst, station_.Confirms(), twice);
}

// On a plain line nobody sees that the printer at its end was without power for a moment, unless it is just being
// asked.
bool Lane::LostUnseen(JobKey job) const
{
    return station_.TheCable() == Cable::kSerial && paper_.MayHaveBeenUnderWay(job, PaperAccount::Loss::kPower);
}

// What is wrong about a job; nothing when its end is one that may be.
std::string Lane::Verdict(const Fate& fate, ReceiptEnd& end) const
{
    const PaperAccount::Found& found = paper_.Of(fate.job);
    const bool onPaper = found.Whole();
    end = ReceiptEnd::kWrong;
    if (fate.fate == "stuck") {
        return "never came to an end";
    }
    if (fate.fate == "silent") {
        return onPaper ? "was printed, and its end was never told" : "was neither printed nor reported";
    }
    if (found.Copies() > 1 + fate.retries) {
        return "is on paper " + std::to_string(found.Copies()) + " times after " + std::to_string(fate.retries) +
               " answers RETRY";
    }
    if (!found.inOrder && fate.retries == 0) {
        return "is on paper behind what was handed over after it";
    }
    if (fate.fate != "done") {
        end = ReceiptEnd::kReported;
    } else if (onPaper) {
        end = ReceiptEnd::kPrinted;
    } else if (found.lostByPrinter || LostUnseen(fate.job)) {
        end = ReceiptEnd::kLostByPrinter;
    } else if (!station_.Confirms() && paper_.MayHaveBeenUnderWay(fate.job, PaperAccount::Loss::kAny)) {
        end = ReceiptEnd::kUnderWay;
    } else {
        return "was said to be done and is not on paper";
    }
    return {};
}

void Lane::Happened(const vp::Happening& happening)
{
    paper_.Happened(happening);
    story_.Note("    printer " + vp::ToJson(happening));
}

void Lane::Fail(uint32_t receipt, const std::string& what)
{
    failures_.push_back({receipt, what});
}

// Tells what went wrong in a session, and keeps all that is known of it.
void Lane::TellFailures()
{
    if (failures_.empty()) {
        return;
    }
    const Failure& first = failures_.front();
    const std::string folder = station_.Folder() + "/failed-" + std::to_string(session_);
    const std::string excerpt = story_.Excerpt(first.receipt, station_.Folder());
    story_.Keep(station_.Folder(), folder);
    std::string title = "till " + station_.Title() + ", receipt " + std::to_string(first.receipt) + ", after " +
                        std::to_string(tally_.Receipts()) + " receipts of all tills: " + first.what;
    if (failures_.size() > 1) {
        title += " (and " + std::to_string(failures_.size() - 1) + " more in this session)";
    }
    tally_.Failed(failures_.size(), title, excerpt + "    all of it: " + folder + "\n");
}

}  // namespace marbex::soak
