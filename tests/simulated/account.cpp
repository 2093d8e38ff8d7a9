#include "account.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>

namespace marbex::tests {
namespace {

constexpr std::string_view kLineBegin = "coffee 2,40 ";

std::string Mark(int number, int line)
{
    char mark[24];
    std::snprintf(mark, sizeof mark, "<J%04d.%03d>", number, line);
    return mark;
}

std::string NameOf(const Job& job)
{
    static constexpr const char* kNames[] = {"job ", "cut ", "feed ", "bar code ", "picture "};
    std::string name = kNames[static_cast<std::size_t>(job.kind)];
    name += std::to_string(job.number) + (job.async ? " (async" : " (sync");
    if (job.transaction != 0) name += ", transaction " + std::to_string(job.transaction);
    return name + ", id " + std::to_string(job.outputId) + ", result " + std::to_string(job.result) + ")";
}

// What is behind the last line of a text, and behind a bar code.
struct Ends {
    std::string_view text = "\n";
    std::string_view barCode;
};
// What sets the printer back.
constexpr Ends kWholeEnds{{"\n\x1B!\0\x1Bt\0", 7}, {"\x1B\x61\0", 3}};

// How often each job is there: every line of it, one after the other, and the end behind the last.
std::map<int, int> CountCopies(std::string_view trace, const std::vector<Job>& jobs, const Ends& ends)
{
    std::map<int, int> copies;
    std::map<int, int> next;  // line that continues a copy
    constexpr std::size_t kLength = 11;
    for (std::size_t at = trace.find("<J"); at != std::string_view::npos; at = trace.find("<J", at + 1)) {
        const std::string_view mark = trace.substr(at, kLength);
        if (mark.size() < kLength || mark[6] != '.' || mark[10] != '>') continue;
        const int number = std::atoi(std::string(mark.substr(2, 4)).c_str());
        const int line = std::atoi(std::string(mark.substr(7, 3)).c_str());
        if (number < 1 || number > static_cast<int>(jobs.size())) continue;
        const Job& job = jobs[static_cast<std::size_t>(number) - 1];
        const bool last = line + 1 == job.lines;
        const std::string_view end = job.kind != Job::Kind::kText ? ends.barCode : last ? ends.text : "\n";
        if (!trace.substr(at + kLength).starts_with(end)) continue;
        if (job.kind == Job::Kind::kText && !trace.substr(0, at).ends_with(kLineBegin)) continue;
        int& wanted = next[number];
        if (line == 0) wanted = 0;
        if (line != wanted) continue;
        wanted = last ? 0 : wanted + 1;
        if (last) ++copies[number];
    }
    return copies;
}

}  // namespace

int Account::Begin(Job::Kind kind, int lines, bool async, int transaction, bool confirmable)
{
    Job job;
    job.number = static_cast<int>(jobs_.size()) + 1;
    job.kind = kind;
    job.lines = lines;
    job.async = async;
    job.transaction = transaction;
    job.printsItself = transaction == 0;
    job.confirmable = confirmable;
    job.begun = ++tick_;
    job.opening = opening_;
    jobs_.push_back(job);
    return job.number;
}

std::string Account::TextOf(int number) const
{
    const Job& job = jobs_[static_cast<std::size_t>(number) - 1];
    if (job.kind != Job::Kind::kText) return Mark(number, 0);
    std::string text;
    for (int line = 0; line < job.lines; ++line)
        text.append(kLineBegin).append(Mark(number, line)) += '\n';
    return text;
}

void Account::End(int number, int32_t result, int32_t ownId)
{
    Job& job = jobs_[static_cast<std::size_t>(number) - 1];
    job.ended = ++tick_;
    job.result = result;
    job.outputId = job.completesAs = ownId;
    // It may have been completed before the call returned.
    job.completions = static_cast<int>(std::ranges::count_if(completions_, [&job](const Completion& completion) {
        return job.outputId != 0 && completion.opening == job.opening && completion.outputId == job.outputId;
    }));
}

void Account::Forget(int number)
{
    jobs_[static_cast<std::size_t>(number) - 1].forgotten = true;
}

// The jobs that were collected share the fate of the transaction.
void Account::TransactionEnds(int transaction, bool async, int32_t result, int32_t currentId)
{
    ++tick_;
    if (transaction == 0) return;
    transactionsEnded_.push_back({opening_, currentId});
    Job* last = nullptr;
    for (Job& job : jobs_) {
        if (job.transaction != transaction || job.result != 0) continue;
        job.async = async;
        job.result = result;
        job.outputId = 0;
        job.completesAs = currentId;
        job.printsItself = true;
        last = &job;
    }
    if (last != nullptr) last->outputId = currentId;
}

void Account::Completed(int32_t outputId)
{
    ++tick_;
    completions_.push_back({opening_, outputId});
    for (Job& job : jobs_) {
        if (job.opening != opening_ || job.outputId != outputId || outputId == 0) continue;
        ++job.completions;
        for (Job& together : jobs_) {
            if (job.transaction != 0 && together.transaction == job.transaction) together.completions = job.completions;
        }
    }
}

int Account::Pending() const
{
    return static_cast<int>(std::count_if(jobs_.begin(), jobs_.end(), [this](const Job& job) {
        return job.async && job.result == 0 && job.printsItself && !job.forgotten && job.outputId != 0 &&
               job.completions == 0 && !Excused(job) && job.begun > eventsDropped_;
    }));
}

// Of jobs that have no number of their own: the line feeds before a cut, and a transaction that collected nothing,
// carry the one of the job before them.
int Account::CompletionsOfOthers(const Job& job) const
{
    const auto same = [&job](int opening, int32_t id) {
        return opening == job.opening && (id == job.completesAs || id == 0);
    };
    const auto cuts = std::count_if(jobs_.begin(), jobs_.end(), [&](const Job& cut) {
        return cut.kind == Job::Kind::kCut && cut.result == 0 &&
               same(cut.opening, cut.outputId == 0 ? 0 : cut.outputId - 1);
    });
    const auto transactions =
        std::count_if(transactionsEnded_.begin(), transactionsEnded_.end(),
                      [&](const Completion& ended) { return same(ended.opening, ended.outputId); });
    return static_cast<int>(cuts + transactions) - (job.transaction != 0 ? 1 : 0);
}

void Account::JudgeJob(const Job& job, const Copies& copies, const Traces& traces)
{
    if (job.ended == 0 || !job.printsItself || job.forgotten) return;
    // Which cut, or which picture, the link has taken nobody can tell.
    const bool out = job.lines == 0 || job.kind == Job::Kind::kPicture || copies.taken > 0;
    const auto complain = [&](const char* what) { complaints_.push_back(NameOf(job) + ' ' + what); };
    if (job.result != 0) {
        // Of a transaction a part may well have gone out.
        if (copies.arrivedWhole > 0 && job.transaction == 0 && !traces.sendsOn && !traces.confirmed)
            complain("was reported failed, but all of it arrived");
        return;
    }
    if (copies.taken > 1 && lastError_ < job.begun) complain("was sent twice without an error event");
    // It was cleared on the way, and what has been printed since had left the transaction.
    const bool nothingLeft = job.transaction != 0 && (!job.async || traces.toldLate) && Excused(job);
    if (job.completions > CompletionsOfOthers(job) && !out && !nothingLeft)
        complain("was reported complete, but the link never took all of it");
    const bool done = job.async ? job.completions > CompletionsOfOthers(job) : !Excused(job);
    if (traces.confirmed && job.confirmable && done && job.lines > 0 && copies.printed == 0 && job.begun > powerLost_)
        complain("was confirmed, but is not on paper");
    if (!job.async) {
        // What was collected can be cleared before it is printed.
        if (!out && !(job.transaction != 0 && Excused(job)))
            complain("returned success, but the link never took all of it");
        return;
    }
    if (!out && !Excused(job)) {
        if (oddAnswers_ > 0) {
            if (job.transaction == 0) --oddAnswers_;
            return;
        }
        complain("is lost, and nobody was told");
    }
    if (job.completions == 0 && job.outputId != 0 && out && !Excused(job) && job.begun > eventsDropped_) {
        if (job.kind == Job::Kind::kCut && oddAnswers_ > 0) return;
        complain("was never reported complete");
    }
}

std::vector<std::string> Account::Judge(const Traces& traces)
{
    auto taken = CountCopies(traces.taken, jobs_, {});
    auto arrived = CountCopies(traces.delivered, jobs_, kWholeEnds);
    auto printed = CountCopies(traces.paper, jobs_, {});
    for (const Job& job : jobs_)
        JudgeJob(job, {taken[job.number], arrived[job.number], printed[job.number]}, traces);
    for (const Completion& completion : completions_) {
        const bool known = std::any_of(jobs_.begin(), jobs_.end(), [&](const Job& job) {
            // Line feeds before a cut carry the number of the job before it.
            return job.opening == completion.opening &&
                   (job.outputId == completion.outputId || job.outputId == 0 || completion.outputId == 0);
        });
        if (!known)
            complaints_.push_back("output " + std::to_string(completion.outputId) + ", reported complete, is unknown");
    }
    return complaints_;
}

}  // namespace marbex::tests
