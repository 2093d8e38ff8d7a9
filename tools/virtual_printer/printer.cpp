#include "virtual_printer/printer.h"

#include <stdexcept>
#include <utility>

#include "virtual_printer/engine.h"

namespace marbex::virtual_printer {
namespace {

const Model& ModelOf(std::string_view name)
{
    const Model* model = FindModel(name);
    if (model == nullptr) {
        throw std::invalid_argument("no printer model is named " + std::string(name));
    }
    return *model;
}

}  // namespace

VirtualPrinter::VirtualPrinter(std::string_view modelName, PrinterOptions options)
    : engine_(std::make_unique<Engine>(*this, ModelOf(modelName), options))
{
}

VirtualPrinter::~VirtualPrinter() = default;

const Model& VirtualPrinter::GetModel() const
{
    return engine_->GetModel();
}

Bytes VirtualPrinter::Feed(std::span<const uint8_t> bytes)
{
    return engine_->Feed(bytes);
}

Bytes VirtualPrinter::Feed(std::string_view bytes)
{
    return engine_->Feed(Bytes(bytes.begin(), bytes.end()));
}

std::size_t VirtualPrinter::Room() const
{
    return engine_->Room();
}

std::size_t VirtualPrinter::BufferSize() const
{
    return engine_->BufferSize();
}

uint64_t VirtualPrinter::Received() const
{
    return engine_->Received();
}

void VirtualPrinter::GoOn(Clock::time_point now)
{
    engine_->GoOn(now);
}

std::optional<VirtualPrinter::Clock::time_point> VirtualPrinter::Due() const
{
    return engine_->Due();
}

void VirtualPrinter::FeedDisplay(std::span<const uint8_t> bytes)
{
    engine_->FeedDisplay(bytes);
}

void VirtualPrinter::LinkClosed()
{
    engine_->LinkClosed();
}

void VirtualPrinter::SetCover(bool open)
{
    engine_->Change([open](Condition& condition) { condition.coverOpen = open; });
}

void VirtualPrinter::SetPaper(PaperState state)
{
    engine_->Change([state](Condition& condition) {
        condition.paperLow = state == PaperState::kLow;
        condition.paperOut = state == PaperState::kOut;
    });
}

void VirtualPrinter::SetJam(bool jammed)
{
    const bool jams = jammed && GetModel().tellsPrinting;
    engine_->Change([jams](Condition& condition) { condition.jam = jams; });
}

void VirtualPrinter::TearOff()
{
    engine_->TearOff();
}

void VirtualPrinter::SetMute(bool mute)
{
    engine_->SetMute(mute);
}

void VirtualPrinter::SetDrawerSignal(bool high)
{
    const bool signal = high && GetModel().drawer;
    engine_->Change([signal](Condition& condition) { condition.drawerSignal = signal; });
}

void VirtualPrinter::SetPrintingHeld(bool held)
{
    engine_->HoldPrinting(held && GetModel().tellsPrinting);
}

void VirtualPrinter::SetSpeed(uint32_t millimetresPerSecond)
{
    engine_->SetSpeed(millimetresPerSecond);
}

void VirtualPrinter::SetPower(bool on)
{
    engine_->SetPower(on);
}

void VirtualPrinter::HalveAnswers(unsigned count)
{
    engine_->HalveAnswers(count);
}

void VirtualPrinter::SetGarbage(bool garbage)
{
    engine_->SetGarbage(garbage);
}

PrinterState VirtualPrinter::State() const
{
    return engine_->State();
}

const std::vector<Happening>& VirtualPrinter::Happenings() const
{
    return engine_->happenings;
}

std::vector<Happening> VirtualPrinter::TakeHappenings()
{
    return std::exchange(engine_->happenings, {});
}

void VirtualPrinter::Observe(Observer observer)
{
    engine_->observer = std::move(observer);
}

void VirtualPrinter::CopyCommands(Copy copy)
{
    engine_->copyCommand = std::move(copy);
}

void VirtualPrinter::CopyReceived(Copy copy)
{
    engine_->copyReceived = std::move(copy);
}

void VirtualPrinter::Watch(Witness witness)
{
    engine_->witness = std::move(witness);
}

void VirtualPrinter::HoldWhile(std::function<bool()> held)
{
    engine_->held = std::move(held);
}

void VirtualPrinter::Record(Happening happening)
{
    engine_->Record(std::move(happening));
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
    return engine_->LineText();
}

const Paper& VirtualPrinter::GetPaper() const
{
    return engine_->GetPaper();
}

}  // namespace marbex::virtual_printer
