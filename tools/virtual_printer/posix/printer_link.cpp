#include "virtual_printer/posix/printer_link.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace marbex::virtual_printer {
namespace {

constexpr std::size_t kReadSize = 16384;
constexpr std::size_t kMostUnsent = 65536;  // answers that nobody fetches
constexpr double kBurstSeconds = 0.02;      // how much a paced line may catch up at once
constexpr int kMomentMs = 20;
constexpr int kFullTickMs = 100;   // how often a printer that does not read looks whether its peer has gone
constexpr int kAbsentTickMs = 10;  // how often a printer looks whether a till has opened its terminal
constexpr std::size_t kMostUnread = 1U << 20U;

bool Ready(int fd, short events)
{
    pollfd one{fd, events, 0};
    return ::poll(&one, 1, 0) > 0 && (one.revents & events) != 0;
}

}  // namespace

PrinterLink::PrinterLink(const LinkOptions& options)
    : options_(options),
      serial_(options.kind == LinkOptions::Kind::kSerial),
      adapter_(serial_ && !options.terminalLink.empty()),
      port_(options.port)
{
    if (adapter_) {
        PlugIn();
    } else if (serial_) {
        terminal_ = OpenPseudoTerminal();
    } else {
        Listen();
    }
    if (options.displaySerial) {
        display_ = OpenPseudoTerminal();
    }
    SetPace(options.bytesPerSecond);
}

PrinterLink::~PrinterLink()
{
    if (options_.kind == LinkOptions::Kind::kUsb) {
        ::unlink(options_.socketPath.c_str());
    }
    if (adapter_) {
        ::unlink(options_.terminalLink.c_str());
    }
}

void PrinterLink::Listen()
{
    if (options_.kind == LinkOptions::Kind::kUsb) {
        listener_ = ListenUnix(options_.socketPath);
        return;
    }
    uint16_t port = port_.load();
    listener_ = ListenTcp(options_.host, port, options_.receiveBuffer);
    port_ = port;
}

void PrinterLink::PlugIn()
{
    if (!terminal_.master.Open()) {
        terminal_ = OpenPseudoTerminal(false);
    }
    LeadLinkTo(terminal_.path, options_.terminalLink);
}

bool PrinterLink::Connected() const
{
    return adapter_ ? tillThere_ : Line().Open();
}

// A till that has come, or has come and gone and left something to read.
bool PrinterLink::TillCame() const
{
    pollfd one{terminal_.master.Get(), POLLIN, 0};
    return ::poll(&one, 1, 0) == 0 || (one.revents & POLLHUP) == 0 || (one.revents & POLLIN) != 0;
}

void PrinterLink::Refuse(bool refuse)
{
    refused_ = refuse;
    if (adapter_ && refuse) {
        ::unlink(options_.terminalLink.c_str());
    } else if (adapter_) {
        PlugIn();
    } else if (refuse) {
        listener_.Close();
    } else if (!serial_ && !listener_.Open()) {
        Listen();
    }
}

void PrinterLink::Vanish()
{
    if (options_.kind == LinkOptions::Kind::kUsb) {
        ::unlink(options_.socketPath.c_str());
    }
}

void PrinterLink::SetPace(uint32_t bytesPerSecond)
{
    pace_ = bytesPerSecond;
    credit_ = 0;
    counted_ = Clock::now();
}

std::size_t PrinterLink::Allowance()
{
    if (pace_ == 0) {
        return kReadSize;
    }
    const auto now = Clock::now();
    const double seconds = std::chrono::duration<double>(now - counted_).count();
    counted_ = now;
    credit_ = std::min(credit_ + seconds * pace_, std::max(1.0, pace_ * kBurstSeconds));
    return static_cast<std::size_t>(credit_);
}

PrinterLink::Outcome PrinterLink::WaitAMoment(std::size_t room)
{
    return Wait(room, -1, kMomentMs);
}

PrinterLink::Outcome PrinterLink::Wait(std::size_t room, int wakeFd, int longestMs)
{
    const std::size_t most = std::min({room, Allowance(), kReadSize});
    const bool open = Connected();
    std::array<pollfd, 4> fds{};
    fds[0] = {wakeFd, POLLIN, 0};
    // A negative descriptor is skipped by poll.
    fds[1] = {open ? -1 : listener_.Get(), POLLIN, 0};
    const auto events = static_cast<short>((most > 0 ? POLLIN : 0) | (unsent_.empty() ? 0 : POLLOUT));
    fds[2] = {open && events != 0 ? Line().Get() : -1, events, 0};
    fds[3] = {display_.master.Get(), POLLIN, 0};
    int timeout = longestMs;
    if (open && room == 0) {
        timeout = std::min(longestMs, kFullTickMs);
    } else if (open && most == 0) {
        timeout = std::min(longestMs, 1 + static_cast<int>((1.0 - credit_) * 1000 / pace_));
    } else if (adapter_ && !open && terminal_.master.Open()) {
        timeout = std::min(longestMs, kAbsentTickMs);
    }
    if (::poll(fds.data(), fds.size(), timeout) < 0) {
        return {};
    }
    if ((fds[0].revents & POLLIN) != 0) {
        std::array<char, 64> taken{};
        [[maybe_unused]] const auto count = ::read(wakeFd, taken.data(), taken.size());
        return {};
    }
    if ((fds[2].revents & POLLOUT) != 0) {
        Flush();
    }
    if (fds[3].revents != 0) {
        return ReadDisplay();
    }
    if (fds[1].revents != 0) {
        return Accept();
    }
    if (adapter_ && !open && terminal_.master.Open() && TillCame()) {
        tillThere_ = true;
        unsent_.clear();
        return {Event::kConnected, {}};
    }
    if (most > 0 && (fds[2].revents & (POLLIN | POLLHUP | POLLERR)) != 0) {
        return Read(most);
    }
    if (open && room == 0 && ReplacedByNewConnection()) {
        connection_.Close();
        return {Event::kDisconnected, {}};
    }
    return {};
}

// A printer that does not read cannot see that its peer has closed. It gives such a connection up when the next one
// is waiting.
bool PrinterLink::ReplacedByNewConnection() const
{
    return !serial_ && listener_.Open() && Ready(listener_.Get(), POLLIN) && Ready(connection_.Get(), POLLRDHUP);
}

PrinterLink::Outcome PrinterLink::Accept()
{
    connection_ = Descriptor(::accept4(listener_.Get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (!connection_.Open()) {
        return {};
    }
    const int on = 1;
    ::setsockopt(connection_.Get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
    unsent_.clear();
    return {Event::kConnected, {}};
}

PrinterLink::Outcome PrinterLink::Read(std::size_t most)
{
    Bytes bytes(most);
    const ssize_t count = ::read(Line().Get(), bytes.data(), bytes.size());
    if (count > 0) {
        credit_ -= static_cast<double>(count);
        bytes.resize(static_cast<std::size_t>(count));
        return {Event::kBytes, std::move(bytes)};
    }
    if ((serial_ && !adapter_) || (count < 0 && (errno == EAGAIN || errno == EINTR))) {
        return {};
    }
    connection_.Close();
    if (adapter_) {
        // A closed port keeps nothing for whoever opens it next: no input, no exclusive use. This terminal would.
        Unplug();
    }
    return {Event::kDisconnected, {}};
}

PrinterLink::Outcome PrinterLink::ReadDisplay()
{
    Bytes bytes(kReadSize);
    const ssize_t count = ::read(display_.master.Get(), bytes.data(), bytes.size());
    bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return {bytes.empty() ? Event::kNothing : Event::kDisplayBytes, std::move(bytes)};
}

void PrinterLink::Send(const Bytes& bytes)
{
    if (unsent_.size() + bytes.size() <= kMostUnsent) {
        unsent_.insert(unsent_.end(), bytes.begin(), bytes.end());
    }
    Flush();
}

void PrinterLink::Flush()
{
    while (!unsent_.empty() && Connected()) {
        const ssize_t count = serial_ ? ::write(Line().Get(), unsent_.data(), unsent_.size())
                                      : ::send(Line().Get(), unsent_.data(), unsent_.size(), MSG_NOSIGNAL);
        if (count < 0 && errno != EAGAIN && errno != EINTR) {
            unsent_.clear();  // the next read finds the connection gone
        }
        if (count <= 0) {
            return;
        }
        unsent_.erase(unsent_.begin(), unsent_.begin() + count);
    }
}

// Takes what has arrived off the line, to see how much it is.
std::size_t PrinterLink::TakeUnread()
{
    Bytes bytes(kReadSize);
    std::size_t all = 0;
    while (all < kMostUnread) {
        const ssize_t count = ::read(Line().Get(), bytes.data(), bytes.size());
        if (count <= 0) {
            break;
        }
        all += static_cast<std::size_t>(count);
    }
    return all;
}

std::optional<std::size_t> PrinterLink::Drop()
{
    const bool connected = Connected() && (!serial_ || adapter_);
    const std::size_t unread = connected ? TakeUnread() : 0;
    if (adapter_) {
        Unplug();
    } else if (connected) {
        ResetOnClose(connection_);
        connection_.Close();
    }
    return connected ? std::optional(unread) : std::nullopt;
}

// Hangs the terminal up. There is another one at once, unless the line is refused.
void PrinterLink::Unplug()
{
    ::unlink(options_.terminalLink.c_str());
    terminal_ = {};
    tillThere_ = false;
    if (!refused_) {
        PlugIn();
    }
}

}  // namespace marbex::virtual_printer
