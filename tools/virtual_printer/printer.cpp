#include "virtual_printer/printer.h"

#include <deque>
#include <stdexcept>
#include <utility>

#include "virtual_printer/condition.h"
#include "virtual_printer/interpreter.h"
#include "virtual_printer/link_input.h"

namespace marbex::virtual_printer {
namespace {

// How many full-status answers after a picture still say that it is being printed.
constexpr int kAnswersWhilePrinting = 2;

const Model& ModelOf(std::string_view name)
{
    const Model* model = FindModel(name);
    if (model == nullptr) {
        throw std::invalid_argument("no printer model is named " + std::string(name));
    }
    return *model;
}

}  // namespace

class VirtualPrinter::Impl {
public:
    Impl(const VirtualPrinter& owner, const Model& model, PrinterOptions options)
        : owner_(owner),
          model_(model),
          paper_(options.wide && model.wideDots != 0 ? model.wideDots : model.printableDots),
          interpreter_(model, options.identity != 0 ? options.identity : model.identity, options.wide, paper_,
                       {[this](Happening happening) { Record(std::move(happening)); },
                        [this](const Bytes& answer) { Answer(answer); }}),
          input_({[this](const Command& command) { Take(command); }, [this](uint8_t kind) { TellStatus(kind); },
                  [this](int bytes) {
                      Record(Cancelled{true, bytes + Discard()});
                  },
                  [this](int bytes) {
                      Record(Cancelled{false, bytes + Discard()});
                  },
                  [this] { return condition_.Stopped(); }}),
          displayReader_([this](const Command& command) { interpreter_.DisplayLine(command); }, true)
    {
    }

    Bytes Feed(std::span<const uint8_t> bytes)
    {
        int lost = 0;
        for (const uint8_t byte : bytes) {
            if (Room() == 0) {
                ++lost;
            } else {
                input_.Put(byte);
            }
        }
        if (lost > 0) {
            Record(Overrun{lost});
        }
        Bytes answers = std::exchange(answers_, {});
        return mute_ ? Bytes{} : answers;
    }

    std::size_t Room() const
    {
        if (!condition_.Stopped()) {
            return SIZE_MAX;
        }
        const std::size_t used = waitingBytes_ + input_.Pending();
        return used >= kStoppedBuffer ? 0 : kStoppedBuffer - used;
    }

    void FeedDisplay(std::span<const uint8_t> bytes)
    {
        for (const uint8_t byte : bytes) {
            displayReader_.Put(byte);
        }
        interpreter_.TellDisplay();
    }

    void LinkClosed()
    {
        Bytes rest = input_.Abandon();
        if (!rest.empty()) {
            Record(Unknown{std::move(rest), "unfinished when the link was lost"});
        }
    }

    void Change(const std::function<void(Condition&)>& change)
    {
        const bool stopped = condition_.Stopped();
        change(condition_);
        if (!stopped && condition_.Stopped()) {
            input_.Stopped();
        }
        while (!condition_.Stopped() && !waiting_.empty()) {
            const Command command = std::move(waiting_.front());
            waiting_.pop_front();
            waitingBytes_ -= command.bytes.size();
            interpreter_.Execute(command);
        }
    }

    void Record(Happening happening)
    {
        if (observer_) {
            observer_(owner_, happening);
        } else {
            happenings_.push_back(std::move(happening));
        }
    }

    std::size_t WaitingBytes() const { return waitingBytes_; }

    const VirtualPrinter& owner_;
    const Model& model_;
    Condition condition_;
    bool printingHeld_ = false;
    bool mute_ = false;
    std::vector<Happening> happenings_;
    Observer observer_;
    Copy copy_;
    Paper paper_;
    Interpreter interpreter_;

private:
    // A whole command has come in.
    void Take(const Command& command)
    {
        if (copy_) {
            copy_(command.bytes);
        }
        const bool canBeDone = waiting_.empty() && !interpreter_.NeedsPaper(command);
        if (condition_.Stopped() && command.op == Op::kCancel) {
            Record(Cancelled{false, Discard()});
        } else if (!condition_.Stopped() || canBeDone) {
            interpreter_.Execute(command);
        } else {
            waitingBytes_ += command.bytes.size();
            waiting_.push_back(command);
        }
    }

    int Discard()
    {
        const auto discarded = static_cast<int>(std::exchange(waitingBytes_, 0));
        waiting_.clear();
        return discarded + interpreter_.CancelLine();
    }

    void TellStatus(uint8_t kind)
    {
        if (model_.tellsPrinting && interpreter_.TakeImageEnded()) {
            answersWhilePrinting_ = kAnswersWhilePrinting;
        }
        condition_.printing = printingHeld_ || answersWhilePrinting_ > 0;
        if (kind == kFullStatus && answersWhilePrinting_ > 0) {
            --answersWhilePrinting_;
        }
        const Bytes answer = StatusAnswer(condition_, kind);
        Record(StatusQuery{kind, mute_ ? Bytes{} : answer});
        Answer(answer);
    }

    void Answer(const Bytes& answer) { answers_.insert(answers_.end(), answer.begin(), answer.end()); }

    Bytes answers_;
    int answersWhilePrinting_ = 0;
    std::deque<Command> waiting_;  // commands kept while stopped
    std::size_t waitingBytes_ = 0;
    LinkInput input_;
    CommandReader displayReader_;
};

VirtualPrinter::VirtualPrinter(std::string_view modelName, PrinterOptions options)
    : impl_(std::make_unique<Impl>(*this, ModelOf(modelName), options))
{
}

VirtualPrinter::~VirtualPrinter() = default;

const Model& VirtualPrinter::GetModel() const
{
    return impl_->model_;
}

Bytes VirtualPrinter::Feed(std::span<const uint8_t> bytes)
{
    return impl_->Feed(bytes);
}

Bytes VirtualPrinter::Feed(std::string_view bytes)
{
    return impl_->Feed(Bytes(bytes.begin(), bytes.end()));
}

std::size_t VirtualPrinter::Room() const
{
    return impl_->Room();
}

void VirtualPrinter::FeedDisplay(std::span<const uint8_t> bytes)
{
    impl_->FeedDisplay(bytes);
}

void VirtualPrinter::LinkClosed()
{
    impl_->LinkClosed();
}

void VirtualPrinter::SetCover(bool open)
{
    impl_->Change([open](Condition& condition) { condition.coverOpen = open; });
}

void VirtualPrinter::SetPaper(PaperState state)
{
    impl_->Change([state](Condition& condition) {
        condition.paperLow = state == PaperState::kLow;
        condition.paperOut = state == PaperState::kOut;
    });
}

void VirtualPrinter::SetJam(bool jammed)
{
    impl_->Change([this, jammed](Condition& condition) { condition.jam = jammed && impl_->model_.tellsPrinting; });
}

void VirtualPrinter::SetMute(bool mute)
{
    impl_->mute_ = mute;
}

void VirtualPrinter::SetDrawerSignal(bool high)
{
    impl_->condition_.drawerSignal = high && impl_->model_.drawer;
}

void VirtualPrinter::SetPrintingHeld(bool held)
{
    impl_->printingHeld_ = held && impl_->model_.tellsPrinting;
}

PrinterState VirtualPrinter::State() const
{
    const Condition& condition = impl_->condition_;
    PrinterState state;
    state.coverOpen = condition.coverOpen;
    state.paper = condition.paperOut ? PaperState::kOut : condition.paperLow ? PaperState::kLow : PaperState::kOk;
    state.jammed = condition.jam;
    state.mute = impl_->mute_;
    state.stopped = condition.Stopped();
    state.waitingBytes = impl_->WaitingBytes();
    return state;
}

const std::vector<Happening>& VirtualPrinter::Happenings() const
{
    return impl_->happenings_;
}

std::vector<Happening> VirtualPrinter::TakeHappenings()
{
    return std::exchange(impl_->happenings_, {});
}

void VirtualPrinter::Observe(Observer observer)
{
    impl_->observer_ = std::move(observer);
}

void VirtualPrinter::CopyCommands(Copy copy)
{
    impl_->copy_ = std::move(copy);
}

void VirtualPrinter::Record(Happening happening)
{
    impl_->Record(std::move(happening));
}

std::vector<std::string> VirtualPrinter::Lines() const
{
    std::vector<std::string> lines;
    for (const TextLine& line : All<TextLine>()) {
        lines.push_back(line.text);
    }
    return lines;
}

std::string VirtualPrinter::UnfinishedLine() const
{
    return impl_->interpreter_.UnfinishedLine();
}

const Paper& VirtualPrinter::GetPaper() const
{
    return impl_->paper_;
}

}  // namespace marbex::virtual_printer
