#include "matrix.h"

#include <array>
#include <iterator>

#include "opos/common.h"
#include "platform/clock.h"
#include "platform/simulated/machine/storage.h"
#include "script.h"

namespace marbex::tests {
namespace {

using simulated::FaultKind;
using simulated::Milliseconds;
using simulated::Processor;
using virtual_printer::PaperState;

constexpr uint32_t kWhile = 3000;  // ms that a fault lasts, and that the application does something else

struct Method {
    const char* name;
    int32_t (*print)(Till&);
};
constexpr Method kMethods[] = {
    {"text", [](Till& till) { return till.Print(1); }},
    {"long text", [](Till& till) { return till.Print(60); }},
    {"cut", [](Till& till) { return till.Cut(); }},
    {"bar code", [](Till& till) { return till.PrintBarCode(); }},
    {"direct I/O", [](Till& till) { return till.SendRaw(); }},
    {"picture", [](Till& till) { return till.PrintPicture(); }},
    {"mark feed", [](Till& till) { return till.FeedToMark(); }},
    {"immediate", [](Till& till) { return till.PrintNow(); }},
};

enum class Mode : uint8_t { kSync, kAsync, kTransaction, kAsyncTransaction };
constexpr const char* kModes[] = {"sync", "async", "transaction", "async transaction"};

struct Trouble {
    const char* name;
    void (*make)(const World&, simulated::Random&);
};

// Faults of the cable come within the first bytes, the others within the first calls.
template <FaultKind kind, uint32_t milliseconds = kWhile>
void OfCable(const World& world, simulated::Random& dice)
{
    world.cable.plan.push_back({world.cable.Taken().size() + dice.Below(60), kind, Milliseconds(milliseconds)});
}

// What is no connection loses its device instead.
template <FaultKind kind, uint32_t milliseconds>
void OfConnection(const World& world, simulated::Random& dice)
{
    if (world.link == Link::kTcp) return OfCable<kind, milliseconds>(world, dice);
    OfCable<FaultKind::kUnplugged, milliseconds>(world, dice);
}

// change(true), and change(false) after a while.
template <typename Change>
void ForAWhile(const World& world, simulated::Random& dice, Change change)
{
    const auto begin = Processor().Now() + dice.Below(600);
    Processor().At(begin, [change] { change(true); });
    Processor().At(begin + Milliseconds(kWhile), [&cable = world.cable, change] {
        change(false);
        cable.Poke();
    });
}

constexpr Trouble kTroubles[] = {
    {"cover open",
     [](const World& world, simulated::Random& dice) {
         ForAWhile(world, dice, [&p = world.printer.printer](bool on) { p.SetCover(on); });
     }},
    {"paper out",
     [](const World& world, simulated::Random& dice) {
         ForAWhile(world, dice,
                   [&p = world.printer.printer](bool on) { p.SetPaper(on ? PaperState::kOut : PaperState::kOk); });
     }},
    {"muted",
     [](const World& world, simulated::Random& dice) {
         ForAWhile(world, dice, [&p = world.printer.printer](bool on) { p.SetMute(on); });
     }},
    {"log disk full",
     [](const World& world, simulated::Random& dice) {
         ForAWhile(world, dice, [](bool on) { simulated::TheStorage().full = on; });
     }},
    {"dropped", OfConnection<FaultKind::kDrop, 1>},
    {"refused 50 ms", OfConnection<FaultKind::kRefuse, 50>},
    {"refused 300 ms", OfConnection<FaultKind::kRefuse, 300>},
    {"refused 3000 ms", OfConnection<FaultKind::kRefuse, kWhile>},
    {"slow", OfCable<FaultKind::kSlow>},
    {"rubbish", OfCable<FaultKind::kRubbish>},
    {"half a reply", OfCable<FaultKind::kHalfReply>},
    {"unplugged", OfCable<FaultKind::kUnplugged>},
    {"held line", OfCable<FaultKind::kHeld>},
};

enum class Answer : uint8_t { kRetry, kClear, kNone, kLate, kFrozen, kBusyElsewhere };
constexpr const char* kAnswers[] = {"retry", "clear", "none", "late", "frozen", "not pumping"};

enum class End : uint8_t { kClose, kRelease, kDrop, kOpen };
constexpr const char* kEnds[] = {"close", "release", "drop", "open"};

struct Case {
    Link link;
    std::size_t method, mode, trouble, answer, end;
};
constexpr std::array<uint64_t, 6> kSizes = {
    3, std::size(kMethods), std::size(kModes), std::size(kTroubles), std::size(kAnswers), std::size(kEnds)};

Case CaseOf(uint64_t number)
{
    std::array<std::size_t, kSizes.size()> at{};
    for (std::size_t i = 0; i < kSizes.size(); number /= kSizes[i++])
        at[i] = number % kSizes[i];
    return {static_cast<Link>(at[0]), at[1], at[2], at[3], at[4], at[5]};
}

std::string NameOf(uint64_t number, const Case& what)
{
    static constexpr const char* kLinks[] = {"serial", "TCP", "USB"};
    std::string name = "case " + std::to_string(number) + " (";
    for (const char* const part : {kLinks[static_cast<std::size_t>(what.link)], kMethods[what.method].name,
                                   kModes[what.mode], kTroubles[what.trouble].name, kAnswers[what.answer]})
        name.append(part).append(", ");
    return name + kEnds[what.end] + ')';
}

void Answers(Answer answer, int32_t* response)
{
    if (answer == Answer::kLate) platform::SystemClock().Sleep(5000);
    if (answer == Answer::kClear) *response = opos::OPOS_ER_CLEAR;
    if (answer == Answer::kRetry || answer == Answer::kLate) *response = opos::OPOS_ER_RETRY;
}

void PrintAll(Till& till, const Case& what)
{
    const Mode mode = static_cast<Mode>(what.mode);
    const bool together = mode == Mode::kTransaction || mode == Mode::kAsyncTransaction;
    if (together) till.BeginTransaction();
    for (int left = 3; left > 0; --left)
        kMethods[what.method].print(till);
    if (together) till.EndTransaction();
}

void Finish(Till& till, End end)
{
    if (end == End::kClose) till.Close();
    if (end == End::kRelease) till.Release();
    if (end == End::kDrop) till.Drop();
    if (end == End::kOpen) till.Open();
}

void Work(const World& world, const Case& what, uint64_t seed)
{
    simulated::Random dice(seed);
    Script script(dice.Next(), world);
    Till& till = world.till;
    const Mode mode = static_cast<Mode>(what.mode);
    const Answer answer = static_cast<Answer>(what.answer);
    bool settling = false;
    till.handler = [&](const TillEvent& event, int32_t* response) {
        if (!settling && event.kind == TillEvent::Kind::kError) Answers(answer, response);
    };
    script.GetReady();
    till.Async(mode == Mode::kAsync || mode == Mode::kAsyncTransaction);
    till.Print(1);
    if (answer == Answer::kFrozen) till.Freeze(true, false);
    kTroubles[what.trouble].make(world, dice);
    PrintAll(till, what);
    if (answer == Answer::kBusyElsewhere) {
        platform::SystemClock().Sleep(kWhile);
    } else {
        platform::WaitForAnyRunningMessages({}, kWhile / 2);
    }
    Finish(till, static_cast<End>(what.end));
    settling = true;
    script.Settle();
}

}  // namespace

uint64_t CasesOfMatrix()
{
    uint64_t count = 1;
    for (const uint64_t size : kSizes)
        count *= size;
    return count;
}

void RunCase(uint64_t number, bool aloud, void (*finished)(const Outcome&))
{
    const Case what = CaseOf(number);
    Setting setting;
    setting.name = NameOf(number, what);
    setting.link = what.link;
    setting.logEnabled = aloud || std::string_view(kTroubles[what.trouble].name).starts_with("log") ? 1 : 0;
    setting.confirms = number / 7 % 2 == 0;
    setting.cableDice = setting.processorDice = number + 1;
    RunSetting(setting, aloud, finished, [=](const World& world) { Work(world, what, number); });
}

}  // namespace marbex::tests
