#include <algorithm>
#include <utility>
#include <vector>

#include "platform/posix/code_page.h"

namespace marbex::platform {

namespace {

class SingleBytePage : public CodePage {
public:
    explicit SingleBytePage(const char16_t (&widen)[256])
    {
        for (unsigned value = 0; value < 256; ++value) {
            defined_[value] = widen[value] != kUndefinedUnit;
            widen_[value] = defined_[value] ? widen[value] : static_cast<char16_t>(value);
            if (defined_[value]) bytes_.emplace_back(widen[value], static_cast<unsigned char>(value));
        }
        // Of two bytes with one character the lower one stands for it.
        std::stable_sort(bytes_.begin(), bytes_.end(),
                         [](const auto& one, const auto& other) { return one.first < other.first; });
    }

    void Widen(std::string_view text, std::u16string& wide) const override
    {
        const std::size_t start = wide.size();
        wide.resize(start + text.size());
        for (std::size_t i = 0; i < text.size(); ++i) {
            wide[start + i] = widen_[static_cast<unsigned char>(text[i])];
        }
    }

    bool Append(char32_t character, std::string& bytes) const override
    {
        const auto found = std::lower_bound(bytes_.begin(), bytes_.end(), character,
                                            [](const auto& entry, char32_t wanted) { return entry.first < wanted; });
        if (found == bytes_.end() || found->first != character) return false;
        bytes += static_cast<char>(found->second);
        return true;
    }

    int UndefinedByteOf(char16_t unit) const override
    {
        return unit >= 0x80 && unit <= 0x9F && !defined_[unit] ? unit : -1;
    }

private:
    char16_t widen_[256];
    bool defined_[256];
    std::vector<std::pair<char16_t, unsigned char>> bytes_;  // by character
};

}  // namespace

std::unique_ptr<CodePage> MakeSingleBytePage(const char16_t (&widen)[256])
{
    return std::make_unique<SingleBytePage>(widen);
}

}  // namespace marbex::platform
