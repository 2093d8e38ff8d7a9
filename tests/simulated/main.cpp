// Runs seeds of the simulation, each in a process of its own: a run begins with nothing but its seed, and one that
// crashes or hangs takes nobody with it.

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "run.h"

namespace marbex::tests {
namespace {

constexpr unsigned kLongestRunSeconds = 60;  // of real time: a run that makes no call of the platform layer

Outcome* shared = nullptr;  // with the processes of the runs

void Share(const Outcome& outcome)
{
    *shared = outcome;
}

Outcome RunApart(uint64_t seed, bool aloud)
{
    *shared = {};
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        alarm(kLongestRunSeconds);
        RunSeed(seed, aloud, Share);
        std::fflush(stdout);
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFSIGNALED(status)) {
        std::printf("seed %llu: ended by signal %d\n", static_cast<unsigned long long>(seed), WTERMSIG(status));
        shared->good = false;
    }
    return *shared;
}

struct Totals {
    uint64_t runs = 0;
    uint64_t bad = 0;
    uint64_t prints = 0;
    uint64_t fingerprint = 0;  // of all runs together
};

void RunOne(uint64_t seed, Totals& totals)
{
    const Outcome outcome = RunApart(seed, false);
    ++totals.runs;
    totals.prints += outcome.prints;
    totals.fingerprint = totals.fingerprint * 31 + outcome.fingerprint;
    if (!outcome.good) ++totals.bad;
}

std::vector<uint64_t> SeedsOf(const char* file)
{
    std::vector<uint64_t> seeds;
    std::ifstream lines(file);
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line[0] != '#') seeds.push_back(std::strtoull(line.c_str(), nullptr, 10));
    }
    return seeds;
}

int Usage()
{
    std::fprintf(stderr,
                 "usage: simulation --seed N [--verbose]      one run, with its story\n"
                 "       simulation --seeds FROM..TO          many runs\n"
                 "       simulation --prints N                runs from seed 1 on, until so much is printed\n"
                 "       simulation --list FILE               the seeds of a file, a line each\n"
                 "       simulation --twice FROM..TO          each seed twice: both runs must be the same\n"
                 "       simulation --deadlock                two threads that wait for each other\n");
    return 64;
}

bool ParseRange(std::string_view text, uint64_t& from, uint64_t& to)
{
    const std::size_t dots = text.find("..");
    if (dots == std::string_view::npos) return false;
    from = std::strtoull(text.data(), nullptr, 10);
    to = std::strtoull(text.data() + dots + 2, nullptr, 10);
    return from <= to;
}

int Main(int argc, char** argv)
{
    if (argc == 2 && std::string_view(argv[1]) == "--deadlock") RunDeadlock();
    if (argc < 3) return Usage();
    const std::string_view what = argv[1];
    shared = static_cast<Outcome*>(
        mmap(nullptr, sizeof(Outcome), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    WarmUp();
    const auto start = std::chrono::steady_clock::now();
    Totals totals;
    uint64_t from = 0;
    uint64_t to = 0;
    if (what == "--seed") {
        const Outcome outcome = RunApart(std::strtoull(argv[2], nullptr, 10), argc > 3);
        std::printf("fingerprint %016llx, %llu prints, %llu calls of the platform layer: %s\n",
                    static_cast<unsigned long long>(outcome.fingerprint),
                    static_cast<unsigned long long>(outcome.prints), static_cast<unsigned long long>(outcome.points),
                    outcome.good ? "good" : "BAD");
        return outcome.good ? 0 : 1;
    }
    if (what == "--seeds" && ParseRange(argv[2], from, to)) {
        for (uint64_t seed = from; seed <= to; ++seed)
            RunOne(seed, totals);
    } else if (what == "--prints") {
        const uint64_t wanted = std::strtoull(argv[2], nullptr, 10);
        for (uint64_t seed = 1; totals.prints < wanted && totals.runs < wanted; ++seed)
            RunOne(seed, totals);
    } else if (what == "--list") {
        for (const uint64_t seed : SeedsOf(argv[2]))
            RunOne(seed, totals);
    } else if (what == "--twice" && ParseRange(argv[2], from, to)) {
        for (uint64_t seed = from; seed <= to; ++seed) {
            const Outcome first = RunApart(seed, false);
            RunOne(seed, totals);
            if (shared->fingerprint == first.fingerprint && shared->fingerprint != 0) continue;
            std::printf("seed %llu: two runs differ\n", static_cast<unsigned long long>(seed));
            ++totals.bad;
        }
    } else {
        return Usage();
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::printf("%llu runs, %llu bad; %llu prints in %.1f s, %.0f a second; fingerprint %016llx\n",
                static_cast<unsigned long long>(totals.runs), static_cast<unsigned long long>(totals.bad),
                static_cast<unsigned long long>(totals.prints), seconds, static_cast<double>(totals.prints) / seconds,
                static_cast<unsigned long long>(totals.fingerprint));
    return totals.bad == 0 && totals.runs > 0 ? 0 : 1;
}

}  // namespace
}  // namespace marbex::tests

int main(int argc, char** argv)
{
    return marbex::tests::Main(argc, argv);
}
