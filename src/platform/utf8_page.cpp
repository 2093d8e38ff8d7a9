#include "platform/code_page.h"
#include "platform/unicode.h"

namespace marbex::platform {

namespace {

class Utf8Page : public CodePage {
public:
    void Widen(std::string_view text, std::u16string& wide) const override
    {
        while (!text.empty()) {
            const Utf8Character character = DecodeUtf8(text);
            AppendUtf16(wide, character.value);
            text.remove_prefix(character.length);
        }
    }

    bool Append(char32_t character, std::string& bytes) const override
    {
        AppendUtf8(bytes, character);
        return true;
    }

    int UndefinedByteOf(char16_t) const override { return -1; }
};

}  // namespace

std::unique_ptr<CodePage> MakeUtf8Page()
{
    return std::make_unique<Utf8Page>();
}

}  // namespace marbex::platform
