#pragma once

#include <chrono>
#include <deque>
#include <string>

#include "receipt.h"
#include "till/service.h"

namespace marbex::soak {

// One opening of the printer: prints receipts and keeps account of what it is told about every job.
class Session {
public:
    // eventFile: events go to a file of that name, for a till that has no control object; empty: to a control object.
    Session(uint64_t seed, std::string folder, std::string eventFile = {});
    // Opens, prints, waits until it has been told about every job, says the fates, closes.
    void Print(uint32_t first, uint32_t count);
    // One receipt, each of whose jobs is waited for.
    void PrintOne(uint32_t number);
    // Receipt after receipt, and now and then a registration, which writes into the registry, until it is killed.
    void PrintForEver();

private:
    using Clock = std::chrono::steady_clock;

    // What is told about at once: a call, or the calls of a transaction.
    struct Task {
        uint32_t receipt = 0;
        uint32_t firstJob = 0;
        uint32_t lastJob = 0;
        bool async = false;
        int32_t outputId = 0;
        bool settled = false;
        const char* fate = "";
        int retries = 0;  // how often an error was answered RETRY while it was under way
    };

    bool Open();
    void Close();
    void TellFates() const;
    void PrintReceipt(const Receipt& receipt);
    bool Hand(const Receipt& receipt, uint32_t job);
    void HandTransaction(const Receipt& receipt);
    int32_t PrintJob(uint32_t receipt, uint32_t number, const Job& job);
    Task& Begin(uint32_t receipt, uint32_t firstJob, uint32_t lastJob, bool async);
    void Returned(Task& task, int32_t result);
    int32_t Timed(const char* method, std::initializer_list<Argument> arguments);
    void SetAsync(bool async);
    void Settle(std::size_t most);
    bool RunMessages(int milliseconds);
    bool ToldOfAnEnd() const;
    std::size_t UnderWay() const;
    void Completed(int32_t outputId);
    int32_t Answer(int32_t code, int32_t extended);

    const uint64_t seed_;
    const std::string folder_;
    const std::string eventFile_;
    Dice answers_;
    ControlObject control_;
    Service service_;
    std::deque<Task> tasks_;  // in the order in which they were handed over
    bool async_ = false;
    int clears_ = 0;
    Clock::time_point progress_{};
    Clock::duration slowest_{};
};

}  // namespace marbex::soak
