#include "printer/charset_switcher.h"

namespace marbex::printer {

CharsetSwitcher::CharsetSwitcher(std::span<const support::CharSetStruct> sets, uint32_t fixedCodePage)
    : sets_(sets),
      fixed_(fixedCodePage != 0),
      encoder_(fixed_ || sets.empty() ? fixedCodePage : sets.front().CodePageNumber)
{
}

void CharsetSwitcher::ConvertCharacter(char16_t character, std::string& output)
{
    if (!fixed_ && sets_.empty()) {
        output.push_back('?');
        return;
    }
    if (const EncodedCharacter encoded = encoder_.Encode(character)) {
        output.append(encoded.View());
    } else if (fixed_) {
        output.push_back('?');
    } else {
        SwitchAndConvert(character, output);
    }
}

void CharsetSwitcher::SwitchAndConvert(char16_t character, std::string& output)
{
    for (std::size_t step = 1; step < sets_.size(); ++step) {
        const std::size_t index = (current_ + step) % sets_.size();
        const CodePageEncoder encoder(sets_[index].CodePageNumber);
        const EncodedCharacter encoded = encoder.Encode(character);
        if (!encoded) continue;

        current_ = index;
        encoder_ = encoder;
        output.append(sets_[index].SelectPrefixText);
        // The first set of the list stands for table 0, whatever its own code.
        const uint8_t tableCode = index == 0 ? 0 : sets_[index].TableCode;
        if (tableCode == 0) {
            output.append(support::kNulMarker);
        } else {
            output.push_back(static_cast<char>(tableCode));
        }
        output.append(encoded.View());
        return;
    }
    output.push_back('?');
}

}  // namespace marbex::printer
