#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "printer/printer_encoder.h"

namespace marbex::test {

// A printer command object without a printer: keeps what it was told to print and fails as a test says.
class FakePrinter final : public printer::CPrinterEncoder {
public:
    explicit FakePrinter(platform::Clock& systemClock) : CPrinterEncoder(Traits(), systemClock) {}

    // What the printer is like from now on.
    enum class Condition { kWell, kCoverOpen, kPaperEnd, kSilent };
    void SetCondition(Condition condition)
    {
        const std::lock_guard hold(mutex_);
        condition_ = condition;
    }

    // Texts that are printed before the printer takes on a condition by itself.
    void FailAfter(int texts, Condition condition)
    {
        const std::lock_guard hold(mutex_);
        textsLeft_ = texts;
        later_ = condition;
    }

    void BecomeWellAfterQueries(int queries)
    {
        const std::lock_guard hold(mutex_);
        queriesLeft_ = queries;
    }

    // The next text does not reach the printer, which answers all the same.
    void BreakLinkOnce()
    {
        const std::lock_guard hold(mutex_);
        linkBreaks_ = true;
    }

    // What the next questions for a confirmation find; after them the printer confirms. kSilent: no answer in time, or
    // over another link.
    void Confirm(std::deque<Condition> found)
    {
        const std::lock_guard hold(mutex_);
        confirmations_ = std::move(found);
    }
    int Confirmations()
    {
        const std::lock_guard hold(mutex_);
        return confirmationsAsked_;
    }

    // The next text finds no memory.
    void RunOutOfMemory()
    {
        const std::lock_guard hold(mutex_);
        withoutMemory_ = true;
    }

    // The next text waits until Resume.
    void Hold()
    {
        const std::lock_guard hold(mutex_);
        held_ = true;
    }
    void Resume()
    {
        {
            const std::lock_guard hold(mutex_);
            held_ = false;
        }
        changed_.notify_all();
    }
    void WaitUntilHeld()
    {
        std::unique_lock hold(mutex_);
        changed_.wait(hold, [this] { return waiting_; });
    }

    std::vector<std::string> Printed()
    {
        const std::lock_guard hold(mutex_);
        return printed_;
    }
    int Queries()
    {
        const std::lock_guard hold(mutex_);
        return queries_;
    }

    int32_t PrintText(std::string_view text) override { return Take(std::string(text)); }
    int32_t CutPaper(int32_t percentage) override { return Take("cut " + std::to_string(percentage)); }
    int32_t SendDirect(const printer::DirectIODataStruct& direct) override
    {
        return Take("direct " + std::to_string(direct.count));
    }
    int32_t RecoverFromError() override { return 0; }

    bool ConfirmReceipt(const printer::OutputMark&, printer::PrinterStatus& status) override
    {
        const std::lock_guard hold(mutex_);
        ++confirmationsAsked_;
        Condition found = Condition::kWell;
        if (!confirmations_.empty()) {
            found = confirmations_.front();
            confirmations_.pop_front();
        }
        status = StatusOf(found);
        failed = found == Condition::kSilent;
        return !failed;
    }

    int32_t GetStatus(printer::PrinterStatus& status, bool, uint32_t* fullStatus) override
    {
        const std::lock_guard hold(mutex_);
        ++queries_;
        status = StatusOf(condition_);
        if (fullStatus != nullptr) *fullStatus = 0;
        failed = condition_ == Condition::kSilent;
        if (queriesLeft_ > 0 && --queriesLeft_ == 0) condition_ = Condition::kWell;
        return failed ? 1 : 0;
    }

private:
    static const printer::EncoderTraits& Traits()
    {
        static const printer::EncoderTraits traits;
        return traits;
    }

    static printer::PrinterStatus StatusOf(Condition condition)
    {
        printer::PrinterStatus status;
        status.flags[printer::PrinterStatus::kCoverOpen] = condition == Condition::kCoverOpen;
        status.flags[printer::PrinterStatus::kPaperEnd] = condition == Condition::kPaperEnd;
        status.flags[printer::PrinterStatus::kNoResponse] = condition == Condition::kSilent;
        return status;
    }

    int32_t Take(const std::string& what)
    {
        std::unique_lock hold(mutex_);
        waiting_ = held_;
        changed_.notify_all();
        changed_.wait(hold, [this] { return !held_; });
        waiting_ = false;
        if (std::exchange(withoutMemory_, false)) throw std::bad_alloc();
        if (std::exchange(linkBreaks_, false)) {
            failed = true;
            return printer::kEncoderTextNotSent;
        }
        if (textsLeft_ > 0 && --textsLeft_ == 0) condition_ = later_;
        if (condition_ != Condition::kWell) {
            failed = true;
            return printer::kEncoderTextNotSent;
        }
        printed_.push_back(what);
        return 0;
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    Condition condition_ = Condition::kWell;
    Condition later_ = Condition::kWell;
    int textsLeft_ = 0;
    int queriesLeft_ = 0;
    bool withoutMemory_ = false;
    bool linkBreaks_ = false;
    std::deque<Condition> confirmations_;
    int confirmationsAsked_ = 0;
    bool held_ = false;
    bool waiting_ = false;
    int queries_ = 0;
    std::vector<std::string> printed_;
};

}  // namespace marbex::test
