#include "failures.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "opos/common.h"
#include "script.h"

namespace marbex::tests {
namespace {

using simulated::Mishap;
using simulated::TheMishap;

int32_t Enabled(Till& till)
{
    till.Enable();
    return till.Number(opos::PIDX_DeviceEnabled) != 0 ? 0 : till.Number(opos::PIDX_ResultCode);
}

int32_t SwitchedTo(Till& till, bool async)
{
    till.Async(async);
    return till.IsAsync() == async ? 0 : till.Number(opos::PIDX_ResultCode);
}

struct Step {
    std::string_view name;
    int32_t (*take)(Till&);
};

constexpr Step kOpening[] = {
    {"open", [](Till& till) { return till.Open(); }},
    {"claim", [](Till& till) { return till.Claim(1000); }},
    {"enable", Enabled},
};
constexpr Step kOutput[] = {
    {"print", [](Till& till) { return till.Print(1); }},
    {"print", [](Till& till) { return till.PrintPicture(); }},
    {"print", [](Till& till) { return till.PrintBarCode(); }},
    {"print", [](Till& till) { return till.PrintNow(); }},
    {"print", [](Till& till) { return till.Cut(); }},
    {"health", [](Till& till) { return till.CheckHealth(); }},
    {"switch", [](Till& till) { return SwitchedTo(till, true); }},
    {"queue", [](Till& till) { return till.Print(1); }},
    {"queue", [](Till& till) { return till.PrintPicture(); }},
    {"begin", [](Till& till) { return till.BeginTransaction(); }},
    {"collect", [](Till& till) { return till.PrintBarCode(); }},
    {"collect", [](Till& till) { return till.Print(2); }},
    {"queue", [](Till& till) { return till.EndTransaction(); }},
    {"queue", [](Till& till) { return till.SendRaw(); }},
};

// Results that a step may have when that fails; everything else has to succeed all the same.
struct Permitted {
    std::string_view what;  // begins so
    std::string_view step;
    int32_t result;
};
constexpr Permitted kPermitted[] = {
    {"", "open", opos::OPOS_E_FAILURE},
    {"send", "open", opos::OPOS_E_NOHARDWARE},
    {"receive", "open", opos::OPOS_E_NOHARDWARE},
    {"time-out of a socket", "open", opos::OPOS_E_NOHARDWARE},
    {"write to a", "open", opos::OPOS_E_NOHARDWARE},
    {"read of a", "open", opos::OPOS_E_NOHARDWARE},
    {"look into the registry", "open", opos::OPOS_E_NOHARDWARE},  // without a profile there is no such printer
    {"value of the registry", "open", opos::OPOS_E_NOHARDWARE},
    {"send", "print", opos::OPOS_E_FAILURE},
    {"time-out of a socket", "print", opos::OPOS_E_FAILURE},
    {"write to a line", "print", opos::OPOS_E_FAILURE},
    {"write to a pipe", "print", opos::OPOS_E_FAILURE},
    {"look for a file", "", opos::OPOS_E_NOEXIST},  // the picture is gone
    {"read of a file", "", opos::OPOS_E_NOEXIST},
    {"allocation of till", "", opos::OPOS_E_FAILURE},
    {"allocation of till", "open", opos::OPOS_E_ILLEGAL},
    {"allocation of till", "", opos::OPOS_E_ILLEGAL},  // a code or a picture that does not fit
    {"allocation of till", "", opos::OPOS_E_NOEXIST},
};

bool IsPermitted(std::string_view what, std::string_view step, int32_t result)
{
    return std::any_of(std::begin(kPermitted), std::end(kPermitted), [&](const Permitted& row) {
        return what.starts_with(row.what) && step.starts_with(row.step) && result == row.result;
    });
}

// A step that fails when something has failed succeeds when it is taken again.
void Take(const World& world, const Step& step)
{
    const bool intact = TheMishap().what.empty();
    const int32_t result = step.take(world.till);
    if (result == 0) return;
    if (!intact || !IsPermitted(TheMishap().what, step.name, result))
        world.till.Complain(std::string(step.name) + " is " + std::to_string(result) + " after " + TheMishap().what);
    platform::WaitForAnyRunningMessages({}, 2500);  // a lost link is tried again every two seconds
    if (const int32_t again = step.take(world.till); again != 0)
        world.till.Complain(std::string(step.name) + " again is " + std::to_string(again));
}

void Work(const World& world, Mishap::Kind kind, uint64_t when)
{
    // Output for which there is no memory is not repeated, whatever the application says.
    world.till.handler = [&world](const TillEvent& event, int32_t*) {
        const bool noMemory = TheMishap().kind == Mishap::Kind::kAllocation && !TheMishap().what.empty();
        if (noMemory && event.kind == TillEvent::Kind::kError && event.first == opos::OPOS_E_FAILURE)
            world.account.ExcuseOne();
    };
    TheMishap() = {kind, when, 0, {}};
    for (const Step& step : kOpening)
        Take(world, step);
    for (const Step& step : kOutput)
        Take(world, step);
    for (int waits = 0; waits < 40 && world.account.Pending() > 0; ++waits)
        platform::WaitForAnyRunningMessages({}, 500);
    if (world.account.MissesCompletions()) world.till.Complain("completions do not come");
    Take(world, {"close", [](Till& till) { return till.Close(); }});
    TheMishap().kind = Mishap::Kind::kNone;
    // Whatever has failed: the next day is a good one.
    for (const Step& step : kOpening)
        Take(world, step);
    Take(world, kOutput[0]);
    Take(world, {"close", [](Till& till) { return till.Close(); }});
}

}  // namespace

void RunFailure(Link link, Mishap::Kind kind, uint64_t when, bool aloud, void (*finished)(const Outcome&))
{
    Setting setting;
    setting.link = link;
    setting.logEnabled = link == Link::kTcp ? 1 : 0;
    setting.name = std::string(kind == Mishap::Kind::kCall ? "call " : "allocation ") + std::to_string(when) +
                   " on link " + std::to_string(static_cast<int>(link));
    RunSetting(setting, aloud, finished, [=](const World& world) { Work(world, kind, when); });
}

}  // namespace marbex::tests
