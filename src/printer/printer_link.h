#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "comm/printer_port.h"
#include "platform/clock.h"

namespace marbex::printer {

// Results of the encoder's own; they are not OPOS codes.
inline constexpr int32_t kEncoderOk = 0;
inline constexpr int32_t kEncoderTextNotSent = 1;
inline constexpr int32_t kEncoderPortNotOpen = 2;
inline constexpr int32_t kEncoderPortFailed = 3;
inline constexpr int32_t kEncoderOpenFailed = 5;

// How long a reply may take. A device that is closing waits for it as it waits for every other.
class ReplyLimit {
public:
    // stop tells that the device is closing.
    ReplyLimit(const platform::Clock& clock, uint64_t milliseconds, const std::atomic<bool>& stop)
        : clock_(clock), end_(clock.Milliseconds() + milliseconds), stop_(stop)
    {
    }

    bool Closing() const { return stop_.load(); }
    uint32_t Remaining() const  // milliseconds
    {
        const uint64_t now = clock_.Milliseconds();
        return now < end_ ? static_cast<uint32_t>(end_ - now) : 0;
    }

private:
    const platform::Clock& clock_;
    const uint64_t end_;
    const std::atomic<bool>& stop_;
};

// What has been handed to a link.
struct OutputCount {
    uint64_t bytes = 0;
    // Which opening of the link took the first of them since this was last emptied.
    std::optional<uint32_t> firstOpening;
};

// The basic transfers over a port that may be missing or closed. A small value; does not own the port.
class PrinterLink {
public:
    // count, when given, is kept of what is written.
    explicit PrinterLink(comm::CPrinterPort* port, OutputCount* count = nullptr) : port_(port), count_(count) {}

    // The same link, where a whole reply must come within limit, whatever the receive time-out of the port.
    PrinterLink Within(const ReplyLimit& limit) const
    {
        PrinterLink limited = *this;
        limited.limit_ = &limit;
        return limited;
    }

    bool IsOpen() const { return port_ != nullptr && port_->IsOpen(); }

    // kEncoderOk when all was written (or there was nothing to write), kEncoderPortNotOpen, kEncoderPortFailed.
    int32_t Write(std::string_view bytes) const;

    // One read of at most 65535 bytes. kEncoderOk, also with a count of 0; else as Write, the count 0.
    int32_t Read(std::span<uint8_t> room, std::size_t& count) const;

    // How often the link has been opened, and its speed when it is serial, else 0; see CPrinterPort.
    uint32_t Openings() const { return port_ == nullptr ? 0 : port_->Openings(); }
    uint32_t BaudRate() const { return port_ == nullptr ? 0 : port_->BaudRate(); }

    // Collects a reply whose length is known and returns how much of it came. A stream has no message borders, so it
    // reads on until the reply is whole, a read fails or a read brings nothing.
    std::size_t ReadReply(std::span<uint8_t> reply) const;

    void CleanInput() const;
    void CleanOutput() const;
    void DiscardInput() const;  // what has been received by now; no line in the log

private:
    int32_t ReadWithinLimit(std::span<uint8_t> room, std::size_t& count) const;

    comm::CPrinterPort* port_;
    OutputCount* count_;
    const ReplyLimit* limit_ = nullptr;
};

}  // namespace marbex::printer
