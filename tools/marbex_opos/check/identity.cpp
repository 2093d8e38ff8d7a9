#include "marbex_opos/check/identity.h"

#include <algorithm>

#include "device/model_description.h"
#include "marbex_opos/check/questions.h"

namespace marbex::tools {

std::optional<uint16_t> AskIdentifier(Cable& cable, uint32_t milliseconds)
{
    constexpr char kLongFollows = '\xFF';
    const Answer one = Ask(cable, "\x1DI\x01", 1, milliseconds);
    if (one.bytes.size() != 1) return std::nullopt;
    if (one.bytes[0] != kLongFollows) return static_cast<unsigned char>(one.bytes[0]);
    const Answer two = Ask(cable, "\x1DI\xFF", 2, milliseconds);
    if (two.bytes.size() != 2) return std::nullopt;
    return static_cast<uint16_t>(static_cast<unsigned char>(two.bytes[0]) << 8 |
                                 static_cast<unsigned char>(two.bytes[1]));
}

std::vector<std::string> ModelsOf(uint16_t identifier)
{
    std::vector<std::string> names;
    for (const device::ModelDescription& model : device::ModelDescriptions()) {
        const auto& accepted = model.encoder.identity.accepted;
        if (std::ranges::find(accepted, identifier) != accepted.end()) names.emplace_back(model.name);
    }
    return names;
}

}  // namespace marbex::tools
