#include "marbex_opos/check/questions.h"

namespace marbex::tools {

Answer Ask(Cable& cable, std::string_view question, std::size_t length, uint32_t milliseconds)
{
    Answer answer;
    answer.wasSent = cable.Send(question);
    while (answer.wasSent && answer.bytes.size() < length && !cable.IsEnded()) {
        const std::string more = cable.Receive(64, milliseconds);
        if (more.empty()) break;
        answer.bytes += more;
    }
    return answer;
}

std::optional<uint32_t> AskFullStatus(Cable& cable, Answer& got, uint32_t milliseconds)
{
    constexpr std::size_t kLength = 6;
    got = Ask(cable, "\x10\x04\x14", kLength, milliseconds);
    if (got.bytes.size() != kLength || !got.bytes.starts_with("\x10\x0F")) return std::nullopt;
    uint32_t status = 0;
    for (std::size_t at = kLength; at-- > 2;)
        status = status << 8 | static_cast<unsigned char>(got.bytes[at]);
    return status;
}

}  // namespace marbex::tools
