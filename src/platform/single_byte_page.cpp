#include <algorithm>
#include <utility>
#include <vector>

#include "platform/code_page.h"

namespace marbex::platform {

namespace {

// From the Unicode Consortium's VENDORS/MICSFT/WINDOWS/CP1252.TXT, bytes 0x80 to 0x9F; the others stand for themselves.
constexpr char16_t kWestern[32] = {0x20AC, kUndefinedUnit, 0x201A,         0x0192, 0x201E, 0x2026, 0x2020,
                                   0x2021, 0x02C6,         0x2030,         0x0160, 0x2039, 0x0152, kUndefinedUnit,
                                   0x017D, kUndefinedUnit, kUndefinedUnit, 0x2018, 0x2019, 0x201C, 0x201D,
                                   0x2022, 0x2013,         0x2014,         0x02DC, 0x2122, 0x0161, 0x203A,
                                   0x0153, kUndefinedUnit, 0x017E,         0x0178};

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

std::unique_ptr<CodePage> MakeWesternPage()
{
    char16_t widen[256];
    for (unsigned byte = 0; byte < 256; ++byte)
        widen[byte] = static_cast<char16_t>(byte);
    std::copy(std::begin(kWestern), std::end(kWestern), widen + 0x80);
    return MakeSingleBytePage(widen);
}

}  // namespace marbex::platform
