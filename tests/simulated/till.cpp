#include "till.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <utility>

#include "opos/common.h"
#include "opos/printer.h"
#include "platform/simulated/machine/call.h"
#include "platform/simulated/machine/storage.h"

namespace marbex::tests {
namespace {

using device::POSPrinterDevice;
using simulated::Milliseconds;
using simulated::Moment;
using simulated::Processor;

constexpr Moment kLongestCall = Milliseconds(1'800'000);
constexpr Moment kLongestClosing = Milliseconds(10'500);  // beyond the output that still goes out
constexpr int32_t kNoDevice = opos::OPOS_E_ILLEGAL;
constexpr int32_t kNoMemory = opos::OPOS_E_FAILURE;
constexpr const char* kDropped = "Release of the last reference";

constexpr const char* kPictureFile = "logo.bmp";

std::string Signed(int32_t number)
{
    return std::to_string(number);
}

// A black bitmap of two colours, 32 dots wide.
std::string BlackPicture(int rows)
{
    constexpr std::size_t kHeaders = 14 + 40 + 8;
    std::string file = "BM";
    const auto put = [&file](uint32_t number, int bytes) {
        for (; bytes > 0; --bytes, number >>= 8)
            file += static_cast<char>(number & 0xFF);
    };
    put(static_cast<uint32_t>(kHeaders) + 4U * static_cast<uint32_t>(rows), 4);
    put(0, 4);
    put(kHeaders, 4);
    put(40, 4);
    put(32, 4);
    put(static_cast<uint32_t>(rows), 4);
    put(1, 2);  // planes
    put(1, 2);  // bits a dot
    for (int left = 6; left > 0; --left)
        put(0, 4);
    put(0, 4);         // black
    put(0xFFFFFF, 4);  // white
    file.append(4 * static_cast<std::size_t>(rows), '\0');
    return file;
}

// What a call of the service answers; no memory for it reaches the application as an exception of the automation.
template <typename Method>
int32_t Answer(const std::shared_ptr<POSPrinterDevice>& device, Method method)
{
    if (!device) return kNoDevice;
    try {
        const simulated::Within driver;
        return method(*device);
    } catch (const std::bad_alloc&) {
        return kNoMemory;
    }
}

}  // namespace

// One call of the service while it is under way.
struct Till::Call {
    std::string name;
    uint64_t thread = 0;
    Moment begun = 0;
};

class Till::Watch {
public:
    Watch(Till& till, std::string name)
        : till_(till), call_{std::move(name), Processor().Current().id, Processor().Now()}
    {
        till_.story_.Tell("> " + call_.name);
        till_.calls_.push_back(&call_);
        alarm_ =
            Processor().At(call_.begun + kLongestCall, [this] { Processor().Fail(call_.name + " does not return"); });
    }
    ~Watch()
    {
        Processor().CallOff(alarm_);
        std::erase(till_.calls_, &call_);
    }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    int32_t Returned(int32_t result)
    {
        till_.story_.Tell("< " + call_.name + " = " + Signed(result));
        return result;
    }
    bool Alone() const { return till_.calls_.size() == 1; }
    bool OthersOnThisThread() const
    {
        return std::any_of(till_.calls_.begin(), till_.calls_.end(),
                           [this](const Call* other) { return other != &call_ && other->thread == call_.thread; });
    }
    Moment Lasts() const { return Processor().Now() - call_.begun; }

private:
    Till& till_;
    Call call_;
    uint64_t alarm_ = 0;
};

// A call that changes whether output is queued or collected, while it is under way.
class Till::ModeChange {
public:
    explicit ModeChange(Till& till) : till_(till) { Count(1); }
    ~ModeChange() { Count(-1); }
    ModeChange(const ModeChange&) = delete;
    ModeChange& operator=(const ModeChange&) = delete;

private:
    void Count(int change)
    {
        ++till_.modeCalls_;
        till_.modeCallsUnderWay_ += change;
    }

    Till& till_;
};

Till::Till(Story& story, Account& account, const simulated::Cable& cable, bool toFile)
    : story_(story),
      account_(account),
      cable_(cable),
      toFile_(toFile),
      service_(std::make_unique<server::MarbexOposPrnDriver>())
{
    control_.onEvent = [this](const TillEvent& event, int32_t* response) { OnEvent(event, response); };
}

void Till::Complain(const std::string& what)
{
    story_.Tell("! " + what);
    complaints_.push_back(what);
}

int32_t Till::Number(int32_t property)
{
    const auto device = Device();
    return device ? Answer(device, [=](auto& there) { return there.GetPropertyNumber(property); })
                  : opos::OPOS_S_CLOSED;
}

void Till::Set(int32_t property, bool on)
{
    Answer(Device(), [=](auto& there) { return there.SetPropertyNumber(property, on ? 1 : 0), 0; });
}

int32_t Till::Open()
{
    Watch watch(*this, "OpenService");
    const bool wasOpen = IsOpen();
    int32_t result = kNoMemory;
    try {
        const simulated::Within driver;
        result = toFile_ ? service_->OpenService_NET("POSPrinter", "Till", kEventFile)
                         : service_->OpenService("POSPrinter", "Till", &control_);
    } catch (const std::bad_alloc&) {
    }
    watch.Returned(result);
    if (result != opos::OPOS_E_BUSY) {
        if (wasOpen) account_.Excuse();  // the service was closed on the way, without a word of its output
        frozen_ = controlFrozen_ = async_ = false;
        transaction_ = 0;
        account_.Opened();
        if (result != 0 && IsOpen()) Complain("OpenService is " + Signed(result) + ", but the service is open");
    }
    return result;
}

int32_t Till::Close()
{
    Watch watch(*this, "CloseService");
    const auto device = Device();
    if (!device) return watch.Returned(kNoDevice);
    const bool wasClosed = device->IsClosed() || std::any_of(calls_.begin(), calls_.end() - 1, [](const Call* call) {
                               return call->name == "CloseService" || call->name == kDropped;
                           });
    const bool nested = watch.OthersOnThisThread();
    const Moment inHandlers = inHandlers_;
    const Moment stalled = Processor().Stalled();
    const auto taken = cable_.Delivered().size();
    Moment lastByte = Processor().Now();
    // Looked at from time to time: output that still goes out may take as long as it takes.
    uint64_t look = 0;
    auto seen = taken;
    std::function<void()> again = [&] {
        if (cable_.Delivered().size() != seen) lastByte = Processor().Now();
        seen = cable_.Delivered().size();
        look = Processor().At(Processor().Now() + Milliseconds(100), again);
    };
    look = Processor().At(Processor().Now() + Milliseconds(100), again);
    const int32_t result = watch.Returned(Answer(device, [](auto& there) { return there.CloseService(); }));
    Processor().CallOff(look);
    if (!wasClosed) closed_ = device;
    // What a nested call, or one beside another call, leaves to that one is nobody's to report.
    if (result != 0 || nested || !watch.Alone()) account_.Excuse();
    account_.EventsDropped();
    const Moment allowed = kLongestClosing + (Processor().Stalled() - stalled) + (inHandlers_ - inHandlers);
    if (Processor().Now() - lastByte > allowed)
        Complain("CloseService took " + std::to_string((Processor().Now() - lastByte) / 1000) + " ms");
    return result;
}

void Till::Drop()
{
    Watch watch(*this, kDropped);
    {
        const simulated::Within driver;
        service_->LastReferenceGone();
    }
    account_.Excuse();  // what another thread printed meanwhile included
    account_.EventsDropped();
    auto fresh = std::make_unique<server::MarbexOposPrnDriver>();
    dropped_.push_back(std::exchange(service_, std::move(fresh)));
    transaction_ = 0;
    if (watch.Alone()) dropped_.clear();  // no other thread is in one of them
}

int32_t Till::Claim(int32_t timeout)
{
    Watch watch(*this, "ClaimDevice(" + Signed(timeout) + ")");
    const auto device = Device();
    const bool closing = IsClosing();
    const int32_t result = watch.Returned(Answer(device, [=](auto& there) { return there.ClaimDevice(timeout); }));
    if (result == 0) CountClaim(device, 1);
    if (closing && IsClosing() && result != opos::OPOS_E_TIMEOUT && result != kNoDevice)
        Complain("ClaimDevice of a closing device is " + Signed(result));
    if (watch.Alone()) ExpectClaim();
    return result;
}

int32_t Till::Release()
{
    Watch watch(*this, "ReleaseDevice");
    const auto device = Device();
    const bool closing = IsClosing();
    const int32_t result = watch.Returned(Answer(device, [](auto& there) { return there.ReleaseDevice(); }));
    if (result == 0) {
        CountClaim(device, -1);
        account_.EventsDropped();
    }
    if (closing && IsClosing() && result != opos::OPOS_E_ILLEGAL)
        Complain("ReleaseDevice of a closing device is " + Signed(result));
    if (watch.Alone()) ExpectClaim();
    return result;
}

void Till::CountClaim(const std::shared_ptr<POSPrinterDevice>& device, int change)
{
    if (claimed_.lock() != device) claims_ = 0;
    claimed_ = device;
    claims_ += change;
}

void Till::ExpectClaim()
{
    const auto device = Device();
    if (!device || device->IsClosed() || claimed_.lock() != device) return;
    if ((claims_ > 0) != (device->Claimed.load() != 0))
        Complain("Claimed is " + Signed(device->Claimed.load()) + " after " + Signed(claims_) + " claims not released");
}

void Till::Enable()
{
    Watch watch(*this, "DeviceEnabled = TRUE");
    Set(opos::PIDX_DeviceEnabled, true);
}

int32_t Till::Printed(const std::string& what, Job::Kind kind, int lines, bool queues, bool confirmable,
                      const std::function<int32_t(POSPrinterDevice&, const std::string&)>& print)
{
    const bool modeIsClear = modeCallsUnderWay_ == 0;
    const int modeCalls = modeCalls_;
    const bool async = queues && async_;
    const int transaction = queues ? transaction_ : 0;
    const int number = account_.Begin(kind, lines, async, transaction, confirmable);
    const std::string text = account_.TextOf(number);
    Watch watch(*this, what + " of job " + std::to_string(number));
    const auto device = Device();
    const int callsBefore = ++printCalls_;
    ++prints_;
    const bool frozen = IsFrozen();
    const int32_t result = watch.Returned(Answer(device, [&](auto& there) { return print(there, text); }));
    const int32_t lastId = device ? Number(opos::PIDX_OutputID) : 0;
    const bool undisturbed = callsBefore == printCalls_ && watch.Alone();
    if (!modeIsClear || modeCalls != modeCalls_) account_.Forget(number);
    account_.End(number, result, queues && undisturbed ? lastId : 0);
    // Events that stay frozen for too long are answered for the application; the result is all it hears.
    if (frozen && result != 0 && result != opos::OPOS_E_BUSY) account_.Excuse();
    return result;
}

int32_t Till::Print(int lines)
{
    return Printed("PrintNormal", Job::Kind::kText, lines, true, true,
                   [](POSPrinterDevice& device, const std::string& text) {
                       return device.PrintNormal(opos::PTR_S_RECEIPT, text);
                   });
}

int32_t Till::PrintNow()
{
    return Printed("PrintImmediate", Job::Kind::kText, 1, false, false,
                   [](POSPrinterDevice& device, const std::string& text) {
                       return device.PrintImmediate(opos::PTR_S_RECEIPT, text);
                   });
}

int32_t Till::SendRaw()
{
    return Printed("DirectIO", Job::Kind::kText, 1, true, false, [](POSPrinterDevice& device, const std::string& text) {
        auto count = static_cast<int32_t>(text.size());
        std::u16string wide(text.begin(), text.end());
        return device.DirectIO(0, &count, &wide);
    });
}

int32_t Till::Cut()
{
    return Printed("CutPaper", Job::Kind::kCut, 0, true, true,
                   [](POSPrinterDevice& device, const std::string&) { return device.CutPaper(90); });
}

int32_t Till::PrintBarCode()
{
    return Printed("PrintBarCode", Job::Kind::kBarCode, 1, true, true,
                   [](POSPrinterDevice& device, const std::string& text) {
                       return device.PrintBarCode(opos::PTR_S_RECEIPT, text, opos::PTR_BCS_Code128, 40, 300,
                                                  opos::PTR_BC_LEFT, opos::PTR_BC_TEXT_BELOW);
                   });
}

int32_t Till::FeedToMark()
{
    return Printed("MarkFeed", Job::Kind::kFeed, 0, true, true, [](POSPrinterDevice& device, const std::string&) {
        return device.MarkFeed(opos::PTR_MF_TO_TAKEUP);
    });
}

// As many rows high as the number of the job says.
int32_t Till::PrintPicture()
{
    return Printed(
        "PrintBitmap", Job::Kind::kPicture, 1, true, true, [](POSPrinterDevice& device, const std::string& text) {
            simulated::TheStorage().files[kPictureFile] = BlackPicture(std::atoi(text.c_str() + 2));
            return device.PrintBitmap(opos::PTR_S_RECEIPT, kPictureFile, opos::PTR_BM_ASIS, opos::PTR_BM_LEFT);
        });
}

int32_t Till::BeginTransaction()
{
    Watch watch(*this, "TransactionPrint(11)");
    const ModeChange change(*this);
    const auto device = Device();
    const int32_t result = watch.Returned(Answer(
        device, [](auto& there) { return there.TransactionPrint(opos::PTR_S_RECEIPT, opos::PTR_TP_TRANSACTION); }));
    if (result == 0 && transaction_ == 0) transaction_ = ++transactions_;
    return result;
}

int32_t Till::EndTransaction()
{
    Watch watch(*this, "TransactionPrint(12)");
    const ModeChange change(*this);
    const bool frozen = IsFrozen();
    const auto device = Device();
    const bool async = async_;
    const int transaction = transaction_;
    const int callsBefore = printCalls_;
    const int32_t result = watch.Returned(
        Answer(device, [](auto& there) { return there.TransactionPrint(opos::PTR_S_RECEIPT, opos::PTR_TP_NORMAL); }));
    if (frozen && result != 0 && result != opos::OPOS_E_BUSY) account_.Excuse();
    // Refused, it stays open.
    if (result == opos::OPOS_E_BUSY || result == opos::OPOS_E_CLOSED || result == opos::OPOS_E_NOTCLAIMED ||
        result == opos::OPOS_E_DISABLED)
        return result;
    const int32_t lastId = Number(opos::PIDX_OutputID);
    account_.TransactionEnds(transaction, async, result, callsBefore == printCalls_ && watch.Alone() ? lastId : 0);
    if (transaction_ == transaction) transaction_ = 0;
    return result;
}

int32_t Till::Clear()
{
    Watch watch(*this, "ClearOutput");
    const int transaction = transaction_;
    const auto device = Device();
    const int32_t result = watch.Returned(Answer(device, [](auto& there) { return there.ClearOutput(); }));
    if (result == 0) {
        account_.Excuse();
        account_.EventsDropped();
        if (transaction_ == transaction) transaction_ = 0;
    }
    return result;
}

int32_t Till::CheckHealth()
{
    Watch watch(*this, "CheckHealth");
    const auto device = Device();
    const bool closing = IsClosing();
    const int32_t result =
        watch.Returned(Answer(device, [](auto& there) { return there.CheckHealth(opos::OPOS_CH_INTERNAL); }));
    if (closing && IsClosing() && device && result != opos::OPOS_E_NOTCLAIMED)
        Complain("CheckHealth of a closing device is " + Signed(result));
    return result;
}

void Till::Async(bool on)
{
    Watch watch(*this, on ? "AsyncMode = TRUE" : "AsyncMode = FALSE");
    const ModeChange change(*this);
    if (!Device()) return;
    Set(opos::PIDXPtr_AsyncMode, on);
    async_ = Number(opos::PIDXPtr_AsyncMode) != 0;
}

void Till::Freeze(bool on, bool byControlObject)
{
    Watch watch(*this, std::string(byControlObject ? "COFreezeEvents" : "FreezeEvents") + (on ? " TRUE" : " FALSE"));
    const auto device = Device();
    if (!device) return;
    (byControlObject ? controlFrozen_ : frozen_) = on;
    if (byControlObject) {
        Answer(device, [=](auto& there) { return there.COFreezeEvents(on); });
    } else {
        Set(opos::PIDX_FreezeEvents, on);
    }
}

void Till::OnEvent(const TillEvent& event, int32_t* response)
{
    const simulated::Apart apart;
    static constexpr const char* kNames[] = {"DirectIOEvent", "ErrorEvent", "OutputCompleteEvent", "StatusUpdateEvent"};
    story_.Tell(std::string("* ") + kNames[static_cast<std::size_t>(event.kind)] + ' ' + Signed(event.first) +
                (response != nullptr ? "/" + Signed(event.second) : ""));
    const Moment begun = Processor().Now();
    ++handlerDepth_;
    if (event.kind == TillEvent::Kind::kOutputComplete) account_.Completed(event.first);
    if (event.kind == TillEvent::Kind::kError) {
        OnError(event, response);
    } else if (handler) {
        handler(event, nullptr);
    }
    if (--handlerDepth_ == 0) inHandlers_ += Processor().Now() - begun;
    story_.Tell("* handled");
}

void Till::OnError(const TillEvent& event, int32_t* response)
{
    account_.ErrorTold();
    ExpectErrorState("as the handler is called");
    const int opening = account_.Opening();
    if (handler) handler(event, response);
    if (opening == account_.Opening()) ExpectErrorState("as the handler returns");
    Answered(*response);
}

void Till::Answered(int32_t answer)
{
    story_.Tell("* answers " + Signed(answer));
    if (answer == opos::OPOS_ER_CLEAR) {
        account_.Excuse();
        transaction_ = 0;
    } else if (answer != opos::OPOS_ER_RETRY) {
        account_.ExcuseOne();
    }
}

// An error is answered for the application: it cannot be asked.
void Till::OnRecord(std::string_view record)
{
    story_.Tell("* record " + std::string(record));
    if (record.starts_with("C\t")) account_.Completed(std::atoi(record.data() + 2));
    if (!record.starts_with("B\t")) return;
    account_.ErrorTold();
    Answered(opos::OPOS_ER_CLEAR);
}

// Calls of other threads change the state in their own right.
void Till::ExpectErrorState(const char* when)
{
    const auto device = Device();
    if (!device || device->IsClosed()) return;
    const uint64_t self = Processor().Current().id;
    if (std::any_of(calls_.begin(), calls_.end(), [self](const Call* call) { return call->thread != self; })) return;
    const int32_t state = State();
    if (state != opos::OPOS_S_ERROR && state != opos::OPOS_S_CLOSED)
        Complain("State is " + Signed(state) + " while an error is out, " + when);
}

}  // namespace marbex::tests
