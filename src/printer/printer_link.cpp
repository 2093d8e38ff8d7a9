#include "printer/printer_link.h"

#include <algorithm>

namespace marbex::printer {

int32_t PrinterLink::Write(std::string_view bytes) const
{
    if (!IsOpen()) return kEncoderPortNotOpen;
    if (bytes.empty()) return kEncoderOk;
    const auto* data = reinterpret_cast<const uint8_t*>(bytes.data());
    return port_->Write(data, bytes.size()) == 0 ? kEncoderOk : kEncoderPortFailed;
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

std::size_t PrinterLink::ReadReply(std::span<uint8_t> reply) const
{
    std::size_t collected = 0;
    while (collected < reply.size()) {
        std::size_t count = 0;
        if (Read(reply.subspan(collected), count) != kEncoderOk || count == 0) break;
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

}  // namespace marbex::printer
