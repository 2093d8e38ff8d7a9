#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "account/paper_account.h"
#include "account/story.h"
#include "faults.h"
#include "station.h"
#include "tally.h"
#include "till_process.h"

namespace marbex::soak {

struct LaneOptions {
    bool confirms = false;
    bool calm = false;  // nothing is done to the printer
};

// One till with its printer: has it print receipts, session after session, under faults, and makes the account.
class Lane {
public:
    Lane(int number, uint64_t seed, const LaneOptions& options, std::string folder, Tally& tally);

    // So many receipts in sessions of some. Stops early when the till is broken.
    void Run(uint32_t receipts, uint32_t aSession);

private:
    struct Fate {
        JobKey job;
        std::string fate;
        int retries = 0;
    };

    struct Failure {
        uint32_t receipt = 0;
        std::string what;
    };

    bool RunSession(uint32_t first, uint32_t count);
    bool Opened();
    bool Follow(std::vector<Fate>& fates, Vitals& vitals);
    void Quiesce();
    void Judge(const std::vector<Fate>& fates, uint32_t first, uint32_t count);
    void JudgeReceipt(uint32_t number, const std::vector<Fate>& fates);
    std::string Verdict(const Fate& fate, ReceiptEnd& end) const;
    bool LostUnseen(JobKey job) const;
    void Happened(const virtual_printer::Happening& happening);
    void Fail(uint32_t receipt, const std::string& what);
    void TellFailures();

    Tally& tally_;
    const bool calm_;
    const uint64_t seed_;
    PaperAccount paper_;  // used under the printer's lock
    Story story_;         // of this session
    Station station_;
    std::unique_ptr<TillProcess> till_;
    std::vector<Vitals> vitals_;  // after each session
    uint32_t session_ = 0;
    // Of this session:
    uint64_t errors_ = 0;  // events
    bool cleared_ = false;
    std::vector<Failure> failures_;
};

}  // namespace marbex::soak
