#include "printer/status_query.h"

#include <array>

#include "printer/answer_time_limit.h"

namespace marbex::printer {

namespace {

constexpr std::string_view kFullStatusQuestion = "\x10\x04\x14";
constexpr std::string_view kPrinterStatusQuestion = "\x10\x04\x01";
constexpr std::string_view kErrorQuestion = "\x10\x04\x02";

uint32_t Number(const std::array<uint8_t, 6>& answer)
{
    return answer[2] | uint32_t{answer[3]} << 8 | uint32_t{answer[4]} << 16 | uint32_t{answer[5]} << 24;
}

bool WellFormed(const std::array<uint8_t, 6>& answer)
{
    return answer[0] == 0x10 && answer[1] == 0x0F;
}

void DecodeFullStatus(uint32_t fullStatus, StatusVariant variant, PrinterStatus& status)
{
    const auto set = [&](std::size_t flag, uint32_t mask) { status.flags[flag] = (fullStatus & mask) != 0 ? 1 : 0; };
    set(PrinterStatus::kCoverOpen, kFullStatusCover);
    set(3, 0x00006000);
    set(PrinterStatus::kPaperEnd, kFullStatusPaperEnd);
    set(6, 0x01000000);
    set(7, 0x0D000000);
    set(8, 0x00290000);
    set(PrinterStatus::kPaperNearEnd, kFullStatusNearEnd | kFullStatusPaperEnd);
    if (variant == StatusVariant::kBrisaHd) set(PrinterStatus::kPaperJam, kFullStatusJam);
}

void DecodePrinterStatus(uint8_t answer, StatusVariant variant, PrinterStatus& status)
{
    const bool tellsDrawer = variant == StatusVariant::kReference || variant == StatusVariant::kReferenceCleansOutput;
    const bool offline = (answer & 0x08) != 0;
    if (tellsDrawer) status.flags[PrinterStatus::kDrawerSignal] = (answer & 0x04) != 0 ? 1 : 0;
    status.flags[PrinterStatus::kOnline] = offline ? 0 : 1;
    status.flags[PrinterStatus::kOffline] = offline ? 1 : 0;
}

}  // namespace

int32_t AskFullStatus(const PrinterLink& link, std::optional<uint32_t>& fullStatus)
{
    fullStatus.reset();
    const int32_t written = link.Write(kFullStatusQuestion);
    std::array<uint8_t, 6> answer{};
    if (written == kEncoderOk && link.ReadReply(answer) == answer.size() && WellFormed(answer)) {
        fullStatus = Number(answer);
    }
    return written;
}

bool QueryStatus(const PrinterLink& link, StatusVariant variant, PrinterStatus& status, uint32_t& fullStatus)
{
    std::optional<uint32_t> told;
    AskFullStatus(link, told);
    fullStatus = told.value_or(0);
    if (told) {
        DecodeFullStatus(fullStatus, variant, status);
        std::array<uint8_t, 1> answer{};
        if (link.Write(kPrinterStatusQuestion) == kEncoderOk && link.ReadReply(answer) == answer.size()) {
            DecodePrinterStatus(answer[0], variant, status);
            return true;
        }
    }
    status.flags[PrinterStatus::kNoResponse] = 1;
    return false;
}

bool AskErrorBit(const PrinterLink& link, platform::Clock& clock)
{
    constexpr uint8_t kError = 0x40;
    if (link.Write(kErrorQuestion) != kEncoderOk) return false;
    const AnswerTimeLimit limit(clock, AnswerTimeLimit::Unit::kMilliseconds);
    while (!limit.Passed()) {
        std::array<uint8_t, 1> answer{};
        std::size_t count = 0;
        if (link.Read(answer, count) != kEncoderOk) return false;
        if (count != 0) return (answer[0] & kError) != 0;
        clock.Sleep(kEmptyReadPauseMilliseconds);
    }
    return false;
}

}  // namespace marbex::printer
