// One thread serves the link. It never holds the lock while it waits; controls from other threads are handed to it
// and awaited, so that the link has one user. The printer itself is guarded by the lock.

#include "virtual_printer/server.h"

#include <sys/eventfd.h>

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <span>
#include <system_error>
#include <thread>
#include <utility>

#include "virtual_printer/posix/printer_link.h"

namespace marbex::virtual_printer {
namespace {

constexpr int kMostReads = 1024;

}  // namespace

class PrinterServer::Impl {
public:
    Impl(std::string_view model, const LinkOptions& options, PrinterOptions printerOptions,
         VirtualPrinter::Observer observer, VirtualPrinter::Copy copy)
        : printer_(model, printerOptions), link_(options), wake_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
    {
        if (!wake_.Open()) {
            throw std::system_error(errno, std::generic_category(), "eventfd");
        }
        if (observer) {
            printer_.Observe(std::move(observer));
        }
        if (copy) {
            printer_.CopyCommands(std::move(copy));
        }
        thread_ = std::thread([this] { Serve(); });
    }

    ~Impl()
    {
        {
            const std::lock_guard lock(mutex_);
            ending_ = true;
        }
        Wake();
        thread_.join();
    }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    const PrinterLink& Link() const { return link_; }

    // Runs work on the serving thread and waits for its end.
    void OnLink(const std::function<void()>& work)
    {
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

    // Runs work on the printer under the lock. The serving thread looks again at what the printer takes.
    void With(const std::function<void(VirtualPrinter&)>& work)
    {
        {
            const std::lock_guard lock(mutex_);
            work(printer_);
        }
        changed_.notify_all();
        Wake();
    }

    bool WaitFor(const std::function<bool(const VirtualPrinter&)>& condition, std::chrono::milliseconds limit)
    {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, limit, [this, &condition] { return condition(printer_); });
    }

    void Drop()
    {
        OnLink([this] {
            if (link_.Drop()) {
                Disconnected();
            }
        });
    }
    void Refuse(bool refuse)
    {
        OnLink([this, refuse] { link_.Refuse(refuse); });
    }
    void Slow(uint32_t bytesPerSecond)
    {
        OnLink([this, bytesPerSecond] { link_.SetPace(bytesPerSecond); });
    }
    void TakeWhatHasArrived()
    {
        OnLink([this] {
            // Bounded, for a till may send as fast as this reads.
            for (int i = 0; i < kMostReads; ++i) {
                FeedAsTaken();
                const PrinterLink::Outcome outcome = link_.WaitAMoment(Room());
                if (outcome.event == PrinterLink::Event::kNothing) {
                    return;
                }
                Handle(outcome);
            }
        });
    }

private:
    void Wake()
    {
        const uint64_t one = 1;
        [[maybe_unused]] const auto written = ::write(wake_.Get(), &one, sizeof(one));
    }

    std::size_t Room() const { return kept_.empty() ? printer_.Room() : 0; }

    void Disconnected()
    {
        if (!kept_.empty()) {
            printer_.Record(Overrun{static_cast<int>(std::exchange(kept_, {}).size())});
        }
        printer_.LinkClosed();
        printer_.Record(virtual_printer::Disconnected{});
    }

    void Serve()
    {
        std::unique_lock lock(mutex_);
        while (!ending_) {
            while (!work_.empty()) {
                work_.front()();
                work_.pop_front();
                ++done_;
                changed_.notify_all();
            }
            FeedAsTaken();
            const std::size_t room = Room();
            lock.unlock();
            const PrinterLink::Outcome outcome = link_.Wait(room, wake_.Get());
            lock.lock();
            Handle(outcome);
        }
    }

    void Handle(const PrinterLink::Outcome& outcome)
    {
        switch (outcome.event) {
            case PrinterLink::Event::kNothing:
                return;
            case PrinterLink::Event::kConnected:
                printer_.Record(Connected{});
                break;
            case PrinterLink::Event::kDisconnected:
                Disconnected();
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

    // The printer may have been stopped since its room was asked; what it no longer takes is kept for it here.
    void FeedAsTaken()
    {
        const std::size_t taken = std::min(kept_.size(), printer_.Room());
        if (taken > 0) {
            link_.Send(printer_.Feed(std::span(kept_).first(taken)));
            kept_.erase(kept_.begin(), kept_.begin() + static_cast<std::ptrdiff_t>(taken));
            changed_.notify_all();
        }
    }

    std::mutex mutex_;  // guards everything but link_, which belongs to the serving thread
    std::condition_variable changed_;
    VirtualPrinter printer_;
    PrinterLink link_;
    Descriptor wake_;
    Bytes kept_;  // read from the link, not taken by the printer yet
    std::deque<std::function<void()>> work_;
    uint64_t handedIn_ = 0;
    uint64_t done_ = 0;
    bool ending_ = false;
    std::thread thread_;
};

PrinterServer::PrinterServer(std::string_view model, const LinkOptions& link, PrinterOptions options,
                             VirtualPrinter::Observer observer, VirtualPrinter::Copy copy)
    : impl_(std::make_unique<Impl>(model, link, options, std::move(observer), std::move(copy)))
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

void PrinterServer::Drop()
{
    impl_->Drop();
}

void PrinterServer::Refuse(bool refuse)
{
    impl_->Refuse(refuse);
}

void PrinterServer::Slow(uint32_t bytesPerSecond)
{
    impl_->Slow(bytesPerSecond);
}

void PrinterServer::TakeWhatHasArrived()
{
    impl_->TakeWhatHasArrived();
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
