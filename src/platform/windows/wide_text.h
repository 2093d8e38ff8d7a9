#pragma once

// Between the UTF-8 of this layer and the UTF-16 of the Win32 functions whose names end in W.

#include <string>
#include <string_view>

#include "platform/text.h"

namespace marbex::platform {

inline std::wstring WideFromUtf8(std::string_view text)
{
    const std::u16string wide = Utf16FromUtf8(text);
    return {wide.begin(), wide.end()};
}

inline std::string Utf8FromWide(std::wstring_view text)
{
    return Utf8FromUtf16(std::u16string(text.begin(), text.end()));
}

}  // namespace marbex::platform
