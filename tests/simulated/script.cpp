#include "script.h"

#include <algorithm>

#include "opos/common.h"
#include "opos/printer.h"
#include "platform/clock.h"
#include "platform/simulated/machine/storage.h"

namespace marbex::tests {
namespace {

using simulated::FaultKind;
using simulated::Milliseconds;
using simulated::Moment;
using simulated::Processor;
using virtual_printer::PaperState;

constexpr uint32_t kFaultsBytes = 2500;    // a run sends about so many
constexpr uint32_t kFaultsMillis = 15000;  // and takes about so long
constexpr int kLongJob = 60;               // lines: more than one packet

// Half of the whiles are shorter than a second, and some longer than every time-out.
Moment SomeWhile(simulated::Random& dice)
{
    static constexpr int kLongest[] = {150, 500, 500, 1000, 1000, 4000, 4000, 15000, 40000};
    return Milliseconds(static_cast<uint64_t>(dice.Between(1, dice.OneOf(kLongest))));
}

}  // namespace

Script::Script(uint64_t seed, const World& world)
    : dice_(seed),
      till_(world.till),
      story_(world.story),
      account_(world.account),
      cable_(world.cable),
      printer_(world.printer),
      link_(world.link)
{
    static constexpr uint32_t kNests[] = {0, 20, 8, 3};
    static constexpr uint32_t kFiddles[] = {0, 8, 3, 2};
    static constexpr uint32_t kCloses[] = {0, 8, 3};
    static constexpr int kAsync[] = {0, 50, 100, 100};
    static constexpr int kRetry[] = {0, 30, 90};
    temper_ = {dice_.OneOf(kNests), dice_.OneOf(kFiddles), dice_.OneOf(kCloses),
               dice_.OneOf(kAsync), dice_.OneOf(kRetry),   dice_.Between(0, 2) * 5};
    till_.handler = [this](const TillEvent& event, int32_t* response) { Handle(event, response); };
}

Script::~Script() = default;

void Script::PlanFaults()
{
    static constexpr int kNumbers[] = {0, 1, 1, 2, 3, 6};
    static constexpr FaultKind kOfConnections[] = {FaultKind::kDrop,   FaultKind::kDrop,   FaultKind::kRefuse,
                                                   FaultKind::kRefuse, FaultKind::kFinish, FaultKind::kHang};
    static constexpr FaultKind kOfAll[] = {FaultKind::kUnplugged,  FaultKind::kHeld,      FaultKind::kHeld,
                                           FaultKind::kShortWrite, FaultKind::kHalfReply, FaultKind::kRubbish,
                                           FaultKind::kSilence,    FaultKind::kSlow};
    for (int left = dice_.OneOf(kNumbers); left > 0; --left) {
        const FaultKind kind =
            link_ == Link::kTcp && dice_.OneIn(2) ? dice_.OneOf(kOfConnections) : dice_.OneOf(kOfAll);
        const simulated::Fault fault{dice_.Below(kFaultsBytes), kind, SomeWhile(dice_)};
        if (dice_.OneIn(3)) {
            Processor().At(Milliseconds(dice_.Below(kFaultsMillis)), [this, fault] {
                if (!settling_) cable_.Make(fault.kind, fault.lasts);
            });
        } else {
            cable_.plan.push_back(fault);
        }
    }
    std::sort(cable_.plan.begin(), cable_.plan.end(),
              [](const auto& one, const auto& other) { return one.afterBytes < other.afterBytes; });
    for (int left = dice_.OneOf(kNumbers) / 2; left > 0; --left)
        Processor().At(Milliseconds(dice_.Below(kFaultsMillis)), [this] { Happen(); });
    simulated::Random dice = dice_;
    if (dice.OneIn(6))
        Processor().At(Milliseconds(dice.Below(kFaultsMillis)), [this, off = SomeWhile(dice)] { CyclePower(off); });
}

void Script::Happen()
{
    if (settling_) return;
    const Moment end = Processor().Now() + SomeWhile(dice_);
    const auto until = [this, end](const char* what, auto change) {
        story_.Tell(std::string("# ") + what);
        change(true);
        cable_.Poke();
        Processor().At(end, [this, what, change] {
            if (settling_) return;
            story_.Tell(std::string("# no more ") + what);
            change(false);
            cable_.Poke();
        });
    };
    auto& printer = printer_.printer;
    switch (dice_.Below(4)) {
        case 0:
            until("cover open", [&printer](bool on) { printer.SetCover(on); });
            break;
        case 1:
            until("paper out", [&printer](bool on) { printer.SetPaper(on ? PaperState::kOut : PaperState::kOk); });
            break;
        case 2:
            until("mute", [&printer](bool on) { printer.SetMute(on); });
            break;
        default:
            until("disk full", [](bool on) { simulated::TheStorage().full = on; });
            break;
    }
}

// What is not on paper is lost; a USB printer is gone meanwhile, and a connection is when the power is back.
void Script::CyclePower(Moment off)
{
    if (settling_) return;
    story_.Tell("# power off");
    printer_.printer.SetPower(false);
    if (link_ != Link::kSerial) cable_.Make(FaultKind::kUnplugged, off);
    Processor().At(Processor().Now() + off, [this] {
        if (!settling_) PowerOn();
    });
}

void Script::PowerOn()
{
    if (printer_.printer.State().on) return;
    story_.Tell("# power on");
    if (link_ == Link::kSerial) {
        account_.PowerLostUnseen();
    } else {
        cable_.Make(FaultKind::kDrop, 0);
    }
    printer_.printer.SetPower(true);
    cable_.Poke();
}

void Script::RunMessages(uint32_t milliseconds)
{
    platform::WaitForAnyRunningMessages({}, milliseconds);
}

void Script::Run()
{
    PlanFaults();
    if (dice_.OneIn(3)) StartWorker();
    for (int left = dice_.Between(4, 14); left > 0; --left) {
        GetReady();
        Receipt();
        if (dice_.OneIn(3)) AwaitCompletions(static_cast<uint32_t>(dice_.Between(1, 5000)));
        if (dice_.OneIn(temper_.fiddlesOneIn)) Fiddle();
    }
}

void Script::GetReady()
{
    for (int tries = 0; tries < (settling_ ? 40 : 3); ++tries) {
        if (!till_.IsOpen() && till_.Open() != 0) {
            RunMessages(3000);
            continue;
        }
        if (till_.Number(opos::PIDX_Claimed) == 0) till_.Claim(dice_.Between(0, 2000));
        till_.Enable();
        if (till_.Number(opos::PIDX_DeviceEnabled) != 0) return;
        RunMessages(settling_ ? 2000 : 100);
    }
    if (settling_) till_.Complain("the service cannot be opened, claimed and enabled again");
}

void Script::PrintSome()
{
    const int kind = dice_.Between(0, 19);
    if (kind == 0) {
        till_.PrintNow();
    } else if (kind == 1) {
        till_.SendRaw();
    } else {
        till_.Print(dice_.OneIn(10) ? kLongJob : 1);
    }
}

void Script::Receipt()
{
    const bool async = dice_.Between(1, 100) <= temper_.asyncPercent;
    if (async != till_.IsAsync()) till_.Async(async);
    const bool together = dice_.OneIn(4);
    if (together) till_.BeginTransaction();
    for (int left = dice_.Between(1, 4); left > 0; --left)
        PrintSome();
    if (together) {
        // The printer may be busy with something else.
        for (int tries = 0; tries < 3 && till_.EndTransaction() == opos::OPOS_E_BUSY; ++tries)
            RunMessages(500);
    }
    if (dice_.OneIn(3)) till_.Cut();
}

void Script::AwaitCompletions(uint32_t milliseconds)
{
    const Moment end = Processor().Now() + Milliseconds(milliseconds);
    while (account_.Pending() > 0 && Processor().Now() < end)
        RunMessages(50);
}

void Script::Fiddle()
{
    if (dice_.OneIn(temper_.closesOneIn)) {
        switch (dice_.Below(3)) {
            case 0:
                till_.Drop();
                break;
            case 1:
                till_.Open();
                break;
            default:
                till_.Close();
                break;
        }
        return;
    }
    switch (dice_.Below(9)) {
        case 0:
            RunMessages(static_cast<uint32_t>(dice_.Between(0, 6000)));
            break;
        case 1:
            platform::SystemClock().Sleep(static_cast<uint32_t>(dice_.Between(0, 6000)));
            break;
        case 2:
            for (int left = dice_.Between(1, 4); left > 0; --left) {
                till_.Release();
                if (left > 1) till_.Claim(1000);
            }
            break;
        case 3:
            till_.Clear();
            break;
        case 4:
            till_.CheckHealth();
            break;
        case 5:
        case 6:
            till_.Freeze(true, dice_.OneIn(2));
            break;
        case 7:
            till_.Freeze(false, false);
            till_.Freeze(false, true);
            break;
        default:
            till_.PrintNow();
            break;
    }
}

void Script::StartWorker()
{
    worker_ = platform::Thread::Start([this, seed = dice_.Next()] { Work(seed); });
}

// A second thread of the application.
void Script::Work(uint64_t seed)
{
    simulated::Random dice(seed);
    while (!workerStops_) {
        // In bursts, so that it often meets what the till does at the same moment.
        if (dice.OneIn(2)) platform::SystemClock().Sleep(static_cast<uint32_t>(dice.Between(0, 2000)));
        if (workerStops_) break;
        switch (dice.Below(12)) {
            case 0:
            case 1:
            case 2:
            case 3:
                till_.Print(1);
                break;
            case 4:
                till_.PrintNow();
                break;
            case 5:
                till_.CheckHealth();
                break;
            case 6:
            case 7:
                till_.Claim(dice.Between(0, 3000));
                break;
            case 8:
                if (temper_.fiddlesOneIn != 0) till_.Release();
                break;
            case 9:
                if (temper_.closesOneIn != 0) till_.Close();
                break;
            case 10:
                till_.Clear();
                break;
            default:
                till_.State();
                break;
        }
    }
}

void Script::JoinWorker()
{
    workerStops_ = true;
    if (worker_) platform::WaitForOneRunningMessages(*worker_, platform::kForever);
    worker_.reset();
}

void Script::AwaitRest()
{
    int32_t state = till_.State();
    for (int waits = 0; waits < 60 && (account_.Pending() > 0 || state != opos::OPOS_S_IDLE); ++waits) {
        RunMessages(1000);
        state = till_.State();
    }
    if (state != opos::OPOS_S_IDLE) till_.Complain("State stays " + std::to_string(state));
    if (account_.MissesCompletions()) till_.Complain("completions do not come");
}

bool Script::StatusIsRight()
{
    return till_.Number(opos::PIDXPtr_CoverOpen) == 0 && till_.Number(opos::PIDXPtr_RecEmpty) == 0;
}

// The printer is asked within six seconds of the last output, but for what a busy till has held up.
void Script::AwaitStatus()
{
    RunMessages(6000);
    for (int waits = 0; waits < 28 && !StatusIsRight(); ++waits)
        RunMessages(500);
}

void Script::Settle()
{
    story_.Tell("# all is put right");
    settling_ = true;
    simulated::TheStorage().full = false;
    auto& printer = printer_.printer;
    printer.SetCover(false);
    printer.SetPaper(PaperState::kOk);
    printer.SetMute(false);
    PowerOn();
    cable_.PutRight();
    till_.Freeze(false, false);
    till_.Freeze(false, true);
    JoinWorker();
    if (till_.CollectsTransaction()) till_.EndTransaction();
    GetReady();
    till_.Async(false);
    AwaitRest();
    // A lost link is tried again every two seconds only.
    int32_t printed = -1;
    for (int tries = 0; tries < 4 && printed != 0; ++tries) {
        printed = till_.Print(1);
        if (printed != 0) RunMessages(2500);
    }
    if (printed != 0) till_.Complain("nothing can be printed any more");
    AwaitStatus();
    AwaitRest();
    if (!StatusIsRight()) till_.Complain("CoverOpen or RecEmpty stays TRUE");
    const int32_t closed = till_.Close();
    if (closed != 0) till_.Complain("CloseService of an idle device is " + std::to_string(closed));
}

}  // namespace marbex::tests
