// Prints receipts under faults and makes the account: each is on paper, or its till was told that it is lost. Or kills
// tills in the middle and sees what the next ones find.
//
//     soak [OPTION...] RECEIPTS SEED
//     soak --kill ROUNDS SEED

#include <CLI/CLI.hpp>

#include <stdlib.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <thread>
#include <vector>

#include "account/lane.h"
#include "kill_lane.h"

namespace {

using namespace marbex::soak;

constexpr uint32_t kReceiptsATill = 12;  // at least, as long as there are tills to be had
constexpr int kKillLanes = 6;

struct Arguments {
    uint32_t number = 0;  // of receipts, or of rounds
    uint64_t seed = 1;
    std::string folder;
    uint32_t tills = 0;
    std::string confirm = "half";
    uint32_t stories = 3;
    bool calm = false;
    bool kill = false;
};

bool Confirms(const Arguments& arguments, uint32_t lane)
{
    if (arguments.confirm == "half") {
        return lane / kCables % 2 == 0;
    }
    return arguments.confirm == "all";
}

// Runs so many at once, and waits for the last.
void InThreads(uint32_t count, Tally& tally, const std::function<void(uint32_t lane)>& run)
{
    std::vector<std::thread> threads;
    for (uint32_t lane = 0; lane < count; ++lane) {
        threads.emplace_back([&, lane] {
            try {
                run(lane);
            } catch (const std::exception& error) {
                tally.Failed(1, "till " + std::to_string(lane) + ": " + error.what(), "");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

void Soak(const Arguments& arguments, Tally& tally)
{
    // A till waits most of its time.
    const uint32_t tills =
        arguments.tills != 0 ? arguments.tills : std::clamp<uint32_t>(arguments.number / kReceiptsATill, kCables, 64);
    const uint32_t each = (arguments.number + tills - 1) / tills;
    const uint32_t aSession = std::clamp(each / 10, 3U, 40U);
    InThreads(tills, tally, [&](uint32_t lane) {
        Lane(static_cast<int>(lane), arguments.seed * 1000 + lane, {Confirms(arguments, lane), arguments.calm},
             arguments.folder + "/" + std::to_string(lane), tally)
            .Run(each, aSession);
    });
    tally.PrintSoak();
}

void Kill(const Arguments& arguments, Tally& tally)
{
    constexpr Cable kLosable[] = {Cable::kTcp, Cable::kAdapter, Cable::kUsb};
    const uint32_t each = (arguments.number + kKillLanes - 1) / kKillLanes;
    InThreads(kKillLanes, tally, [&](uint32_t lane) {
        KillLane(static_cast<int>(lane), kLosable[lane % std::size(kLosable)], arguments.seed * 1000 + lane,
                 arguments.folder + "/" + std::to_string(lane), tally)
            .Run(each);
    });
    tally.PrintKills();
}

int Run(Arguments arguments)
{
    const bool own = arguments.folder.empty();
    if (own) {
        std::string name = (std::filesystem::temp_directory_path() / "soak-XXXXXX").string();
        arguments.folder = ::mkdtemp(name.data()) != nullptr ? name : "";
    }
    Tally tally(arguments.stories);
    std::printf("soak: %s, seed %llu\n", arguments.kill ? "kill -9" : "faults",
                static_cast<unsigned long long>(arguments.seed));
    arguments.kill ? Kill(arguments, tally) : Soak(arguments, tally);
    if (own && tally.Good()) {
        std::filesystem::remove_all(arguments.folder);
    }
    return tally.Good() ? 0 : 1;
}

}  // namespace

int main(int count, char** words)
{
    std::signal(SIGPIPE, SIG_IGN);
    Arguments arguments;
    CLI::App app{"Receipts under faults, and tills that are killed"};
    app.add_option("NUMBER", arguments.number, "of receipts, or of rounds")
        ->required()
        ->check(CLI::Range(1U, 1'000'000U));
    app.add_option("SEED", arguments.seed, "what the dice begin with")->required();
    app.add_flag("--kill", arguments.kill, "kills tills in the middle");
    app.add_option("--folder", arguments.folder, "for registries, logs and stories; short, for it holds sockets");
    app.add_option("--tills", arguments.tills, "how many print at once");
    app.add_option("--confirm", arguments.confirm, "which of them want confirmed output")
        ->check(CLI::IsMember({"all", "half", "none"}));
    app.add_option("--stories", arguments.stories, "how many failures are told whole");
    app.add_flag("--calm", arguments.calm, "no faults");
    CLI11_PARSE(app, count, words);
    try {
        return Run(arguments);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "soak: %s\n", error.what());
        return 2;
    }
}
