#include "printer/printer_link.h"

#include <algorithm>

namespace marbex::printer {

int32_t PrinterLink::Write(std::string_view bytes) const
{
    if (!IsOpen()) return kEncoderPortNotOpen;
    if (bytes.empty()) return kEncoderOk;
    const auto* data = reinterpret_cast<const uint8_t*>(bytes.data());
    const bool written = port_->Write(data, bytes.size()) == 0;
    if (count_ != nullptr) {
        count_->bytes += bytes.size();
        if (!count_->firstOpening) count_->firstOpening = port_->OpeningOfWrite();
    }
    return written ? kEncoderOk : kEncoderPortFailed;
}

int32_t PrinterLink::Read(std::span<uint8_t> room, std::size_t& count) const
{
    count = 0;
    if (!IsOpen()) return kEncoderPortNotOpen;
    auto length = static_cast<uint16_t>(std::min<std::size_t>(room.size(), 0xFFFF));
    if (port_->Read(room.data(), &length) < 0) return kEncoderPortFailed;
    count = std::min<std::size_t>(length, room.size());
    return kEncoderOk;
}

int32_t PrinterLink::ReadWithinLimit(std::span<uint8_t> room, std::size_t& count) const
{
    count = 0;
    if (!IsOpen()) return kEncoderPortNotOpen;
    const uint32_t left = limit_->Remaining();
    if (left == 0) return kEncoderOk;
    // A port that is told to stop gives up such a read at once, an ordinary one only when nothing moves any more.
    if (limit_->Closing()) return Read(room, count);
    return port_->ReadWithin(room, left, count) == comm::LinkRead::kFailed ? kEncoderPortFailed : kEncoderOk;
}

std::size_t PrinterLink::ReadReply(std::span<uint8_t> reply) const
{
    std::size_t collected = 0;
    while (collected < reply.size()) {
        std::size_t count = 0;
        const std::span<uint8_t> rest = reply.subspan(collected);
        const int32_t result = limit_ != nullptr ? ReadWithinLimit(rest, count) : Read(rest, count);
        if (result != kEncoderOk || count == 0) break;
        collected += count;
    }
    return collected;
}

void PrinterLink::CleanInput() const
{
    if (port_ != nullptr) port_->CleanInput();
}

void PrinterLink::CleanOutput() const
{
    if (port_ != nullptr) port_->CleanOutput();
}

void PrinterLink::DiscardInput() const
{
    if (port_ != nullptr) port_->DiscardInput();
}

}  // namespace marbex::printer
