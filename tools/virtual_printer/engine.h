#pragma once

#include <optional>
#include <vector>

#include "virtual_printer/language/condition.h"
#include "virtual_printer/language/interpreter.h"
#include "virtual_printer/language/link_input.h"
#include "virtual_printer/mechanism.h"
#include "virtual_printer/printer.h"
#include "virtual_printer/receive_buffer.h"

namespace marbex::virtual_printer {

// The inside of the printer: what came over the link goes through the receive buffer to the interpreter as soon as the
// printer's condition, its mechanism and what waits before it allow.
class Engine {
public:
    using Clock = VirtualPrinter::Clock;

    Engine(const VirtualPrinter& owner, const Model& model, const PrinterOptions& options);
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    const Model& GetModel() const { return model_; }
    const Paper& GetPaper() const { return paper_; }
    std::string LineText() const { return interpreter_.UnfinishedLine(); }
    PrinterState State() const;
    std::size_t BufferSize() const { return buffer_.Capacity(); }
    uint64_t Received() const { return received_; }
    std::size_t Room() const;
    std::optional<Clock::time_point> Due() const;

    Bytes Feed(std::span<const uint8_t> bytes);
    void FeedDisplay(std::span<const uint8_t> bytes);
    void GoOn(Clock::time_point now);
    void LinkClosed();
    // Changes the state of the mechanism; what waited may be printed then.
    void Change(const std::function<void(Condition&)>& change);
    void SetSpeed(uint32_t millimetresPerSecond);
    void SetPower(bool on);
    void TearOff();
    void SetMute(bool mute) { mute_ = mute; }
    void HoldPrinting(bool held) { printingHeld_ = held; }
    void HalveAnswers(unsigned count) { halves_ = count; }
    void SetGarbage(bool garbage) { garbage_ = garbage; }

    void Record(Happening happening);
    std::vector<Happening> happenings;  // those not told to an observer
    VirtualPrinter::Observer observer;
    VirtualPrinter::Copy copyCommand;
    VirtualPrinter::Copy copyReceived;
    VirtualPrinter::Witness witness;
    std::function<bool()> held;  // someone has to do something before the next command is done

private:
    // The bytes that made what is in the unfinished line, settings among them included.
    struct UnfinishedLine {
        uint64_t at = 0;
        std::size_t bytes = 0;
    };

    bool Held() const { return held && held(); }
    bool MayPrint() const { return !condition_.Stopped() && !mechanism_.Busy(now_); }
    bool MayDo(const Command& command) const { return !Held() && (MayPrint() || !interpreter_.NeedsPaper(command)); }
    void Take(const Command& command);
    void Execute(const Command& command);
    void Drain();
    int Discard();
    int Cancel();
    void LosePower();
    void TellStatus(uint8_t kind);
    Bytes Answer(Bytes answer);

    const VirtualPrinter& owner_;
    const Model& model_;
    Condition condition_;
    bool on_ = true;
    bool printingHeld_ = false;
    bool mute_ = false;
    bool garbage_ = false;
    unsigned halves_ = 0;
    uint64_t received_ = 0;
    uint64_t lines_ = 0;
    uint64_t cuts_ = 0;
    std::size_t missed_ = 0;
    Clock::time_point now_{};
    Mechanism mechanism_;
    Paper paper_;
    Interpreter interpreter_;
    ReceiveBuffer buffer_;
    UnfinishedLine line_;
    bool lineEnded_ = false;
    Bytes answers_;
    int answersWhilePrinting_ = 0;
    LinkInput input_;
    CommandReader displayReader_;
};

}  // namespace marbex::virtual_printer
