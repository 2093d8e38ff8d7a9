#include "platform/posix/serial_line.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include "platform/posix/patient_close.h"
#include "platform/posix/poll_wait.h"
#include "platform/posix/unique_fd.h"

namespace marbex::platform {

namespace {

constexpr uint32_t kClosingMilliseconds = 500;  // for a driver that waits inside close

struct Speed {
    uint32_t baudRate;
    speed_t code;
};

constexpr std::array kSpeeds{
    Speed{1200, B1200},   Speed{2400, B2400},   Speed{4800, B4800},   Speed{9600, B9600},
    Speed{19200, B19200}, Speed{38400, B38400}, Speed{57600, B57600}, Speed{115200, B115200},
};

// What a device answers that was unplugged, or a pseudo-terminal whose other end is closed.
bool IsGoneError(int error)
{
    return error == EIO || error == ENODEV || error == ENXIO;
}

// What a terminal without modem lines (a pseudo-terminal) answers.
bool HasNoModemLines(int error)
{
    return error == ENOTTY || error == EINVAL;
}

void SetFlag(tcflag_t& flags, tcflag_t flag, bool on)
{
    flags = on ? flags | flag : flags & ~flag;
}

void ToTermios(const LineSettings& settings, termios& terminal)
{
    cfmakeraw(&terminal);
    // No carrier is waited for, as everywhere a printer is wired with three or five lines.
    terminal.c_cflag |= CLOCAL | CREAD;
    SetFlag(terminal.c_cflag, CSIZE, false);
    SetFlag(terminal.c_cflag, settings.byteSize == 7 ? CS7 : CS8, true);
    SetFlag(terminal.c_cflag, PARENB, settings.parity != LineParity::kNone);
    SetFlag(terminal.c_cflag, PARODD, settings.parity == LineParity::kOdd);
    SetFlag(terminal.c_cflag, CSTOPB, settings.stopBits == StopBits::kTwo);
    SetFlag(terminal.c_cflag, CRTSCTS, settings.ctsOutputFlow);
    SetFlag(terminal.c_iflag, INPCK, settings.parityCheck);
    SetFlag(terminal.c_iflag, IXON, settings.xonXoffOutput);
    SetFlag(terminal.c_iflag, IXOFF, settings.xonXoffInput);
    terminal.c_cc[VSTART] = settings.xonCharacter;
    terminal.c_cc[VSTOP] = settings.xoffCharacter;
    terminal.c_cc[VMIN] = 1;
    terminal.c_cc[VTIME] = 0;
    for (const Speed& speed : kSpeeds)
        if (speed.baudRate == settings.baudRate) cfsetspeed(&terminal, speed.code);
}

LineSettings FromTermios(const termios& terminal)
{
    LineSettings settings;
    for (const Speed& speed : kSpeeds)
        if (speed.code == cfgetospeed(&terminal)) settings.baudRate = speed.baudRate;
    settings.byteSize = (terminal.c_cflag & CSIZE) == CS7 ? 7 : 8;
    if ((terminal.c_cflag & PARENB) != 0)
        settings.parity = (terminal.c_cflag & PARODD) != 0 ? LineParity::kOdd : LineParity::kEven;
    settings.stopBits = (terminal.c_cflag & CSTOPB) != 0 ? StopBits::kTwo : StopBits::kOne;
    settings.parityCheck = (terminal.c_iflag & INPCK) != 0;
    settings.ctsOutputFlow = (terminal.c_cflag & CRTSCTS) != 0;
    settings.xonXoffOutput = (terminal.c_iflag & IXON) != 0;
    settings.xonXoffInput = (terminal.c_iflag & IXOFF) != 0;
    settings.xonCharacter = terminal.c_cc[VSTART];
    settings.xoffCharacter = terminal.c_cc[VSTOP];
    return settings;
}

uint32_t TotalTimeout(uint32_t constant, uint32_t multiplier, std::size_t count)
{
    return static_cast<uint32_t>(std::min<uint64_t>(constant + uint64_t{multiplier} * count, kForever - 1));
}

class Terminal final : public SerialLine {
public:
    explicit Terminal(UniqueFd descriptor) : descriptor_(std::move(descriptor)) {}
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    ~Terminal() override { Release(); }

    void HeedStop(const StopSignal& stop) override { stop_ = &stop; }

    std::optional<LineSettings> Settings() override
    {
        termios terminal{};
        if (tcgetattr(Fd(), &terminal) != 0) {
            Fail(errno);
            return std::nullopt;
        }
        if (!applied_) applied_ = FromTermios(terminal);
        return applied_;
    }

    bool Apply(const LineSettings& settings) override
    {
        termios terminal{};
        if (tcgetattr(Fd(), &terminal) != 0) return Fail(errno);
        ToTermios(settings, terminal);
        // The C library says EINVAL when a terminal took all but the framing, which a pseudo-terminal does not have.
        if (tcsetattr(Fd(), TCSANOW, &terminal) != 0 && errno != EINVAL) return Fail(errno);
        applied_ = settings;
        return SetModemLine(TIOCM_DTR, settings.dtr != LineControl::kDisabled) &&
               // With hardware flow control on, the driver itself moves RTS.
               (settings.ctsOutputFlow || SetModemLine(TIOCM_RTS, settings.rts != LineControl::kDisabled));
    }

    bool Apply(const SerialTimeouts& timeouts) override
    {
        timeouts_ = timeouts;
        return static_cast<bool>(descriptor_) || Fail(EBADF);
    }

    bool SetDtr(bool on) override { return SetModemLine(TIOCM_DTR, on); }
    bool SetRts(bool on) override { return SetModemLine(TIOCM_RTS, on); }

    bool Purge(bool output, bool input) override
    {
        output = output && HasQueuedOutput();
        if (!output && !input) return true;
        const int queues = output && input ? TCIOFLUSH : output ? TCOFLUSH : TCIFLUSH;
        return tcflush(Fd(), queues) == 0 || Fail(errno);
    }

    SerialTransfer Read(std::span<std::byte> buffer) override
    {
        const uint32_t total = TotalTimeout(timeouts_.readConstant, timeouts_.readMultiplier, buffer.size());
        return ReadWithin(buffer, TransferLimit(total, *stop_));
    }

    SerialTransfer ReadUntilStopped(std::span<std::byte> buffer, uint32_t milliseconds) override
    {
        return ReadWithin(buffer, TransferLimit(milliseconds, *stop_, TransferLimit::AtStop::kEnd));
    }

    SerialTransfer Write(std::span<const std::byte> bytes) override
    {
        TransferLimit limit(TotalTimeout(timeouts_.writeConstant, timeouts_.writeMultiplier, bytes.size()), *stop_);
        std::size_t count = 0;
        while (count < bytes.size()) {
            const ssize_t put = write(Fd(), bytes.data() + count, bytes.size() - count);
            if (put > 0) {
                count += static_cast<std::size_t>(put);
                limit.Progress();
                continue;
            }
            if (put < 0 && errno == EINTR) continue;
            if (put < 0 && errno != EAGAIN) return FailedTransfer(errno);
            if (limit.IsOver()) break;
            const PollResult waited = PollUntil(Fd(), POLLOUT, limit);
            if (waited == PollResult::kTimedOut) break;
            if (waited == PollResult::kFailed) return FailedTransfer(errno);
        }
        const auto unsent = WaitUntilSent(limit);
        return unsent ? SerialTransfer{true, count - std::min(count, *unsent)} : SerialTransfer{false, 0};
    }

    bool Close() override
    {
        if (!descriptor_) return Fail(EBADF);
        Release();
        return true;
    }

    bool IsGone() const override { return gone_; }
    uint32_t LastError() const override { return lastError_; }

private:
    int Fd() const { return descriptor_.Get(); }

    SerialTransfer ReadWithin(std::span<std::byte> buffer, TransferLimit limit)
    {
        std::size_t count = 0;
        while (count < buffer.size()) {
            const bool intervalRuns = count > 0 && timeouts_.readInterval > 0;
            const TransferLimit interval(intervalRuns ? timeouts_.readInterval : kForever, *stop_);
            const bool intervalFirst = intervalRuns && interval.Remaining() < limit.Remaining();
            const PollResult waited = PollUntil(Fd(), POLLIN, intervalFirst ? interval : limit);
            if (waited == PollResult::kTimedOut) break;
            if (waited == PollResult::kFailed) return FailedTransfer(errno);
            const ssize_t got = read(Fd(), buffer.data() + count, buffer.size() - count);
            if (got > 0) {
                count += static_cast<std::size_t>(got);
                limit.Progress();
            } else if (got == 0 || (errno != EAGAIN && errno != EINTR)) {
                if (count > 0) break;  // what came before the end is the caller's; the next read finds the end again
                return FailedTransfer(got == 0 ? EIO : errno);
            } else if (limit.IsOver()) {
                break;  // of a driver that promises and does not keep
            }
        }
        return {true, count};
    }

    // A pseudo-terminal has no such queue: what was written is at the other end already, and flushing would take it
    // away from there.
    bool HasQueuedOutput() const
    {
        int queued = 0;
        return ioctl(Fd(), TIOCOUTQ, &queued) != 0 || queued > 0;
    }

    // The kernel takes bytes long before the line has carried them, and keeps them for ever when the printer holds the
    // line. Waits until they are out or the time is over; returns how many are not, nothing when the device went away.
    std::optional<std::size_t> WaitUntilSent(TransferLimit& limit)
    {
        for (int before = 0;;) {
            int queued = 0;
            if (ioctl(Fd(), TIOCOUTQ, &queued) != 0) {
                if (!IsGoneError(errno)) return 0;  // there is no such queue
                Fail(errno);
                return std::nullopt;
            }
            if (queued <= 0) return 0;
            if (queued < std::exchange(before, queued)) limit.Progress();
            const uint32_t left = limit.Remaining();
            if (left == 0) return static_cast<std::size_t>(queued);
            const uint32_t baudRate = applied_ ? std::max<uint32_t>(applied_->baudRate, 1) : 9600;
            const auto estimate = static_cast<uint32_t>(static_cast<uint64_t>(queued) * 10 * 1000 / baudRate);
            poll(nullptr, 0, static_cast<int>(std::min(left, std::clamp<uint32_t>(estimate, 1, 20))));
        }
    }

    bool SetModemLine(int line, bool on)
    {
        if (ioctl(Fd(), on ? TIOCMBIS : TIOCMBIC, &line) == 0 || HasNoModemLines(errno)) return true;
        return Fail(errno);
    }

    void Release()
    {
        if (!descriptor_) return;
        // Closing would wait up to half a minute for output that the printer does not take.
        if (HasQueuedOutput()) tcflush(Fd(), TCOFLUSH);
        ioctl(Fd(), TIOCNXCL);
        // The drivers of USB adapters have nothing to throw it away with.
        int queued = 0;
        if (ioctl(Fd(), TIOCOUTQ, &queued) == 0 && queued > 0)
            CloseWithin(std::move(descriptor_), kClosingMilliseconds);
        else
            descriptor_.Reset();
    }

    bool Fail(int error)
    {
        lastError_ = static_cast<uint32_t>(error);
        gone_ = gone_ || IsGoneError(error);
        return false;
    }

    SerialTransfer FailedTransfer(int error)
    {
        Fail(error);
        return {false, 0};
    }

    UniqueFd descriptor_;
    const StopSignal* stop_ = &kNeverStopped;
    std::optional<LineSettings> applied_;
    SerialTimeouts timeouts_;
    bool gone_ = false;
    uint32_t lastError_ = 0;
};

}  // namespace

std::unique_ptr<SerialLine> OpenTerminal(const std::string& path, uint32_t& error)
{
    UniqueFd descriptor(open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    // The lock keeps out other users of the file, the terminal's own exclusive mode everybody else.
    if (!descriptor || isatty(descriptor.Get()) == 0 || flock(descriptor.Get(), LOCK_EX | LOCK_NB) != 0 ||
        ioctl(descriptor.Get(), TIOCEXCL) != 0) {
        error = static_cast<uint32_t>(errno);
        return nullptr;
    }
    return std::make_unique<Terminal>(std::move(descriptor));
}

}  // namespace marbex::platform
