// The code pages that Windows has installed, each asked once and then kept.

#include <windows.h>

#include <algorithm>
#include <atomic>

#include "platform/code_page.h"
#include "platform/lock.h"
#include "platform/unicode.h"

namespace marbex::platform {

namespace {

constexpr uint32_t kGb18030 = 54936;
constexpr uint32_t kLargestNumber = 65535;

char16_t UnitOf(wchar_t unit)
{
    return static_cast<char16_t>(unit);
}

bool IsPrivate(char16_t unit)
{
    return unit >= 0xE000 && unit <= 0xF8FF;
}

// Windows gives every undefined byte of its pages a character all the same, the C1 control of the same value or one of
// the private use area. In the pages of ISO 8859 (28591 to 28606) the C1 controls are defined.
bool IsDefined(uint32_t number, unsigned byte, char16_t unit)
{
    const bool iso8859 = number >= 28591 && number <= 28606;
    return !IsPrivate(unit) && (iso8859 || unit != byte || unit < 0x80 || unit > 0x9F);
}

// Whether byte begins a longer character. Windows tells the ranges of the double-byte pages only; of the others that it
// has, GB18030, these are the bytes.
bool IsLead(const CPINFO& info, unsigned byte)
{
    if (info.MaxCharSize > 2) return byte >= 0x81 && byte <= 0xFE;
    for (unsigned i = 0; i + 1 < MAX_LEADBYTES && info.LeadByte[i] != 0; i += 2) {
        if (byte >= info.LeadByte[i] && byte <= info.LeadByte[i + 1]) return true;
    }
    return false;
}

// One character after the other by the functions of the system, which need no lock.
class WindowsConverter final : public CharacterConverter {
public:
    WindowsConverter(uint32_t number, unsigned longest) : number_(number), longest_(longest) {}

    Decoded Decode(std::string_view bytes, std::u16string& wide) override
    {
        wchar_t room[2];
        const int made =
            MultiByteToWideChar(number_, MB_ERR_INVALID_CHARS, bytes.data(), static_cast<int>(bytes.size()), room, 2);
        if (made > 0) {
            for (int i = 0; i < made; ++i)
                wide += UnitOf(room[i]);
            return Decoded::kCharacter;
        }
        return bytes.size() < longest_ ? Decoded::kIncomplete : Decoded::kMalformed;
    }

    std::size_t Encode(char32_t character, char (&room)[kLongestCharacter]) override
    {
        std::u16string text;
        AppendUtf16(text, character);
        wchar_t wide[2];
        std::copy(text.begin(), text.end(), wide);
        // GB18030 holds every character, and knows neither substitutes nor the flag against them.
        const bool substitutes = number_ != kGb18030;
        BOOL substituted = FALSE;
        const int made =
            WideCharToMultiByte(number_, substitutes ? WC_NO_BEST_FIT_CHARS : 0, wide, static_cast<int>(text.size()),
                                room, sizeof room, nullptr, substitutes ? &substituted : nullptr);
        return made <= 0 || substituted ? 0 : static_cast<std::size_t>(made);
    }

private:
    const uint32_t number_;
    const unsigned longest_;
};

std::unique_ptr<CodePage> MakePage(uint32_t number)
{
    if (number == kUtf8Number) return MakeUtf8Page();
    if (number == kWesternNumber) return MakeWesternPage();
    CPINFO info;
    // Longer ones are the pages with shift states (ISO 2022, HZ, UTF-7): no character of theirs stands alone.
    if (!IsValidCodePage(number) || !GetCPInfo(number, &info) || info.MaxCharSize > kLongestCharacter) return nullptr;

    char16_t single[256];
    for (unsigned value = 0; value < 256; ++value) {
        const auto byte = static_cast<char>(value);
        wchar_t unit = 0;
        const bool made = MultiByteToWideChar(number, MB_ERR_INVALID_CHARS, &byte, 1, &unit, 1) == 1;
        const bool defined = made && IsDefined(number, value, UnitOf(unit));
        single[value] = defined ? UnitOf(unit) : IsLead(info, value) ? kLeadUnit : kUndefinedUnit;
    }
    if (info.MaxCharSize == 1) return MakeSingleBytePage(single);
    return MakeMultiBytePage(std::make_unique<WindowsConverter>(number, info.MaxCharSize), single);
}

// Found pages, and numbers that were asked for in vain, in a list that only grows at its head. At most one of each
// number.
struct Found {
    uint32_t number;
    std::unique_ptr<CodePage> page;
    const Found* next;
};

std::atomic<const Found*> foundPages{nullptr};

const Found* Find(uint32_t number)
{
    const Found* found = foundPages.load(std::memory_order_acquire);
    while (found != nullptr && found->number != number)
        found = found->next;
    return found;
}

}  // namespace

const CodePage* FindCodePage(uint32_t number)
{
    static Lock making;

    // Lower numbers, such as 0, stand for a page that is configured elsewhere.
    if (number < 37 || number > kLargestNumber) return nullptr;
    const Found* found = Find(number);
    if (found == nullptr) {
        const LockHold hold(making);
        found = Find(number);
        if (found == nullptr) {
            found = new Found{number, MakePage(number), foundPages.load(std::memory_order_relaxed)};
            foundPages.store(found, std::memory_order_release);
        }
    }
    return found->page.get();
}

}  // namespace marbex::platform
