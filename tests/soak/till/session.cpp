#include "till/session.h"

#include <marbex/message_pump.h>
#include <opos/common.h>
#include <opos/printer.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <string_view>
#include <utility>

namespace marbex::soak {
namespace {

using namespace opos;

constexpr std::size_t kMostUnderWay = 24;  // jobs a till hands over before it waits for some of them
constexpr auto kPatience = std::chrono::seconds(60);
constexpr auto kIdleForGood = std::chrono::seconds(5);  // a device that is idle that long will tell nothing more
constexpr uint32_t kClearPercent = 8;
constexpr auto kEventPatience = std::chrono::seconds(5);

long long Milliseconds(std::chrono::steady_clock::duration time)
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
}

}  // namespace

Session::Session(uint64_t seed, std::string folder, std::string eventFile)
    : seed_(seed), folder_(std::move(folder)), eventFile_(std::move(eventFile)), answers_(seed ^ 0xA5A5U)
{
    control_.onComplete = [this](int32_t id) { Completed(id); };
    control_.onError = [this](int32_t code, int32_t extended) { return Answer(code, extended); };
    control_.onStatus = [](int32_t) {};
}

void Session::Print(uint32_t first, uint32_t count)
{
    if (!Open()) {
        return;
    }
    for (uint32_t number = first; number < first + count; ++number) {
        const Receipt receipt = MakeReceipt(seed_, number);
        // A till that calls and waits does so when nothing is under way.
        Settle(receipt.Async() ? kMostUnderWay : 0);
        SetAsync(receipt.Async());
        PrintReceipt(receipt);
    }
    Settle(0);
    Close();
    TellFates();
}

void Session::TellFates() const
{
    for (const Task& task : tasks_) {
        for (uint32_t job = task.firstJob; job <= task.lastJob; ++job) {
            std::printf("fate %u %u %s %d\n", task.receipt, job, task.fate, task.retries);
        }
    }
}

void Session::PrintOne(uint32_t number)
{
    if (!Open()) {
        return;
    }
    Receipt receipt = MakeReceipt(seed_, number);
    receipt.mode = Mode::kSync;
    PrintReceipt(receipt);
    DllRegisterServer();
    const auto end = Clock::now() + kEventPatience;
    while (!eventFile_.empty() && !ToldOfAnEnd() && Clock::now() < end) {
        RunMessages(50);
    }
    Close();
    TellFates();
}

// The event file is made anew at opening, and holds a letter, a tab and a number for an end of output.
bool Session::ToldOfAnEnd() const
{
    std::ifstream file(eventFile_);
    std::string events;
    return std::getline(file, events) && events.find("C\t") != std::string::npos;
}

void Session::PrintForEver()
{
    if (!Open()) {
        return;
    }
    for (uint32_t number = 1;; number = number % 99'999 + 1) {
        Receipt receipt = MakeReceipt(seed_, number);
        if (!eventFile_.empty()) {
            receipt.mode = Mode::kSync;  // nobody tells it of the end of the others
        }
        Settle(receipt.Async() ? kMostUnderWay : 0);
        SetAsync(receipt.Async());
        PrintReceipt(receipt);
        if (number % 4 == 0) {
            DllRegisterServer();
        }
        std::erase_if(tasks_, [](const Task& task) { return task.settled; });
    }
}

bool Session::Open()
{
    int32_t result = eventFile_.empty() ? Timed("OpenService", {"POSPrinter", "Till", &control_})
                                        : Timed("OpenService_NET", {"POSPrinter", "Till", eventFile_});
    if (result == 0) {
        result = Timed("ClaimDevice", {1000});
    }
    if (result == 0) {
        service_.Set(PIDX_DeviceEnabled, 1);
        result = service_.Get(PIDX_DeviceEnabled) == 1 ? 0 : OPOS_E_DISABLED;
    }
    async_ = false;
    std::printf("opened %d\n", result);
    if (result != 0) {
        service_.Call("CloseService");
    }
    return result == 0;
}

void Session::Close()
{
    const auto start = Clock::now();
    service_.Call("ReleaseDevice");
    service_.Call("CloseService");
    std::printf("closed %lld %lld\n", Milliseconds(Clock::now() - start), Milliseconds(slowest_));
}

void Session::PrintReceipt(const Receipt& receipt)
{
    if (receipt.Transaction()) {
        return HandTransaction(receipt);
    }
    // What comes after something that was reported lost is not printed: the till begins the receipt anew.
    const int clears = clears_;
    for (uint32_t job = 0; job < receipt.jobs.size() && clears == clears_; ++job) {
        if (!Hand(receipt, job)) {
            return;
        }
        RunMessages(0);
    }
}

bool Session::Hand(const Receipt& receipt, uint32_t job)
{
    Task& task = Begin(receipt.number, job, job, receipt.Async());
    const int32_t result = PrintJob(receipt.number, job, receipt.jobs[job]);
    Returned(task, result);
    return result == 0;
}

void Session::HandTransaction(const Receipt& receipt)
{
    const auto jobs = static_cast<uint32_t>(receipt.jobs.size());
    Task& task = Begin(receipt.number, 0, jobs - 1, receipt.Async());
    int32_t result = Timed("TransactionPrint", {PTR_S_RECEIPT, PTR_TP_TRANSACTION});
    for (uint32_t job = 0; job < jobs && result == 0; ++job) {
        result = PrintJob(receipt.number, job, receipt.jobs[job]);
    }
    // A transaction whose collecting failed is ended all the same.
    const int32_t printed = Timed("TransactionPrint", {PTR_S_RECEIPT, PTR_TP_NORMAL});
    Returned(task, result != 0 ? result : printed);
}

int32_t Session::PrintJob(uint32_t receipt, uint32_t number, const Job& job)
{
    switch (job.kind) {
        case JobKind::kText:
            return Timed("PrintNormal", {PTR_S_RECEIPT, job.text});
        case JobKind::kBarcode:
            return Timed("PrintBarCode", {PTR_S_RECEIPT, BarcodeData(receipt, number), PTR_BCS_Code128, 40, 300,
                                          PTR_BC_CENTER, PTR_BC_TEXT_NONE});
        case JobKind::kPicture: {
            const std::string file = folder_ + "/picture.bmp";
            WritePicture(file, receipt, number);
            return Timed("PrintBitmap", {PTR_S_RECEIPT, file, kPictureWidth, PTR_BM_LEFT});
        }
        case JobKind::kCut:
            break;
    }
    return Timed("CutPaper", {100});
}

Session::Task& Session::Begin(uint32_t receipt, uint32_t firstJob, uint32_t lastJob, bool async)
{
    std::printf("call %u %u\n", receipt, firstJob);
    Task task;
    task.receipt = receipt;
    task.firstJob = firstJob;
    task.lastJob = lastJob;
    task.async = async;
    return tasks_.emplace_back(task);
}

void Session::Returned(Task& task, int32_t result)
{
    task.outputId = service_.Get(PIDX_OutputID);
    std::printf("gave %u %u %d %d\n", task.receipt, task.firstJob, result, task.outputId);
    // An event may have told its end already.
    if (!task.settled && (result != 0 || !task.async)) {
        task.settled = true;
        task.fate = result == 0 ? "done" : "failed";
    }
    progress_ = Clock::now();
}

int32_t Session::Timed(const char* method, std::initializer_list<Argument> arguments)
{
    const auto start = Clock::now();
    const int32_t result = service_.Call(method, arguments);
    slowest_ = std::max(slowest_, Clock::now() - start);
    return result;
}

void Session::SetAsync(bool async)
{
    if (async != async_) {
        async_ = async;
        service_.Set(PIDXPtr_AsyncMode, async ? 1 : 0);
    }
}

std::size_t Session::UnderWay() const
{
    return static_cast<std::size_t>(
        std::count_if(tasks_.begin(), tasks_.end(), [](const Task& task) { return !task.settled; }));
}

bool Session::RunMessages(int milliseconds)
{
    const bool any = MarbexRunMessages(milliseconds) > 0;
    if (any) {
        progress_ = Clock::now();
    }
    return any;
}

// Until no more than so many are under way. What will never be told about is given a fate of its own.
void Session::Settle(std::size_t most)
{
    Clock::time_point idleSince = Clock::now();
    progress_ = idleSince;
    while (UnderWay() > most) {
        if (RunMessages(50) || service_.Get(PIDX_State) != OPOS_S_IDLE) {
            idleSince = Clock::now();
        }
        const bool idle = Clock::now() - idleSince > kIdleForGood;
        if (!idle && Clock::now() - progress_ < kPatience) {
            continue;
        }
        for (Task& task : tasks_) {
            if (!std::exchange(task.settled, true)) {
                task.fate = idle ? "silent" : "stuck";
            }
        }
    }
}

// Output ends in the order in which it was handed over: what should have ended before this one never will.
void Session::Completed(int32_t outputId)
{
    std::printf("complete %d\n", outputId);
    for (Task& task : tasks_) {
        if (!task.async || task.outputId == 0 || (task.settled && std::string_view(task.fate) != "cleared")) {
            continue;
        }
        if (task.outputId == outputId || (task.outputId < outputId && !task.settled)) {
            task.settled = true;
            task.fate = task.outputId == outputId ? "done" : "silent";
        }
    }
}

int32_t Session::Answer(int32_t code, int32_t extended)
{
    const bool clear = answers_.Percent(kClearPercent);
    std::printf("error %d %d %s\n", code, extended, clear ? "CLEAR" : "RETRY");
    clears_ += clear ? 1 : 0;
    for (Task& task : tasks_) {
        if (task.settled) {
            continue;
        }
        if (!clear) {
            ++task.retries;  // the first that has not ended is the one that failed
            break;
        }
        if (task.async) {
            task.settled = true;
            task.fate = "cleared";
        }
    }
    return clear ? OPOS_ER_CLEAR : OPOS_ER_RETRY;
}

}  // namespace marbex::soak
