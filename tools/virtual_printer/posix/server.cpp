#include "virtual_printer/server.h"

#include <utility>

#include "virtual_printer/posix/server_impl.h"

namespace marbex::virtual_printer {

PrinterServer::PrinterServer(std::string_view model, const LinkOptions& link, PrinterOptions options,
                             VirtualPrinter::Observer observer, Copies copies)
    : impl_(std::make_unique<Impl>(model, link, options, std::move(observer), std::move(copies)))
{
}

PrinterServer::~PrinterServer() = default;

uint16_t PrinterServer::Port() const
{
    return impl_->Link().Port();
}

std::string PrinterServer::SerialPath() const
{
    return impl_->Link().TerminalPath();
}

std::string PrinterServer::DisplayPath() const
{
    return impl_->Link().DisplayPath();
}

void PrinterServer::SetPower(bool on)
{
    impl_->OnLink([this, on] { impl_->SetPower(on); });
}

void PrinterServer::PowerCycle(std::chrono::milliseconds off)
{
    impl_->OnLink([this, off] { impl_->SetPower(false, Impl::Clock::now() + off); });
}

void PrinterServer::Drop()
{
    impl_->OnLink([this] { impl_->Drop(); });
}

void PrinterServer::Refuse(bool refuse)
{
    impl_->OnLink([this, refuse] { impl_->Refuse(refuse); });
}

void PrinterServer::RefuseFor(std::chrono::milliseconds time)
{
    impl_->OnLink([this, time] { impl_->Refuse(true, Impl::Clock::now() + time); });
}

void PrinterServer::Slow(uint32_t bytesPerSecond)
{
    impl_->OnLink([this, bytesPerSecond] { impl_->Slow(bytesPerSecond); });
}

void PrinterServer::Say(const Bytes& bytes)
{
    impl_->OnLink([this, &bytes] { impl_->Say(bytes); });
}

PrinterServer::LinkState PrinterServer::GetLinkState()
{
    LinkState state;
    impl_->With([this, &state](VirtualPrinter&) { state = impl_->GetLinkState(); });
    return state;
}

void PrinterServer::TakeWhatHasArrived()
{
    impl_->OnLink([this] { impl_->TakeWhatHasArrived(); });
}

void PrinterServer::At(Count what, uint64_t count, std::function<void()> action)
{
    impl_->At(what, count, false, std::move(action));
}

void PrinterServer::AtFurther(Count what, uint64_t count, std::function<void()> action)
{
    impl_->At(what, count, true, std::move(action));
}

void PrinterServer::After(std::chrono::milliseconds time, std::function<void()> action)
{
    impl_->After(Impl::Clock::now() + time, std::move(action));
}

PrinterServer::Fed PrinterServer::Feed(std::span<const uint8_t> bytes)
{
    Fed fed;
    impl_->OnLink([&] { fed = impl_->Feed(bytes); });
    return fed;
}

void PrinterServer::SetMute(bool mute)
{
    With([mute](VirtualPrinter& printer) { printer.SetMute(mute); });
}

void PrinterServer::SetCover(bool open)
{
    With([open](VirtualPrinter& printer) { printer.SetCover(open); });
}

void PrinterServer::SetPaper(PaperState state)
{
    With([state](VirtualPrinter& printer) { printer.SetPaper(state); });
}

void PrinterServer::SetJam(bool jammed)
{
    With([jammed](VirtualPrinter& printer) { printer.SetJam(jammed); });
}

void PrinterServer::SetDrawerSignal(bool high)
{
    With([high](VirtualPrinter& printer) { printer.SetDrawerSignal(high); });
}

void PrinterServer::SetPrintingHeld(bool held)
{
    With([held](VirtualPrinter& printer) { printer.SetPrintingHeld(held); });
}

void PrinterServer::SetSpeed(uint32_t millimetresPerSecond)
{
    With([millimetresPerSecond](VirtualPrinter& printer) { printer.SetSpeed(millimetresPerSecond); });
}

void PrinterServer::HalveAnswers(unsigned count)
{
    With([count](VirtualPrinter& printer) { printer.HalveAnswers(count); });
}

void PrinterServer::SetGarbage(bool garbage)
{
    With([garbage](VirtualPrinter& printer) { printer.SetGarbage(garbage); });
}

void PrinterServer::With(const std::function<void(VirtualPrinter&)>& work)
{
    impl_->With(work);
}

bool PrinterServer::WaitFor(const std::function<bool(const VirtualPrinter&)>& condition,
                            std::chrono::milliseconds limit)
{
    return impl_->WaitFor(condition, limit);
}

std::vector<Happening> PrinterServer::Happenings()
{
    std::vector<Happening> copy;
    With([&copy](VirtualPrinter& printer) { copy = printer.Happenings(); });
    return copy;
}

std::vector<std::string> PrinterServer::Lines()
{
    std::vector<std::string> lines;
    With([&lines](VirtualPrinter& printer) { lines = printer.Lines(); });
    return lines;
}

}  // namespace marbex::virtual_printer
