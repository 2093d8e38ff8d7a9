#pragma once

// One thread serves the link. It never holds the lock while it waits; controls from other threads are handed to it
// and awaited, so that the link has one user. The printer itself is guarded by the lock.

#include <array>
#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <span>
#include <thread>

#include "virtual_printer/posix/printer_link.h"

namespace marbex::virtual_printer {

class PrinterServer::Impl {
public:
    using Clock = VirtualPrinter::Clock;

    Impl(std::string_view model, const LinkOptions& options, PrinterOptions printerOptions,
         VirtualPrinter::Observer observer, Copies copies);
    ~Impl();
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    const PrinterLink& Link() const { return link_; }

    // Runs work on the serving thread and waits for its end.
    void OnLink(const std::function<void()>& work);
    // Runs work on the printer under the lock. The serving thread looks again at what the printer takes.
    void With(const std::function<void(VirtualPrinter&)>& work);
    bool WaitFor(const std::function<bool(const VirtualPrinter&)>& condition, std::chrono::milliseconds limit);
    void At(Count what, uint64_t count, bool further, std::function<void()> action);
    void After(Clock::time_point time, std::function<void()> action);

    // These run on the serving thread, in OnLink.
    void SetPower(bool on, std::optional<Clock::time_point> again = {});
    void Drop();
    void Refuse(bool refuse, std::optional<Clock::time_point> until = {});
    void Slow(uint32_t bytesPerSecond)
    {
        linkState_.bytesPerSecond = bytesPerSecond;
        link_.SetPace(bytesPerSecond);
    }
    const LinkState& GetLinkState() const { return linkState_; }
    void Say(const Bytes& bytes) { link_.Send(bytes); }
    void TakeWhatHasArrived();
    Fed Feed(std::span<const uint8_t> bytes);

private:
    bool Serving() const { return std::this_thread::get_id() == thread_.get_id(); }
    void Wake();
    void Serve();
    void DoWork();
    void DoWhatIsDue();
    int MillisecondsUntilDue() const;
    void Handle(const PrinterLink::Outcome& outcome);
    void Disconnected(std::size_t unread);
    std::size_t Room() const { return kept_.empty() ? printer_.Room() : 0; }
    using Actions = std::multimap<uint64_t, std::function<void()>>;
    std::optional<std::size_t> ActionDue() const;  // of which count
    void DoActionsDue();
    std::size_t Taken(std::size_t offered) const;
    void FeedAsTaken();
    void HoldOrRelease();
    void Offer();

    std::mutex mutex_;  // guards everything but link_, which belongs to the serving thread
    std::condition_variable changed_;
    VirtualPrinter printer_;
    const bool xonXoff_;
    PrinterLink link_;
    Descriptor wake_;
    Bytes kept_;         // read from the link, not taken by the printer yet
    bool held_ = false;  // by XOFF
    LinkState linkState_;
    std::optional<Clock::time_point> powerOnAt_;
    std::optional<Clock::time_point> acceptAt_;
    std::array<Actions, 3> actions_;  // of each Count, by the number at which they are done
    std::multimap<Clock::time_point, std::function<void()>> timers_;
    std::deque<std::function<void()>> work_;
    uint64_t handedIn_ = 0;
    uint64_t done_ = 0;
    bool ending_ = false;
    std::thread thread_;
};

}  // namespace marbex::virtual_printer
