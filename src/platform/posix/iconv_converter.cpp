#include "platform/posix/iconv_converter.h"

#include "platform/posix/iconv_handle.h"

namespace marbex::platform {

namespace {

class IconvConverter final : public CharacterConverter {
public:
    explicit IconvConverter(const char* name) : toUtf16_("UTF-16LE", name), fromUtf32_(name, "UTF-32LE") {}

    Decoded Decode(std::string_view bytes, std::u16string& wide) override
    {
        char16_t room[4];
        std::size_t used = 0;
        const int error = toUtf16_.Convert(bytes.data(), bytes.size(), room, sizeof room, used);
        if (error == EINVAL) return Decoded::kIncomplete;
        if (error != 0 || used == 0) return Decoded::kMalformed;
        wide.append(room, used / sizeof(char16_t));
        return Decoded::kCharacter;
    }

    std::size_t Encode(char32_t character, char (&room)[kLongestCharacter]) override
    {
        std::size_t used = 0;
        return fromUtf32_.Convert(&character, sizeof character, room, sizeof room, used) == 0 ? used : 0;
    }

private:
    IconvHandle toUtf16_;
    IconvHandle fromUtf32_;
};

}  // namespace

std::unique_ptr<CharacterConverter> MakeIconvConverter(const char* iconvName)
{
    return std::make_unique<IconvConverter>(iconvName);
}

}  // namespace marbex::platform
