#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "comm/printer_port.h"

namespace marbex::printer {

// Results of the encoder's own; they are not OPOS codes.
inline constexpr int32_t kEncoderOk = 0;
inline constexpr int32_t kEncoderTextNotSent = 1;
inline constexpr int32_t kEncoderPortNotOpen = 2;
inline constexpr int32_t kEncoderPortFailed = 3;
inline constexpr int32_t kEncoderOpenFailed = 5;

// The basic transfers over a port that may be missing or closed. A small value; does not own the port.
class PrinterLink {
public:
    explicit PrinterLink(comm::CPrinterPort* port) : port_(port) {}

    bool IsOpen() const { return port_ != nullptr && port_->IsOpen(); }

    // kEncoderOk when all was written (or there was nothing to write), kEncoderPortNotOpen, kEncoderPortFailed.
    int32_t Write(std::string_view bytes) const;

    // One read of at most 65535 bytes. kEncoderOk, also with a count of 0; else as Write, the count 0.
    int32_t Read(std::span<uint8_t> room, std::size_t& count) const;

    // Collects a reply whose length is known and returns how much of it came. A stream has no message borders, so it
    // reads on until the reply is whole, a read fails or a read brings nothing.
    std::size_t ReadReply(std::span<uint8_t> reply) const;

    void CleanInput() const;
    void CleanOutput() const;

private:
    comm::CPrinterPort* port_;
};

}  // namespace marbex::printer
