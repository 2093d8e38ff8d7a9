#include "tally.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <utility>

namespace marbex::soak {
namespace {

constexpr std::size_t kHeapNoise = 8UL * 1024;  // what a till's heap may differ by between two closed devices

}  // namespace

void Tally::Count(uint64_t& number)
{
    const std::lock_guard lock(mutex_);
    ++number;
}

void Tally::Ended(ReceiptEnd end, bool confirmed, bool twice)
{
    const std::lock_guard lock(mutex_);
    ++ends_[confirmed ? 1 : 0][static_cast<std::size_t>(end)];
    twice_ += twice ? 1 : 0;
}

void Tally::Killed(bool printing, long millisecondsUntilTheNextPrints)
{
    const std::lock_guard lock(mutex_);
    ++killed_[printing ? 1 : 0];
    longestWait_ = std::max(longestWait_, millisecondsUntilTheNextPrints);
}

void Tally::Left(uint64_t temporaryFiles)
{
    const std::lock_guard lock(mutex_);
    temporaryFiles_ += temporaryFiles;
}

void Tally::Did(uint64_t faults, uint64_t jobs, uint64_t errors)
{
    const std::lock_guard lock(mutex_);
    faults_ += faults;
    jobs_ += jobs;
    errors_ += errors;
}

void Tally::Closed(long milliseconds, long slowestCall)
{
    const std::lock_guard lock(mutex_);
    longestClose_ = std::max(longestClose_, milliseconds);
    slowestCall_ = std::max(slowestCall_, slowestCall);
}

void Tally::Held(const std::vector<Vitals>& samples, const std::string& lane)
{
    if (samples.size() < 2) {
        return;
    }
    const Vitals& first = samples[(samples.size() - 1) / 10];
    const Vitals& last = samples.back();
    {
        const std::lock_guard lock(mutex_);
        ++lanes_;
        for (auto [sum, one] : {std::pair(&first_, &first), std::pair(&last_, &last)}) {
            sum->heap += one->heap;
            sum->descriptors += one->descriptors;
            sum->threads += one->threads;
        }
    }
    const auto grew = [&](const char* what, std::size_t before, std::size_t after, std::size_t noise) {
        if (after > before + noise) {
            Failed(
                1,
                "till " + lane + ": " + what + " grew from " + std::to_string(before) + " to " + std::to_string(after),
                "");
        }
    };
    grew("the heap", first.heap, last.heap, kHeapNoise);
    grew("the number of descriptors", first.descriptors, last.descriptors, 0);
    grew("the number of threads", first.threads, last.threads, 0);
}

void Tally::Failed(uint64_t times, const std::string& what, const std::string& story)
{
    const std::lock_guard lock(mutex_);
    failures_ += times;
    ++told_;
    if (told_ <= mostStories_) {
        std::printf("FAILED %s\n%s", what.c_str(), story.c_str());
    } else if (told_ == mostStories_ + 1) {
        std::printf("FAILED more: they are counted, not told\n");
    }
    std::fflush(stdout);
}

uint64_t Tally::Receipts() const
{
    const std::lock_guard lock(mutex_);
    uint64_t all = 0;
    for (const auto& ends : ends_) {
        for (const uint64_t count : ends) {
            all += count;
        }
    }
    return all;
}

bool Tally::Good() const
{
    const std::lock_guard lock(mutex_);
    return failures_ == 0;
}

void Tally::PrintSoak() const
{
    const uint64_t receipts = Receipts();
    const double seconds = Seconds();
    const std::lock_guard lock(mutex_);
    const auto line = [](const char* what, const uint64_t(&ends)[5]) {
        std::printf("  %-22s %" PRIu64 " printed, %" PRIu64 " reported lost, %" PRIu64
                    " lost inside the printer, %" PRIu64 " lost on the link, %" PRIu64 " WRONG\n",
                    what, ends[0], ends[1], ends[2], ends[3], ends[4]);
    };
    std::printf("  %" PRIu64 " receipts in %.0f s: %" PRIu64 " jobs, %" PRIu64 " faults, %" PRIu64
                " error events, %" PRIu64 " openings by %" PRIu64 " tills\n",
                receipts, seconds, jobs_, faults_, errors_, opened_, lanes_);
    line("confirmed output:", ends_[1]);
    line("without confirmation:", ends_[0]);
    std::printf("  twice on paper in part, after an error event: %" PRIu64 "\n", twice_);
    std::printf("  slowest call %ld ms, slowest close %ld ms\n", slowestCall_, longestClose_);
    std::printf("  heap %zu -> %zu bytes, descriptors %zu -> %zu, threads %zu -> %zu (all tills, first tenth -> end)\n",
                first_.heap, last_.heap, first_.descriptors, last_.descriptors, first_.threads, last_.threads);
    std::printf("  failures: %" PRIu64 "\n", failures_);
}

void Tally::PrintKills() const
{
    const double seconds = Seconds();
    const std::lock_guard lock(mutex_);
    std::printf("  %" PRIu64 " tills killed while they opened the printer, %" PRIu64 " while they printed, in %.0f s\n",
                killed_[0], killed_[1], seconds);
    std::printf("  the next till: receipt on paper %" PRIu64 " times, not on paper %" PRIu64
                ", at most %ld ms after its start\n",
                ends_[1][0], ends_[1][4], longestWait_);
    std::printf("  unfinished files of the registry, beside it: %" PRIu64 "\n", temporaryFiles_);
    std::printf("  failures: %" PRIu64 "\n", failures_);
}

}  // namespace marbex::soak
