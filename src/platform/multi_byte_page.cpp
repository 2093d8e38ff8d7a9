#include <algorithm>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/code_page.h"
#include "platform/lock.h"
#include "platform/unicode.h"

namespace marbex::platform {

namespace {

constexpr char32_t kPlaneSize = 0x10000;

class MultiBytePage : public CodePage {
public:
    MultiBytePage(std::unique_ptr<CharacterConverter> converter, const char16_t (&single)[256])
        : converter_(std::move(converter))
    {
        std::copy(std::begin(single), std::end(single), single_);
    }

    void Widen(std::string_view text, std::u16string& wide) const override
    {
        while (!text.empty()) {
            std::size_t length = 1;
            const auto byte = static_cast<unsigned char>(text.front());
            if (single_[byte] == kLeadUnit) {
                length = WidenLong(text.substr(0, kLongestCharacter), wide);
            } else {
                wide += single_[byte] == kUndefinedUnit ? byte : single_[byte];
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

    int UndefinedByteOf(char16_t unit) const override
    {
        return unit >= 0x80 && unit <= 0x9F && single_[unit] == kUndefinedUnit ? unit : -1;
    }

private:
    // Appends the character of two and more bytes at the start of text; the bytes it takes.
    std::size_t WidenLong(std::string_view text, std::u16string& wide) const
    {
        const LockHold hold(lock_);
        for (std::size_t length = 2; length <= text.size(); ++length) {
            const CharacterConverter::Decoded decoded = converter_->Decode(text.substr(0, length), wide);
            if (decoded == CharacterConverter::Decoded::kCharacter) return length;
            if (decoded == CharacterConverter::Decoded::kMalformed) break;
        }
        wide += static_cast<char16_t>(kReplacementCharacter);
        return 1;
    }

    // The bytes of a character as one number, the first byte highest; 0 for what the page does not hold.
    uint32_t Encode(char32_t character) const MARBEX_REQUIRES(lock_)
    {
        char room[kLongestCharacter];
        const std::string_view bytes(room, converter_->Encode(character, room));
        if (bytes.empty() || !IsOf(character, bytes)) return 0;
        uint32_t packed = 0;
        for (const char byte : bytes)
            packed = packed << 8 | static_cast<unsigned char>(byte);
        return packed;
    }

    // Systems put similar characters for some that a page does not hold: a backslash for a yen sign in 932.
    bool IsOf(char32_t character, std::string_view bytes) const MARBEX_REQUIRES(lock_)
    {
        if (bytes.size() == 1) return single_[static_cast<unsigned char>(bytes.front())] == character;
        std::u16string back;
        std::u16string wanted;
        AppendUtf16(wanted, character);
        return converter_->Decode(bytes, back) == CharacterConverter::Decoded::kCharacter && back == wanted;
    }

    static bool Unpack(uint32_t packed, char32_t character, std::string& bytes)
    {
        if (packed == 0 && character != 0) return false;
        for (int shift = 24; shift >= 0; shift -= 8) {
            if (shift == 0 || packed >> shift != 0) bytes += static_cast<char>(packed >> shift & 0xFF);
        }
        return true;
    }

    // Asking the system for one character costs ten times a look into a table; a plane of them is made in some
    // milliseconds.
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
    const std::unique_ptr<CharacterConverter> converter_ MARBEX_PT_GUARDED_BY(lock_);
    mutable std::once_flag planeMade_;
    mutable std::vector<uint32_t> plane_;  // written under planeMade_ only
};

}  // namespace

std::unique_ptr<CodePage> MakeMultiBytePage(std::unique_ptr<CharacterConverter> converter,
                                            const char16_t (&single)[256])
{
    return std::make_unique<MultiBytePage>(std::move(converter), single);
}

}  // namespace marbex::platform
