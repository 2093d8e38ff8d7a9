#include "virtual_printer/posix/server_impl.h"

#include <sys/eventfd.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <limits>
#include <span>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

namespace marbex::virtual_printer {
namespace {

constexpr int kMostReads = 1024;
constexpr auto kPlaceTakenPause = std::chrono::milliseconds(20);
constexpr uint8_t kXon = 0x11;
constexpr uint8_t kXoff = 0x13;

std::size_t Index(PrinterServer::Count what)
{
    return static_cast<std::size_t>(what);
}

uint64_t CountOf(const VirtualPrinter& printer, PrinterServer::Count what)
{
    const PrinterState state = printer.State();
    return what == PrinterServer::Count::kBytes   ? state.received
           : what == PrinterServer::Count::kLines ? state.lines
                                                  : state.cuts;
}

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
    printer_.HoldWhile([this] { return ActionDue().has_value(); });
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

void PrinterServer::Impl::At(Count what, uint64_t count, bool further, std::function<void()> action)
{
    With([&](VirtualPrinter& printer) {
        const uint64_t now = CountOf(printer, what);
        if (!further && now > count) {
            constexpr std::array<std::string_view, 3> kWhat{" bytes have been received", " lines have been printed",
                                                            " cuts have been made"};
            throw std::out_of_range(std::to_string(now) + std::string(kWhat[Index(what)]) + " already");
        }
        actions_[Index(what)].emplace(further ? now + count : count, std::move(action));
    });
}

void PrinterServer::Impl::After(Clock::time_point time, std::function<void()> action)
{
    With([&](VirtualPrinter&) { timers_.emplace(time, std::move(action)); });
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
    while (!timers_.empty() && timers_.begin()->first <= now) {
        const auto action = std::move(timers_.begin()->second);
        timers_.erase(timers_.begin());
        action();
        changed_.notify_all();
    }
    if (printer_.Due() && *printer_.Due() <= now) {
        printer_.GoOn(now);
        changed_.notify_all();
    }
}

int PrinterServer::Impl::MillisecondsUntilDue() const
{
    std::optional<Clock::time_point> next = printer_.Due();
    const auto timer = timers_.empty() ? std::nullopt : std::optional(timers_.begin()->first);
    for (const auto& due : {powerOnAt_, acceptAt_, timer}) {
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

std::optional<std::size_t> PrinterServer::Impl::ActionDue() const
{
    for (const Count what : {Count::kBytes, Count::kLines, Count::kCuts}) {
        const Actions& actions = actions_[Index(what)];
        if (!actions.empty() && actions.begin()->first <= CountOf(printer_, what)) {
            return Index(what);
        }
    }
    return std::nullopt;
}

// What one of them lets the printer do may make the next one due.
void PrinterServer::Impl::DoActionsDue()
{
    while (const auto due = ActionDue()) {
        Actions& actions = actions_[*due];
        const auto action = std::move(actions.begin()->second);
        actions.erase(actions.begin());
        action();
        printer_.GoOn(Clock::now());
        changed_.notify_all();
    }
}

// How many of the bytes offered the printer takes now: it may have been stopped since its room was asked, and something
// may have to be done at a certain byte, or after whatever line or cut the next one makes.
std::size_t PrinterServer::Impl::Taken(std::size_t offered) const
{
    std::size_t taken = std::min(offered, printer_.Room());
    const Actions& atBytes = actions_[Index(Count::kBytes)];
    if (!atBytes.empty()) {
        taken = static_cast<std::size_t>(std::min<uint64_t>(taken, atBytes.begin()->first - printer_.Received()));
    }
    const bool byByte = !actions_[Index(Count::kLines)].empty() || !actions_[Index(Count::kCuts)].empty();
    return byByte ? std::min<std::size_t>(taken, 1) : taken;
}

void PrinterServer::Impl::FeedAsTaken()
{
    printer_.GoOn(Clock::now());
    for (;;) {
        DoActionsDue();
        link_.Send(printer_.Feed(Bytes{}));
        const std::size_t taken = Taken(kept_.size());
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

PrinterServer::Fed PrinterServer::Impl::Feed(std::span<const uint8_t> bytes)
{
    Fed fed;
    const auto feed = [this, &fed](std::span<const uint8_t> some) {
        const Bytes answer = printer_.Feed(some);
        fed.answer.insert(fed.answer.end(), answer.begin(), answer.end());
    };
    for (;;) {
        DoActionsDue();
        feed({});
        const std::size_t taken = Taken(bytes.size() - fed.taken);
        if (taken == 0) {
            return fed;
        }
        feed(bytes.subspan(fed.taken, taken));
        fed.taken += taken;
    }
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
