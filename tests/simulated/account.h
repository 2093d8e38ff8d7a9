#pragma once

// The account of the output: what the till handed in, what it was told of it, and what the link took. Every job is out,
// or was reported lost; never neither, and what was reported done is out.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace marbex::tests {

// One call that prints something.
struct Job {
    enum class Kind : uint8_t { kText, kCut, kFeed, kBarCode, kPicture };
    int number = 0;
    Kind kind = Kind::kText;
    int lines = 0;  // marked ones that it carries; a cut has none
    bool async = false;
    int transaction = 0;  // 0: none
    uint64_t begun = 0;   // ticks of the account
    uint64_t ended = 0;
    int32_t result = -1;
    int32_t outputId = 0;      // 0: not known, since another thread printed meanwhile
    int opening = 0;           // of the service
    int32_t completesAs = 0;   // the number of its own, or of its transaction
    bool printsItself = true;  // false: only collected
    bool confirmable = false;
    bool forgotten = false;
    int completions = 0;
};

class Account {
public:
    int Begin(Job::Kind kind, int lines, bool async, int transaction, bool confirmable);
    // The result of the call. ownId: nobody else printed meanwhile, so it is the job's.
    void End(int number, int32_t result, int32_t ownId);
    // Another thread changed meanwhile what becomes of output: nobody can say what is right for this job.
    void Forget(int number);
    std::string TextOf(int number) const;  // marked lines, each with its line feed; the mark alone of a bar code

    void Opened() { ++opening_; }
    int Opening() const { return opening_; }
    void TransactionEnds(int transaction, bool async, int32_t result, int32_t currentId);
    void Completed(int32_t outputId);
    // What was handed in before this moment may be lost: the till has been told, or has asked for it.
    void Excuse() { excused_ = ++tick_; }
    void ErrorTold() { lastError_ = ++tick_; }
    // One job, or one transaction, may be lost.
    void ExcuseOne() { ++oddAnswers_; }
    // Completion events may be missing from now on back.
    void EventsDropped() { eventsDropped_ = ++tick_; }

    // The printer was without power for a while, and the link cannot tell: what was on its way then may be lost though
    // it is confirmed.
    void PowerLostUnseen() { powerLost_ = ++tick_; }

    // Asynchronous jobs that may still be completed.
    int Pending() const;
    // More of them than the errors that were not answered, or could not be helped, account for.
    bool MissesCompletions() const { return Pending() > oddAnswers_; }
    // Where everything went.
    struct Traces {
        std::string_view taken;      // by the link
        std::string_view delivered;  // to the printer
        std::string_view paper;
        bool confirmed = false;  // the service asks the printer before it reports a job complete
        bool sendsOn = false;    // the link sends what it has taken after the write has been given up
        bool toldLate = false;   // an error may have cleared everything some time before the till is told of it
    };
    std::vector<std::string> Judge(const Traces& traces);  // what is wrong

private:
    bool Excused(const Job& job) const { return job.begun < excused_; }
    int CompletionsOfOthers(const Job& job) const;
    struct Copies {
        int taken = 0;
        int arrivedWhole = 0;
        int printed = 0;
    };
    void JudgeJob(const Job& job, const Copies& copies, const Traces& traces);

    std::vector<Job> jobs_;
    struct Completion {
        int opening;
        int32_t outputId;
    };
    std::vector<Completion> completions_;
    std::vector<Completion> transactionsEnded_;  // with the number that was the last one then
    std::vector<std::string> complaints_;
    uint64_t tick_ = 0;
    uint64_t excused_ = 0;
    uint64_t eventsDropped_ = 0;
    uint64_t lastError_ = 0;
    uint64_t powerLost_ = 0;
    int oddAnswers_ = 0;
    int opening_ = 0;
};

}  // namespace marbex::tests
