#include "virtual_printer/engine.h"

#include <utility>

namespace marbex::virtual_printer {
namespace {

// How many full-status answers after a picture still say that it is being printed.
constexpr int kAnswersWhilePrinting = 2;

}  // namespace

Engine::Engine(const VirtualPrinter& owner, const Model& model, const PrinterOptions& options)
    : owner_(owner),
      model_(model),
      paper_(options.wide && model.wideDots != 0 ? model.wideDots : model.printableDots),
      interpreter_(model, options.identity != 0 ? options.identity : model.identity, options.wide, paper_,
                   {[this](Happening happening) { Record(std::move(happening)); },
                    [this](const Bytes& bytes) { return Answer(bytes); }}),
      buffer_(options.buffer != 0 ? options.buffer : model.buffer),
      input_({[this](const Command& command) { Take(command); }, [this](uint8_t kind) { TellStatus(kind); },
              [this](int bytes) {
                  Record(Cancelled{true, bytes + Cancel()});
              },
              [this](int bytes) {
                  Record(Cancelled{false, bytes + Cancel()});
              },
              [this] { return condition_.Stopped(); }}),
      displayReader_([this](const Command& command) { interpreter_.DisplayLine(command); }, true)
{
    mechanism_.SetSpeed(options.speed);
}

PrinterState Engine::State() const
{
    PrinterState state;
    state.coverOpen = condition_.coverOpen;
    state.paper = condition_.paperOut ? PaperState::kOut : condition_.paperLow ? PaperState::kLow : PaperState::kOk;
    state.jammed = condition_.jam;
    state.mute = mute_;
    state.garbage = garbage_;
    state.stopped = condition_.Stopped();
    state.on = on_;
    state.drawerSignal = condition_.drawerSignal;
    state.printingHeld = printingHeld_;
    state.speed = mechanism_.Speed();
    state.waitingBytes = buffer_.Used();
    state.received = received_;
    state.lines = lines_;
    state.cuts = cuts_;
    return state;
}

std::size_t Engine::Room() const
{
    if (!on_) {
        return SIZE_MAX;
    }
    const bool waits = !buffer_.Empty() || !MayPrint() || Held();
    const std::size_t used = buffer_.Used() + (waits ? input_.Pending() : 0);
    return used >= buffer_.Capacity() ? 0 : buffer_.Capacity() - used;
}

std::optional<Engine::Clock::time_point> Engine::Due() const
{
    return mechanism_.Busy(now_) ? std::optional(mechanism_.Free()) : std::nullopt;
}

Bytes Engine::Feed(std::span<const uint8_t> bytes)
{
    if (!on_) {
        missed_ += bytes.size();
        return {};
    }
    Bytes taken;
    for (const uint8_t byte : bytes) {
        if (Room() > 0) {
            ++received_;
            taken.push_back(byte);
            input_.Put(byte);
        }
    }
    if (copyReceived && !taken.empty()) {
        copyReceived(taken);
    }
    if (taken.size() < bytes.size()) {
        Record(Overrun{static_cast<int>(bytes.size() - taken.size())});
    }
    Bytes answers = std::exchange(answers_, {});
    return mute_ ? Bytes{} : answers;
}

void Engine::FeedDisplay(std::span<const uint8_t> bytes)
{
    if (!on_) {
        return;
    }
    for (const uint8_t byte : bytes) {
        displayReader_.Put(byte);
    }
    interpreter_.TellDisplay();
}

void Engine::GoOn(Clock::time_point now)
{
    now_ = now;
    Drain();
}

void Engine::LinkClosed()
{
    Bytes rest = input_.Abandon();
    if (!rest.empty()) {
        Record(Unknown{std::move(rest), "unfinished when the link was lost"});
    }
}

void Engine::Change(const std::function<void(Condition&)>& change)
{
    const bool stopped = condition_.Stopped();
    change(condition_);
    if (!stopped && condition_.Stopped()) {
        input_.Stopped();
    }
    if (stopped && !condition_.Stopped()) {
        mechanism_.Wait(now_);
    }
    Drain();
}

void Engine::SetSpeed(uint32_t millimetresPerSecond)
{
    mechanism_.SetSpeed(millimetresPerSecond);
    Drain();
}

void Engine::SetPower(bool on)
{
    if (on == on_) {
        return;
    }
    if (on) {
        on_ = true;
        Record(PowerOn{std::exchange(missed_, 0)});
    } else {
        LosePower();
        on_ = false;
    }
}

void Engine::TearOff()
{
    paper_.Cut(true);
    Record(Torn{});
}

void Engine::LosePower()
{
    PowerOff off;
    off.lost = line_.bytes + buffer_.Used() + input_.Pending();
    off.received = received_;
    off.from = line_.bytes > 0 ? line_.at : !buffer_.Empty() ? buffer_.First().at : input_.Begin();
    input_.Abandon();
    displayReader_.Abandon();
    buffer_.Clear();
    line_ = {};
    interpreter_.PowerOff();
    mechanism_.Stop();
    answers_.clear();
    answersWhilePrinting_ = 0;
    Record(off);
}

// A whole command has come in.
void Engine::Take(const Command& command)
{
    if (copyCommand) {
        copyCommand(command.bytes);
    }
    if (condition_.Stopped() && command.op == Op::kCancel) {
        Record(Cancelled{false, Discard()});
    } else if (buffer_.Empty() && MayDo(command)) {
        mechanism_.Wait(now_);
        Execute(command);
    } else {
        buffer_.Put(command);
    }
}

void Engine::Execute(const Command& command)
{
    const uint64_t before = paper_.Moved();
    lineEnded_ = false;
    interpreter_.Execute(command);
    mechanism_.Move(paper_.Moved() - before);
    if (lineEnded_ || interpreter_.LineEmpty()) {
        line_ = {};
    }
    if (!interpreter_.LineEmpty()) {
        line_.at = line_.bytes == 0 ? command.at : line_.at;
        line_.bytes += command.bytes.size();
    }
    const std::string characters = interpreter_.TakeCharacters();
    if (witness) {
        witness(owner_, command, characters);
    }
}

void Engine::Drain()
{
    while (!buffer_.Empty() && MayDo(buffer_.First())) {
        Execute(buffer_.Take());
    }
}

// What a cancel throws away: of a printer that runs the unfinished line, of a stopped one all that waits as well.
int Engine::Cancel()
{
    if (condition_.Stopped()) {
        return Discard();
    }
    line_ = {};
    return interpreter_.CancelLine();
}

int Engine::Discard()
{
    const auto discarded = static_cast<int>(buffer_.Clear());
    line_ = {};
    return discarded + interpreter_.CancelLine();
}

void Engine::TellStatus(uint8_t kind)
{
    if (model_.tellsPrinting && interpreter_.TakeImageEnded()) {
        answersWhilePrinting_ = kAnswersWhilePrinting;
    }
    condition_.printing = printingHeld_ || answersWhilePrinting_ > 0 || (model_.tellsPrinting && mechanism_.Busy(now_));
    if (kind == kFullStatus && answersWhilePrinting_ > 0) {
        --answersWhilePrinting_;
    }
    Record(StatusQuery{kind, Answer(StatusAnswer(condition_, kind))});
}

// What of it is sent.
Bytes Engine::Answer(Bytes answer)
{
    if (halves_ > 0) {
        answer.resize(answer.size() / 2);
        --halves_;
    }
    if (mute_) {
        return {};
    }
    if (garbage_) {
        for (uint8_t& byte : answer) {
            byte = static_cast<uint8_t>(~byte);
        }
    }
    answers_.insert(answers_.end(), answer.begin(), answer.end());
    return answer;
}

void Engine::Record(Happening happening)
{
    const bool line = std::holds_alternative<TextLine>(happening);
    lineEnded_ = lineEnded_ || line;
    lines_ += line ? 1 : 0;
    cuts_ += std::holds_alternative<Cut>(happening) ? 1 : 0;
    if (observer) {
        observer(owner_, happening);
    } else {
        happenings.push_back(std::move(happening));
    }
}

}  // namespace marbex::virtual_printer
