// A serial port, opened for overlapped transfers: so a transfer can be given up, whoever began it, and be watched while
// it is under way. To the caller they are synchronous. The port's own time-outs end them; ours come later and are for
// drivers that forget theirs.

#include "platform/windows/serial_line.h"

#include <windows.h>

#include <algorithm>
#include <utility>

#include "platform/transfer_limit.h"
#include "platform/windows/device_errors.h"
#include "platform/windows/overlapped_transfer.h"
#include "platform/windows/unique_handle.h"

namespace marbex::platform {

namespace {

constexpr uint32_t kLongestTimeout = 0x7FFFFFFF;  // ms; MAXDWORD has meanings of its own

// How much later than the driver's limit ours comes. A read that is only to take what is there ends at once, and Wine
// forgets that.
constexpr uint32_t OurLimit(uint32_t drivers)
{
    return drivers + (drivers == 0 ? 50 : 1000);  // ms
}
constexpr uint8_t kUsualXon = 0x11;
constexpr uint8_t kUsualXoff = 0x13;

// What drivers of ports without modem lines answer.
bool HasNoModemLines(DWORD error)
{
    return error == ERROR_INVALID_FUNCTION || error == ERROR_NOT_SUPPORTED;
}

// Most drivers end a transfer whose time is up as a success; some, those of USB adapters above all, as a failure.
bool IsTimeout(DWORD error)
{
    return error == ERROR_SEM_TIMEOUT || error == ERROR_COUNTER_TIMEOUT || error == ERROR_TIMEOUT;
}

LineParity ParityFrom(BYTE parity)
{
    if (parity == ODDPARITY) return LineParity::kOdd;
    return parity == EVENPARITY ? LineParity::kEven : LineParity::kNone;
}

// The values of both lines are the same: off, on, handshake; RTS knows one more, a kind of handshake.
LineControl ControlFrom(DWORD control)
{
    if (control == DTR_CONTROL_DISABLE) return LineControl::kDisabled;
    return control == DTR_CONTROL_ENABLE ? LineControl::kEnabled : LineControl::kHandshake;
}

LineSettings FromDcb(const DCB& dcb)
{
    LineSettings settings;
    settings.baudRate = dcb.BaudRate;
    settings.byteSize = dcb.ByteSize;
    settings.parity = ParityFrom(dcb.Parity);
    settings.stopBits = dcb.StopBits == TWOSTOPBITS ? StopBits::kTwo : StopBits::kOne;
    settings.binary = dcb.fBinary != 0;
    settings.parityCheck = dcb.fParity != 0;
    settings.ctsOutputFlow = dcb.fOutxCtsFlow != 0;
    settings.dsrOutputFlow = dcb.fOutxDsrFlow != 0;
    settings.dtr = ControlFrom(dcb.fDtrControl);
    settings.rts = ControlFrom(dcb.fRtsControl);
    settings.dsrSensitivity = dcb.fDsrSensitivity != 0;
    settings.continueAfterXoff = dcb.fTXContinueOnXoff != 0;
    settings.xonXoffOutput = dcb.fOutX != 0;
    settings.xonXoffInput = dcb.fInX != 0;
    settings.replaceErrors = dcb.fErrorChar != 0;
    settings.stripNul = dcb.fNull != 0;
    settings.abortOnError = dcb.fAbortOnError != 0;
    settings.xonLimit = dcb.XonLim;
    settings.xoffLimit = dcb.XoffLim;
    settings.xonCharacter = static_cast<uint8_t>(dcb.XonChar);
    settings.xoffCharacter = static_cast<uint8_t>(dcb.XoffChar);
    settings.endOfFileCharacter = static_cast<uint8_t>(dcb.EofChar);
    settings.eventCharacter = static_cast<uint8_t>(dcb.EvtChar);
    return settings;
}

void ToDcb(const LineSettings& settings, DCB& dcb)
{
    dcb.BaudRate = settings.baudRate;
    dcb.ByteSize = settings.byteSize;
    dcb.Parity = static_cast<BYTE>(settings.parity);
    dcb.StopBits = static_cast<BYTE>(settings.stopBits);
    dcb.fBinary = settings.binary;
    dcb.fParity = settings.parityCheck;
    dcb.fOutxCtsFlow = settings.ctsOutputFlow;
    dcb.fOutxDsrFlow = settings.dsrOutputFlow;
    dcb.fDtrControl = static_cast<DWORD>(settings.dtr) & 3;
    dcb.fRtsControl = static_cast<DWORD>(settings.rts) & 3;
    dcb.fDsrSensitivity = settings.dsrSensitivity;
    dcb.fTXContinueOnXoff = settings.continueAfterXoff;
    dcb.fOutX = settings.xonXoffOutput;
    dcb.fInX = settings.xonXoffInput;
    dcb.fErrorChar = settings.replaceErrors;
    dcb.fNull = settings.stripNul;
    dcb.fAbortOnError = settings.abortOnError;
    dcb.XonLim = settings.xonLimit;
    dcb.XoffLim = settings.xoffLimit;
    dcb.XonChar = static_cast<char>(settings.xonCharacter);
    dcb.XoffChar = static_cast<char>(settings.xoffCharacter);
    dcb.EofChar = static_cast<char>(settings.endOfFileCharacter);
    dcb.EvtChar = static_cast<char>(settings.eventCharacter);
    // SetCommState refuses two equal characters, even on a line that uses neither.
    if (dcb.XonChar == dcb.XoffChar && !settings.xonXoffOutput && !settings.xonXoffInput) {
        dcb.XonChar = static_cast<char>(kUsualXon);
        dcb.XoffChar = static_cast<char>(kUsualXoff);
    }
}

uint32_t TotalTimeout(uint32_t constant, uint32_t multiplier, std::size_t count)
{
    return static_cast<uint32_t>(std::min<uint64_t>(constant + uint64_t{multiplier} * count, kLongestTimeout));
}

COMMTIMEOUTS ToCommTimeouts(const SerialTimeouts& timeouts)
{
    COMMTIMEOUTS native{};
    if (timeouts.readMultiplier == 0 && timeouts.readConstant == 0) {
        // Two zeros would wait for ever; with this interval they take what is there.
        native.ReadIntervalTimeout = MAXDWORD;
    } else {
        native.ReadIntervalTimeout = std::min(timeouts.readInterval, kLongestTimeout);
        native.ReadTotalTimeoutMultiplier = std::min(timeouts.readMultiplier, kLongestTimeout);
        native.ReadTotalTimeoutConstant = std::min(timeouts.readConstant, kLongestTimeout);
    }
    native.WriteTotalTimeoutMultiplier = std::min(timeouts.writeMultiplier, kLongestTimeout);
    native.WriteTotalTimeoutConstant = std::min(timeouts.writeConstant, kLongestTimeout);
    // For writes there is no such interval. A millisecond is the shortest limit there is.
    if (timeouts.writeMultiplier == 0 && timeouts.writeConstant == 0) native.WriteTotalTimeoutConstant = 1;
    return native;
}

class WindowsSerialLine final : public SerialLine {
public:
    explicit WindowsSerialLine(UniqueHandle handle) : handle_(std::move(handle)) {}
    WindowsSerialLine(const WindowsSerialLine&) = delete;
    WindowsSerialLine& operator=(const WindowsSerialLine&) = delete;
    ~WindowsSerialLine() override { Release(); }

    void HeedStop(const StopSignal& stop) override { stop_ = &stop; }

    std::optional<LineSettings> Settings() override
    {
        DCB dcb{};
        if (!ReadState(dcb)) return std::nullopt;
        if (!applied_) applied_ = FromDcb(dcb);
        return applied_;
    }

    bool Apply(const LineSettings& settings) override
    {
        DCB dcb{};
        if (!ReadState(dcb)) return false;
        ToDcb(settings, dcb);
        if (SetCommState(handle_.Get(), &dcb) == FALSE) return Fail(GetLastError());
        applied_ = settings;
        return true;
    }

    bool Apply(const SerialTimeouts& timeouts) override
    {
        if (!SetTimeouts(timeouts)) return false;
        timeouts_ = timeouts;
        return true;
    }

    bool SetDtr(bool on) override { return Escape(on ? SETDTR : CLRDTR); }
    bool SetRts(bool on) override { return Escape(on ? SETRTS : CLRRTS); }

    bool Purge(bool output, bool input) override
    {
        DWORD queues = 0;
        if (output) queues |= PURGE_TXABORT | PURGE_TXCLEAR;
        if (input) queues |= PURGE_RXABORT | PURGE_RXCLEAR;
        return queues == 0 || PurgeComm(handle_.Get(), queues) != FALSE || Fail(GetLastError());
    }

    SerialTransfer Read(std::span<std::byte> buffer) override
    {
        const uint32_t total = TotalTimeout(timeouts_.readConstant, timeouts_.readMultiplier, buffer.size());
        return ReadWithin(buffer, TransferLimit(OurLimit(total), *stop_));
    }

    SerialTransfer ReadUntilStopped(std::span<std::byte> buffer, uint32_t milliseconds) override
    {
        SerialTimeouts timeouts = timeouts_;
        timeouts.readMultiplier = 0;
        timeouts.readConstant = milliseconds;
        if (!SetTimeouts(timeouts)) return FailedTransfer(lastError_);
        const TransferLimit limit(OurLimit(milliseconds), *stop_, TransferLimit::AtStop::kEnd);
        const SerialTransfer got = ReadWithin(buffer, limit);
        SetTimeouts(timeouts_);
        return got;
    }

    SerialTransfer Write(std::span<const std::byte> bytes) override
    {
        const uint32_t total = TotalTimeout(timeouts_.writeConstant, timeouts_.writeMultiplier, bytes.size());
        auto transfer = OverlappedTransfer::New();
        if (transfer == nullptr) return FailedTransfer(GetLastError());
        transfer->bytes.assign(bytes.begin(), bytes.end());
        TransferLimit sending(total, *stop_);
        TransferLimit taking(OurLimit(total), *stop_);
        if (!transfer->Write(handle_.Get())) return NotStarted(GetLastError());
        DWORD before = 0;
        const DWORD waited = transfer->WaitWithin(taking, [&] {
            if (stop_->IsSet() && HasShrunk(QueuedOutput().value_or(0), before)) taking.Progress();
        });
        const SerialTransfer taken = Finish(std::move(transfer), waited);
        if (!taken.ok) return taken;
        if (taken.count > 0) sending.Progress();
        const auto unsent = WaitUntilSent(sending);
        if (!unsent) return FailedTransfer(GetLastError());
        return {true, taken.count - std::min<std::size_t>(taken.count, *unsent)};
    }

    bool Close() override
    {
        if (!handle_) return Fail(ERROR_INVALID_HANDLE);
        return Release() || Fail(GetLastError());
    }

    bool IsGone() const override { return gone_; }
    uint32_t LastError() const override { return lastError_; }

private:
    bool SetTimeouts(const SerialTimeouts& timeouts)
    {
        COMMTIMEOUTS native = ToCommTimeouts(timeouts);
        return SetCommTimeouts(handle_.Get(), &native) != FALSE || Fail(GetLastError());
    }

    SerialTransfer ReadWithin(std::span<std::byte> buffer, TransferLimit limit)
    {
        auto transfer = OverlappedTransfer::New();
        if (transfer == nullptr) return FailedTransfer(GetLastError());
        transfer->bytes.resize(buffer.size());
        if (!transfer->Read(handle_.Get())) return NotStarted(GetLastError());
        const DWORD waited = transfer->WaitWithin(limit);
        return Finish(std::move(transfer), waited, buffer);
    }

    SerialTransfer NotStarted(DWORD error)
    {
        return IsTimeout(error) ? SerialTransfer{true, 0} : FailedTransfer(error);
    }

    // The outcome of a transfer that has ended, or is given up now; what it has received is put into received.
    SerialTransfer Finish(std::unique_ptr<OverlappedTransfer> transfer, DWORD waited,
                          std::span<std::byte> received = {})
    {
        DWORD error = 0;
        if (waited != WAIT_OBJECT_0 && !transfer->Cancel(handle_.Get(), error)) {
            static_cast<void>(transfer.release());
            Fail(error);
            return {false, 0};
        }
        DWORD count = 0;
        if (GetOverlappedResult(handle_.Get(), &transfer->overlapped, &count, FALSE) == FALSE) {
            error = GetLastError();
            const bool givenUp = waited != WAIT_OBJECT_0 && error == ERROR_OPERATION_ABORTED;
            if (!givenUp && !IsTimeout(error)) return FailedTransfer(error);
            count = static_cast<DWORD>(transfer->overlapped.InternalHigh);
        }
        std::copy_n(transfer->bytes.begin(), std::min<std::size_t>(count, received.size()), received.begin());
        return {true, count};
    }

    static bool HasShrunk(DWORD queued, DWORD& before) { return queued < std::exchange(before, queued); }

    bool ReadState(DCB& dcb)
    {
        dcb.DCBlength = sizeof dcb;
        return GetCommState(handle_.Get(), &dcb) != FALSE || Fail(GetLastError());
    }

    bool Escape(DWORD function)
    {
        if (EscapeCommFunction(handle_.Get(), function) != FALSE || HasNoModemLines(GetLastError())) return true;
        return Fail(GetLastError());
    }

    // Nothing, with the system's error, when the device is gone.
    std::optional<DWORD> QueuedOutput() const
    {
        DWORD errors = 0;
        COMSTAT status{};
        if (ClearCommError(handle_.Get(), &errors, &status) != FALSE) return status.cbOutQue;
        if (IsDeviceGone(GetLastError())) return std::nullopt;
        return 0;  // a driver without such a queue
    }

    // A driver, an adapter's above all, takes bytes before the line has carried them. Waits until they are out or the
    // time is over; returns how many are not, nothing when the device is gone.
    std::optional<DWORD> WaitUntilSent(TransferLimit& limit) const
    {
        for (DWORD before = 0;;) {
            const auto queued = QueuedOutput();
            if (!queued || *queued == 0) return queued;
            if (HasShrunk(*queued, before)) limit.Progress();
            const uint32_t left = limit.Remaining();
            if (left == 0) return queued;
            const uint32_t baudRate = applied_ ? std::max<uint32_t>(applied_->baudRate, 1) : 9600;
            const auto estimate = static_cast<uint32_t>(uint64_t{*queued} * 10 * 1000 / baudRate);
            Sleep(std::min(left, std::clamp<uint32_t>(estimate, 1, 20)));
        }
    }

    bool Release()
    {
        if (!handle_) return true;
        // A driver may hold up the closing for output that the printer does not take.
        if (QueuedOutput().value_or(0) > 0) PurgeComm(handle_.Get(), PURGE_TXABORT | PURGE_TXCLEAR);
        return handle_.Close();
    }

    bool Fail(DWORD error)
    {
        lastError_ = error;
        return false;
    }

    SerialTransfer FailedTransfer(DWORD error)
    {
        Fail(error);
        gone_ = gone_ || IsDeviceGone(error);
        return {false, 0};
    }

    UniqueHandle handle_;
    const StopSignal* stop_ = &kNeverStopped;
    std::optional<LineSettings> applied_;
    SerialTimeouts timeouts_;
    bool gone_ = false;
    uint32_t lastError_ = 0;
};

}  // namespace

std::unique_ptr<SerialLine> OpenSerialLine(const std::string& path, uint32_t& error)
{
    UniqueHandle handle(CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_WRITE_THROUGH | FILE_FLAG_NO_BUFFERING | FILE_FLAG_OVERLAPPED, nullptr));
    if (!handle) {
        error = GetLastError();
        return nullptr;
    }
    auto line = std::make_unique<WindowsSerialLine>(std::move(handle));
    // What was set by whoever had the port before may be to wait without limit.
    line->Apply(SerialTimeouts{});
    return line;
}

}  // namespace marbex::platform
