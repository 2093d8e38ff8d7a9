#include <windows.h>

#include <algorithm>

#include "marbex_opos/output.h"
#include "platform/windows/wide_text.h"

namespace marbex::tools {

namespace {

constexpr std::size_t kConsoleWrite = 8000;  // units; older consoles refuse more than 64 KB at once

// A console shows UTF-16 whatever its code page is.
void WriteToConsole(HANDLE console, std::wstring_view text)
{
    while (!text.empty()) {
        std::size_t count = std::min(text.size(), kConsoleWrite);
        const bool splitsPair = count < text.size() && IS_HIGH_SURROGATE(text[count - 1]);
        if (splitsPair) --count;
        DWORD written = 0;
        if (!WriteConsoleW(console, text.data(), static_cast<DWORD>(count), &written, nullptr) || written == 0) return;
        text.remove_prefix(written);
    }
}

// Past the C library, whose text mode would change the line ends.
void Write(DWORD stream, std::string_view text)
{
    const HANDLE handle = GetStdHandle(stream);
    DWORD mode = 0;
    if (GetConsoleMode(handle, &mode)) {
        WriteToConsole(handle, platform::WideFromUtf8(text));
        return;
    }
    while (!text.empty()) {
        constexpr std::size_t kFileWrite = 1 << 20;
        DWORD written = 0;
        const auto count = static_cast<DWORD>(std::min(text.size(), kFileWrite));
        if (!WriteFile(handle, text.data(), count, &written, nullptr) || written == 0) return;
        text.remove_prefix(written);
    }
}

}  // namespace

void Print(std::string_view text)
{
    Write(STD_OUTPUT_HANDLE, text);
}

void PrintError(std::string_view text)
{
    Write(STD_ERROR_HANDLE, text);
}

}  // namespace marbex::tools
