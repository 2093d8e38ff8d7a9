#include <algorithm>
#include <mutex>
#include <vector>

#include "platform/lock.h"
#include "platform/posix/code_page.h"
#include "platform/posix/iconv_handle.h"
#include "platform/unicode.h"

namespace marbex::platform {

namespace {

constexpr std::size_t kLongestCharacter = 4;  // GB18030
constexpr char32_t kPlaneSize = 0x10000;

class MultiBytePage : public CodePage {
public:
    MultiBytePage(const char* iconvName, const char16_t (&single)[256])
        : toUtf16_("UTF-16LE", iconvName), fromUtf32_(iconvName, "UTF-32LE")
    {
        std::copy(std::begin(single), std::end(single), single_);
    }

    void Widen(std::string_view text, std::u16string& wide) const override
    {
        while (!text.empty()) {
            std::size_t length = 1;
            const char16_t unit = single_[static_cast<unsigned char>(text.front())];
            if (unit != kUndefinedUnit) {
                wide += unit;
            } else {
                length = WidenLong(text.substr(0, kLongestCharacter), wide);
            }
            text.remove_prefix(length);
        }
    }

    bool Append(char32_t character, std::string& bytes) const override
    {
        if (character < kPlaneSize) {
            std::call_once(planeMade_, [this] { MakePlane(); });
            return Unpack(plane_[character], character, bytes);
        }
        uint32_t packed = 0;
        {
            const LockHold hold(lock_);
            packed = Encode(character);
        }
        return Unpack(packed, character, bytes);
    }

    int UndefinedByteOf(char16_t) const override { return -1; }

private:
    // Appends the character of two and more bytes at the start of text; the bytes it takes.
    std::size_t WidenLong(std::string_view text, std::u16string& wide) const
    {
        const LockHold hold(lock_);
        for (std::size_t length = 2; length <= text.size(); ++length) {
            char16_t room[4];
            std::size_t used = 0;
            const int error = toUtf16_.Convert(text.data(), length, room, sizeof room, used);
            if (error == 0 && used != 0) {
                wide.append(room, used / sizeof(char16_t));
                return length;
            }
            if (error != EINVAL) break;
        }
        wide += static_cast<char16_t>(kReplacementCharacter);
        return 1;
    }

    // The bytes of a character as one number, the first byte highest; 0 for what the page does not hold.
    uint32_t Encode(char32_t character) const MARBEX_REQUIRES(lock_)
    {
        unsigned char room[8];
        std::size_t used = 0;
        if (fromUtf32_.Convert(&character, sizeof character, room, sizeof room, used) != 0) return 0;
        if (used == 0 || used > kLongestCharacter) return 0;
        uint32_t packed = 0;
        for (std::size_t i = 0; i < used; ++i)
            packed = packed << 8 | room[i];
        return packed;
    }

    static bool Unpack(uint32_t packed, char32_t character, std::string& bytes)
    {
        if (packed == 0 && character != 0) return false;
        for (int shift = 24; shift >= 0; shift -= 8) {
            if (shift == 0 || packed >> shift != 0) bytes += static_cast<char>(packed >> shift & 0xFF);
        }
        return true;
    }

    // Asking iconv for one character costs ten times a look into a table; a plane of them is made in some milliseconds.
    void MakePlane() const
    {
        plane_.resize(kPlaneSize);
        const LockHold hold(lock_);
        for (char32_t character = 0; character < kPlaneSize; ++character) {
            if (character < 0xD800 || character > 0xDFFF) plane_[character] = Encode(character);
        }
    }

    char16_t single_[256];
    mutable Lock lock_;
    mutable IconvHandle toUtf16_ MARBEX_GUARDED_BY(lock_);
    mutable IconvHandle fromUtf32_ MARBEX_GUARDED_BY(lock_);
    mutable std::once_flag planeMade_;
    mutable std::vector<uint32_t> plane_;  // written under planeMade_ only
};

}  // namespace

std::unique_ptr<CodePage> MakeMultiBytePage(const char* iconvName, const char16_t (&single)[256])
{
    return std::make_unique<MultiBytePage>(iconvName, single);
}

}  // namespace marbex::platform
