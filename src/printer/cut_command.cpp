#include "printer/cut_command.h"

namespace marbex::printer {

CutBytes CutCommandFor(const EncoderTraits& traits, int32_t percentage)
{
    constexpr std::string_view kFull = "\x1Bi";
    constexpr std::string_view kPartial = "\x1Bm";
    switch (traits.cut) {
        case CutCommand::kFullAt100ElsePartial:
            return {percentage == 100 ? kFull : kPartial, {}};
        case CutCommand::kFull:
            return {kFull, {}};
        case CutCommand::kFullWithPresenter:
            return {kFull, traits.presenter};
        case CutCommand::kPresenterAt100ElsePartial:
            if (percentage == 100) return {kFull, traits.presenter};
            return {kPartial, {}};
        case CutCommand::kPartialAt50ElseFull:
            return {percentage == 50 ? kPartial : kFull, {}};
        case CutCommand::kTwoLineFeeds:
            return {"\n\n", {}};
    }
    return {};
}

}  // namespace marbex::printer
