#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "till/vitals.h"

namespace marbex::soak {

// How a receipt ended.
enum class ReceiptEnd : uint8_t {
    kPrinted,
    kReported,       // lost in part at least, and the till was told
    kLostByPrinter,  // the power went when the printer had it
    kUnderWay,       // lost on a link that broke, by a till that has not asked for confirmed output
    kWrong,          // none of these
};

// The whole account. Any thread.
class Tally {
public:
    explicit Tally(uint32_t mostStories) : mostStories_(mostStories) {}

    void Ended(ReceiptEnd end, bool confirmed, bool twice);
    void Did(uint64_t faults, uint64_t jobs, uint64_t errors);
    void Killed(bool printing, long millisecondsUntilTheNextPrints);
    void Left(uint64_t temporaryFiles);
    void Closed(long milliseconds, long slowestCall);
    void Held(const std::vector<Vitals>& samples, const std::string& lane);
    void Opened() { Count(opened_); }
    // A failure with its story; only the first ones are told whole.
    void Failed(uint64_t times, const std::string& what, const std::string& story);

    uint64_t Receipts() const;
    bool Good() const;
    // The summary.
    void PrintSoak() const;
    void PrintKills() const;

private:
    using Clock = std::chrono::steady_clock;

    void Count(uint64_t& number);
    double Seconds() const { return std::chrono::duration<double>(Clock::now() - start_).count(); }

    const Clock::time_point start_ = Clock::now();
    const uint32_t mostStories_;
    mutable std::mutex mutex_;
    uint64_t ends_[2][5] = {};  // without and with confirmation
    uint64_t twice_ = 0;
    uint64_t opened_ = 0;
    uint64_t faults_ = 0;
    uint64_t jobs_ = 0;
    uint64_t errors_ = 0;
    uint64_t killed_[2] = {};  // while it opened, while it printed
    long longestWait_ = 0;
    uint64_t temporaryFiles_ = 0;
    uint64_t failures_ = 0;
    uint32_t told_ = 0;
    long longestClose_ = 0;
    long slowestCall_ = 0;
    Vitals first_;  // of all lanes together
    Vitals last_;
    uint64_t lanes_ = 0;
};

}  // namespace marbex::soak
