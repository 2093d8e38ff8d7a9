// Runs seeds of the simulation, each in a process of its own: a run begins with nothing but its seed, and one that
// crashes or hangs takes nobody with it.

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>
#include <string_view>

#include "failures.h"
#include "matrix.h"
#include "run.h"

namespace marbex::tests {
namespace {

constexpr unsigned kLongestRunSeconds = 60;  // of real time: a run that makes no call of the platform layer

Outcome* shared = nullptr;  // with the processes of the runs

void Share(const Outcome& outcome)
{
    *shared = outcome;
}

// run has to call finished with what the run came to.
Outcome RunApart(const std::string& name, const std::function<void(void (*finished)(const Outcome&))>& run)
{
    *shared = {};
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        alarm(kLongestRunSeconds);
        run(Share);
        std::fflush(stdout);
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFSIGNALED(status)) {
        std::printf("%s: ended by signal %d\n", name.c_str(), WTERMSIG(status));
        shared->good = false;
    }
    return *shared;
}

Outcome RunApart(uint64_t seed, bool aloud)
{
    return RunApart("seed " + std::to_string(seed), [=](auto finished) { RunSeed(seed, aloud, finished); });
}

struct Totals {
    uint64_t runs = 0;
    uint64_t bad = 0;
    uint64_t prints = 0;
    uint64_t fingerprint = 0;  // of all runs together
};

void Add(const Outcome& outcome, Totals& totals)
{
    ++totals.runs;
    totals.prints += outcome.prints;
    totals.fingerprint = totals.fingerprint * 31 + outcome.fingerprint;
    if (!outcome.good) ++totals.bad;
}

void RunOne(uint64_t seed, Totals& totals)
{
    Add(RunApart(seed, false), totals);
}

// Everything that can fail fails once, one thing a run, until a run has had nothing left to fail.
void FailEverything(simulated::Mishap::Kind kind, uint64_t step, Totals& totals)
{
    for (const Link link : {Link::kTcp, Link::kSerial, Link::kUsb}) {
        uint64_t when = 1;
        for (Outcome outcome; when == 1 || outcome.mishaps >= when - step; when += step) {
            const std::string name =
                "failure " + std::to_string(when) + " of link " + std::to_string(static_cast<int>(link));
            outcome = RunApart(name, [=](auto finished) { RunFailure(link, kind, when, false, finished); });
            Add(outcome, totals);
        }
    }
}

void RunOneCase(uint64_t number, bool aloud, Totals& totals)
{
    Add(RunApart("case " + std::to_string(number), [=](auto finished) { RunCase(number, aloud, finished); }), totals);
}

// A line is a seed, or "case" and the number of one.
void RunList(const char* file, Totals& totals)
{
    constexpr std::string_view kCase = "case ";
    std::ifstream lines(file);
    for (std::string line; std::getline(lines, line);) {
        if (line.empty() || line[0] == '#') continue;
        if (line.starts_with(kCase)) {
            RunOneCase(std::strtoull(line.c_str() + kCase.size(), nullptr, 10), false, totals);
        } else {
            RunOne(std::strtoull(line.c_str(), nullptr, 10), totals);
        }
    }
}

int Usage()
{
    std::fprintf(
        stderr,
        "usage: simulation --seed N [--verbose]      one run, with its story\n"
        "       simulation --seeds FROM..TO          many runs\n"
        "       simulation --prints N                runs from seed 1 on, until so much is printed\n"
        "       simulation --list FILE               the seeds and cases of a file, a line each\n"
        "       simulation --twice FROM..TO          each seed twice: both runs must be the same\n"
        "       simulation --calls STEP              each call of the system that can fail does, one a run\n"
        "       simulation --allocations STEP        likewise each allocation; every STEP-th of them\n"
        "       simulation --call N LINK [--verbose] one of these; likewise --allocation\n"
        "       simulation --matrix STEP             every way to print x fault x answer x end; every STEP-th\n"
        "       simulation --case N [--verbose]      one of these\n"
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
    if ((what == "--call" || what == "--allocation") && argc > 3) {
        const auto kind = what == "--call" ? simulated::Mishap::Kind::kCall : simulated::Mishap::Kind::kAllocation;
        const auto link = static_cast<Link>(std::atoi(argv[3]));
        const uint64_t when = std::strtoull(argv[2], nullptr, 10);
        Add(RunApart("it", [=](auto finished) { RunFailure(link, kind, when, argc > 4, finished); }), totals);
    } else if (what == "--seeds" && ParseRange(argv[2], from, to)) {
        for (uint64_t seed = from; seed <= to; ++seed)
            RunOne(seed, totals);
    } else if (what == "--prints") {
        const uint64_t wanted = std::strtoull(argv[2], nullptr, 10);
        for (uint64_t seed = 1; totals.prints < wanted && totals.runs < wanted; ++seed)
            RunOne(seed, totals);
    } else if (what == "--list") {
        RunList(argv[2], totals);
    } else if (what == "--twice" && ParseRange(argv[2], from, to)) {
        for (uint64_t seed = from; seed <= to; ++seed) {
            const Outcome first = RunApart(seed, false);
            RunOne(seed, totals);
            if (shared->fingerprint == first.fingerprint && shared->fingerprint != 0) continue;
            std::printf("seed %llu: two runs differ\n", static_cast<unsigned long long>(seed));
            ++totals.bad;
        }
    } else if (what == "--case") {
        RunOneCase(std::strtoull(argv[2], nullptr, 10), argc > 3, totals);
    } else if (what == "--matrix") {
        const uint64_t step = std::strtoull(argv[2], nullptr, 10);
        for (uint64_t number = 0; number < CasesOfMatrix() && step > 0; number += step)
            RunOneCase(number, false, totals);
    } else if (what == "--calls" || what == "--allocations") {
        FailEverything(what == "--calls" ? simulated::Mishap::Kind::kCall : simulated::Mishap::Kind::kAllocation,
                       std::strtoull(argv[2], nullptr, 10), totals);
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
