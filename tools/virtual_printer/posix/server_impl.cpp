#include "virtual_printer/posix/server_impl.h"

#include <sys/eventfd.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <limits>
#include <span>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace marbex::virtual_printer {
namespace {

constexpr int kMostReads = 1024;
constexpr auto kPlaceTakenPause = std::chrono::milliseconds(20);
constexpr uint8_t kXon = 0x11;
constexpr uint8_t kXoff = 0x13;

}  // namespace

PrinterServer::Impl::Impl(std::string_view model, const LinkOptions& options, PrinterOptions printerOptions,
                          VirtualPrinter::Observer observer, Copies copies)
    : printer_(model, printerOptions),
      xonXoff_(options.xonXoff && options.kind == LinkOptions::Kind::kSerial),
      link_(options),
      wake_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (!wake_.Open()) {
        throw std::system_error(errno, std::generic_category(), "eventfd");
    }
    if (observer) {
        printer_.Observe(std::move(observer));
    }
    linkState_.bytesPerSecond = options.bytesPerSecond;
    printer_.CopyCommands(std::move(copies.commands));
    printer_.CopyReceived(std::move(copies.received));
    printer_.Watch(std::move(copies.done));
    const std::lock_guard lock(mutex_);  // until thread_ can be asked who it is
    thread_ = std::thread([this] { Serve(); });
}

PrinterServer::Impl::~Impl()
{
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
    }
    Wake();
    thread_.join();
}

void PrinterServer::Impl::OnLink(const std::function<void()>& work)
{
    if (Serving()) {
        return work();
    }
    std::unique_lock lock(mutex_);
    const uint64_t mine = ++handedIn_;
    std::exception_ptr failure;
    work_.push_back([&work, &failure] {
        try {
            work();
        } catch (const std::system_error&) {
            failure = std::current_exception();
        }
    });
    Wake();
    changed_.wait(lock, [this, mine] { return done_ >= mine; });
    if (failure) {
        std::rethrow_exception(failure);
    }
}

void PrinterServer::Impl::With(const std::function<void(VirtualPrinter&)>& work)
{
    if (Serving()) {
        return work(printer_);
    }
    {
        const std::lock_guard lock(mutex_);
        work(printer_);
    }
    changed_.notify_all();
    Wake();
}

bool PrinterServer::Impl::WaitFor(const std::function<bool(const VirtualPrinter&)>& condition,
                                  std::chrono::milliseconds limit)
{
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, limit, [this, &condition] { return condition(printer_); });
}

void PrinterServer::Impl::At(uint64_t received, std::function<void()> action)
{
    With([&](VirtualPrinter& printer) {
        if (printer.Received() > received) {
            throw std::out_of_range(std::to_string(printer.Received()) + " bytes have been received already");
        }
        actions_.emplace(received, std::move(action));
    });
}

void PrinterServer::Impl::SetPower(bool on, std::optional<Clock::time_point> again)
{
    powerOnAt_ = again;
    printer_.SetPower(on);
    Offer();
    if (!on) {
        Drop();
    }
    if (on && std::exchange(held_, false)) {
        link_.Send({kXon});
    }
}

void PrinterServer::Impl::Refuse(bool refuse, std::optional<Clock::time_point> until)
{
    acceptAt_ = until;
    linkState_.refusing = refuse;
    Offer();
    if (until) {
        Drop();
    }
}

// Whether the link can be had depends on what was said last and on the power.
void PrinterServer::Impl::Offer()
{
    const bool on = printer_.State().on;
    link_.Refuse(linkState_.refusing || !on);
    if (!on) {
        link_.Vanish();
    }
}

void PrinterServer::Impl::Drop()
{
    if (const auto unread = link_.Drop()) {
        Disconnected(*unread);
    }
}

void PrinterServer::Impl::TakeWhatHasArrived()
{
    // Bounded, for a till may send as fast as this reads.
    for (int i = 0; i < kMostReads; ++i) {
        FeedAsTaken();
        const PrinterLink::Outcome outcome = link_.WaitAMoment(Room());
        if (outcome.event == PrinterLink::Event::kNothing) {
            return;
        }
        Handle(outcome);
    }
}

void PrinterServer::Impl::Wake()
{
    const uint64_t one = 1;
    [[maybe_unused]] const auto written = ::write(wake_.Get(), &one, sizeof(one));
}

void PrinterServer::Impl::Serve()
{
    std::unique_lock lock(mutex_);
    while (!ending_) {
        DoWork();
        DoWhatIsDue();
        FeedAsTaken();
        const std::size_t room = Room();
        const int longest = MillisecondsUntilDue();
        lock.unlock();
        const PrinterLink::Outcome outcome = link_.Wait(room, wake_.Get(), longest);
        lock.lock();
        Handle(outcome);
    }
}

void PrinterServer::Impl::DoWork()
{
    while (!work_.empty()) {
        work_.front()();
        work_.pop_front();
        ++done_;
        changed_.notify_all();
    }
}

void PrinterServer::Impl::DoWhatIsDue()
{
    const auto now = Clock::now();
    try {
        if (powerOnAt_ && *powerOnAt_ <= now) {
            SetPower(true);
            changed_.notify_all();
        }
        if (acceptAt_ && *acceptAt_ <= now) {
            Refuse(false);
        }
    } catch (const std::system_error&) {
        acceptAt_ = now + kPlaceTakenPause;  // somebody else has the port for a moment
    }
    if (printer_.Due() && *printer_.Due() <= now) {
        printer_.GoOn(now);
        changed_.notify_all();
    }
}

int PrinterServer::Impl::MillisecondsUntilDue() const
{
    std::optional<Clock::time_point> next = printer_.Due();
    for (const auto& due : {powerOnAt_, acceptAt_}) {
        if (due && (!next || *due < *next)) {
            next = due;
        }
    }
    if (!next) {
        return std::numeric_limits<int>::max();
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*next - Clock::now()).count();
    return static_cast<int>(std::clamp<decltype(left)>(left, 0, std::numeric_limits<int>::max()));
}

void PrinterServer::Impl::Handle(const PrinterLink::Outcome& outcome)
{
    switch (outcome.event) {
        case PrinterLink::Event::kNothing:
            return;
        case PrinterLink::Event::kConnected:
            printer_.Record(Connected{});
            break;
        case PrinterLink::Event::kDisconnected:
            Disconnected(0);
            break;
        case PrinterLink::Event::kDisplayBytes:
            printer_.FeedDisplay(outcome.bytes);
            break;
        case PrinterLink::Event::kBytes:
            kept_ = outcome.bytes;
            return FeedAsTaken();
    }
    changed_.notify_all();
}

void PrinterServer::Impl::Disconnected(std::size_t unread)
{
    printer_.LinkClosed();
    printer_.Record(virtual_printer::Disconnected{std::exchange(kept_, {}).size() + unread});
}

// How many of the kept bytes the printer takes now: it may have been stopped since its room was asked, and something
// may have to be done at a certain byte.
std::size_t PrinterServer::Impl::Taken() const
{
    const std::size_t taken = std::min(kept_.size(), printer_.Room());
    if (actions_.empty()) {
        return taken;
    }
    return static_cast<std::size_t>(std::min<uint64_t>(taken, actions_.begin()->first - printer_.Received()));
}

void PrinterServer::Impl::FeedAsTaken()
{
    printer_.GoOn(Clock::now());
    link_.Send(printer_.Feed(Bytes{}));
    for (;;) {
        while (!actions_.empty() && actions_.begin()->first == printer_.Received()) {
            const auto action = std::move(actions_.begin()->second);
            actions_.erase(actions_.begin());
            action();
        }
        const std::size_t taken = Taken();
        if (taken == 0) {
            break;
        }
        const Bytes bytes(kept_.begin(), kept_.begin() + static_cast<std::ptrdiff_t>(taken));
        kept_.erase(kept_.begin(), kept_.begin() + static_cast<std::ptrdiff_t>(taken));
        link_.Send(printer_.Feed(bytes));
        changed_.notify_all();
    }
    HoldOrRelease();
}

void PrinterServer::Impl::HoldOrRelease()
{
    if (!xonXoff_ || !printer_.State().on) {
        return;
    }
    const std::size_t room = printer_.Room();
    const std::size_t quarter = printer_.BufferSize() / 4;
    if (!held_ && room < quarter) {
        held_ = true;
        link_.Send({kXoff});
    } else if (held_ && room > 2 * quarter) {
        held_ = false;
        link_.Send({kXon});
    }
}

}  // namespace marbex::virtual_printer
