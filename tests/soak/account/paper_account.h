#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "receipt.h"
#include "virtual_printer/printer.h"

namespace marbex::soak {

// A job by its receipt and its place in it: the order in which a till hands them over.
struct JobKey {
    uint32_t receipt = 0;
    uint32_t job = 0;
    friend auto operator<=>(const JobKey&, const JobKey&) = default;
};

// What of the receipts reached the paper, how often and in which order, and what the printer or the link lost. Fed by
// the printer's observer and its copy of what is received.
class PaperAccount {
public:
    struct Found {
        std::map<int, int> copies;  // by line
        int lines = 1;
        bool lostByPrinter = false;  // in part at least: the power went when it had been received
        bool inOrder = true;         // everything seen before it first was whole came before it
        int Copies() const;          // of the line found most often
        bool Whole() const;
    };

    // certain: output whose end was told has been printed, or the printer has lost it.
    PaperAccount(std::string model, uint64_t seed, bool certain)
        : model_(std::move(model)), seed_(seed), certain_(certain)
    {
    }

    void Begin();  // a new session: what was found is forgotten
    void Happened(const virtual_printer::Happening& happening);
    void Received(std::span<const uint8_t> bytes);

    bool Connected() const { return connections_ > 0; }  // where the printer notices it
    const Found& Of(JobKey job) const;
    enum class Loss : uint8_t { kAny, kPower };
    // Whether this lies between the last thing seen before the link broke, the power went or the printer threw away
    // what it had, and the first thing seen afterwards. kPower: the power and nothing else.
    bool MayHaveBeenUnderWay(JobKey job, Loss loss) const;

private:
    struct Break {
        JobKey before;
        bool power = false;
        JobKey after{UINT32_MAX, 0};
    };

    std::vector<Mark> MarksOf(const virtual_printer::Happening& happening);
    std::vector<Mark> MarkOfCut() const;
    void See(const Mark& mark, bool lost);
    void LosePower(const virtual_printer::PowerOff& off);

    const std::string model_;
    const uint64_t seed_;
    const bool certain_;
    std::map<JobKey, Found> jobs_;
    std::vector<Break> breaks_;
    std::size_t closedBreaks_ = 0;  // of which what came after is known
    int connections_ = 0;
    JobKey last_;  // seen
    JobKey furthest_;
    JobKey furthestWhole_;
    std::string line_;             // wrapped ones are joined
    std::vector<uint8_t> stream_;  // the last bytes received
    uint64_t streamEnd_ = 0;
};

}  // namespace marbex::soak
