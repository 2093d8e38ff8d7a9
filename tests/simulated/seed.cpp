// What a seed makes of a run.

#include "device/model_description.h"
#include "run.h"
#include "script.h"

namespace marbex::tests {
namespace {

using simulated::Random;

std::string ModelOf(Random& dice)
{
    if (dice.OneIn(2)) return "TALIS ETHERNET";
    const auto models = device::ModelDescriptions();
    return std::string(models[dice.Below(models.size())].name);
}

simulated::Pace PaceOf(Random& dice)
{
    static constexpr uint32_t kSwitches[] = {2, 5, 20, 100, 1000};
    static constexpr uint32_t kStalls[] = {0, 0, 10000, 2000};
    return {.switchOneIn = dice.OneOf(kSwitches), .stallOneIn = dice.OneOf(kStalls), .longestStall = 3000};
}

Setting SettingOf(uint64_t seed, Random& dice)
{
    static constexpr uint32_t kTimeouts[] = {200, 500, 1000, 3000, 5000, 10000};
    static constexpr uint32_t kLogs[] = {0, 1, 1, 1, 3};
    static constexpr int kLatencies[] = {0, 0, 5, 5, 5, 200, 2000};
    Setting setting;
    setting.name = "seed " + std::to_string(seed);
    setting.model = ModelOf(dice);
    setting.link = dice.OneIn(2) ? Link::kTcp : static_cast<Link>(dice.Below(3));
    if (setting.model == "ARGO PC TURBO") setting.link = Link::kSerial;  // with a display on a second cable
    setting.confirms = dice.OneIn(3);
    setting.cableDice = dice.Next();
    setting.settings = dice.OneIn(4) ? 2 : 0;
    setting.logEnabled = dice.OneOf(kLogs);
    setting.sendTimeout = dice.OneOf(kTimeouts);
    setting.receiveTimeout = dice.OneOf(kTimeouts);
    setting.baudRate = dice.OneIn(2) ? 9600 : 115200;
    setting.latency = 1000U * static_cast<unsigned>(dice.Between(0, dice.OneOf(kLatencies)));
    setting.pace = PaceOf(dice);
    setting.processorDice = dice.Next();
    setting.toFile = Random(~seed).OneIn(10);
    return setting;
}

}  // namespace

void RunSeed(uint64_t seed, bool aloud, void (*finished)(const Outcome&))
{
    Random dice(seed);
    const Setting setting = SettingOf(seed, dice);
    RunSetting(setting, aloud, finished, [scriptSeed = dice.Next()](const World& world) {
        Script script(scriptSeed, world);
        script.Run();
        script.Settle();
    });
}

}  // namespace marbex::tests
