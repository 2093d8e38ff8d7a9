#include "printer/identity_check.h"

#include <algorithm>
#include <array>
#include <functional>
#include <optional>
#include <vector>

#include "printer/answer_time_limit.h"

namespace marbex::printer {

namespace {

constexpr uint8_t kExtendedFollows = 0xFF;

// Reads, up to 64 bytes at a time, until enough says that the answer is whole. None when a read fails or the answer
// comes too late.
std::optional<std::vector<uint8_t>> CollectAnswer(const PrinterLink& link, platform::Clock& clock,
                                                  AnswerTimeLimit::Unit unit, std::size_t readSize,
                                                  const std::function<bool(const std::vector<uint8_t>&)>& enough)
{
    const AnswerTimeLimit limit(clock, unit);
    std::vector<uint8_t> answer;
    while (!enough(answer)) {
        std::array<uint8_t, 64> room;
        std::size_t count = 0;
        if (link.Read(std::span(room).first(readSize), count) != kEncoderOk) return std::nullopt;
        if (limit.Passed()) return std::nullopt;
        answer.insert(answer.end(), room.begin(), room.begin() + static_cast<std::ptrdiff_t>(count));
        if (count == 0) clock.Sleep(kEmptyReadPauseMilliseconds);
    }
    return answer;
}

std::optional<uint16_t> AskShortIdentifier(const PrinterLink& link, AnswerTimeLimit::Unit unit, platform::Clock& clock)
{
    if (link.Write("\x1DI\x01") != kEncoderOk) return std::nullopt;
    const auto answer =
        CollectAnswer(link, clock, unit, 1, [](const std::vector<uint8_t>& bytes) { return !bytes.empty(); });
    if (!answer) return std::nullopt;
    return answer->front();
}

std::optional<uint16_t> AskExtendedIdentifier(const PrinterLink& link, AnswerTimeLimit::Unit unit,
                                              platform::Clock& clock)
{
    if (link.Write("\x1DI\xFF") != kEncoderOk) return std::nullopt;
    const auto answer =
        CollectAnswer(link, clock, unit, 64, [](const std::vector<uint8_t>& bytes) { return bytes.size() >= 2; });
    // More than two bytes are the answer to something else.
    if (!answer || answer->size() != 2) return std::nullopt;
    return static_cast<uint16_t>((*answer)[0] << 8 | (*answer)[1]);
}

}  // namespace

bool IsExpectedPrinter(const PrinterLink& link, const IdentityCheck& identity, platform::Clock& clock)
{
    const auto unit =
        identity.wholeSeconds ? AnswerTimeLimit::Unit::kWholeSeconds : AnswerTimeLimit::Unit::kMilliseconds;
    // The rest of an answer that a killed till did not read is not an identity.
    link.DiscardInput();
    std::optional<uint16_t> identifier;
    if (identity.extendedAtOnce) {
        identifier = AskExtendedIdentifier(link, unit, clock);
    } else {
        identifier = AskShortIdentifier(link, unit, clock);
        if (identity.firstAnswerMustBeFF && identifier != kExtendedFollows) return false;
        if (identity.extendedAfterFF && identifier == kExtendedFollows) {
            identifier = AskExtendedIdentifier(link, unit, clock);
        }
    }
    return identifier &&
           std::find(identity.accepted.begin(), identity.accepted.end(), *identifier) != identity.accepted.end();
}

bool HasWideMechanism(const PrinterLink& link, platform::Clock& clock)
{
    constexpr std::string_view kQuestion{"\x1C\xDD\x01\xFF\x00", 5};
    constexpr std::size_t kLeastLength = 5;
    constexpr std::size_t kMechanismByte = 6;
    constexpr uint8_t kWide = 0x02;

    if (link.Write(kQuestion) != kEncoderOk) return false;
    // The low four bits of the first byte count the bytes after it, so an answer that comes in pieces is known to be
    // whole.
    const auto announced = [](const std::vector<uint8_t>& bytes) -> std::size_t { return 1u + (bytes[0] & 0x0F); };
    const auto answer =
        CollectAnswer(link, clock, AnswerTimeLimit::Unit::kMilliseconds, 64, [&](const std::vector<uint8_t>& bytes) {
            return bytes.size() >= kLeastLength && bytes.size() >= announced(bytes);
        });
    return answer && answer->size() > kMechanismByte && ((*answer)[kMechanismByte] & kWide) != 0;
}

}  // namespace marbex::printer
