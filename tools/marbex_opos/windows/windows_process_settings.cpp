#include <windows.h>
// After windows.h.
#include <shellapi.h>

#include <filesystem>

#include "marbex_opos/process_settings.h"
#include "platform/windows/wide_text.h"

namespace marbex::tools {

namespace {

bool IsConsole(DWORD stream)
{
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(stream), &mode) != 0;
}

}  // namespace

// The words that main receives are in the ANSI code page, which does not hold every file name.
std::vector<std::string> CommandLineWords(int argc, char** argv)
{
    int count = 0;
    wchar_t** wide = CommandLineToArgvW(GetCommandLineW(), &count);
    if (wide == nullptr) return {argv, argv + argc};
    std::vector<std::string> words;
    words.reserve(static_cast<std::size_t>(count));
    for (int at = 0; at < count; ++at)
        words.push_back(platform::Utf8FromWide(wide[at]));
    LocalFree(wide);
    return words;
}

bool UseRegistryFile(const std::string&)
{
    return false;
}

std::string ToType(std::string command)
{
    return command;
}

std::string RegistryPlace()
{
    return "the registry";
}

std::string MissingRegistry()
{
    return {};
}

std::string_view RegistryAdvice()
{
    return "run it as administrator";
}

std::string RegistryReadAdvice()
{
    return "run it as administrator";
}

bool InputIsTerminal()
{
    return IsConsole(STD_INPUT_HANDLE);
}

bool OutputIsTerminal()
{
    return IsConsole(STD_OUTPUT_HANDLE);
}

// Windows 10 and later, once they are told to.
bool OutputTakesColours()
{
    constexpr DWORD kVirtualTerminal = 0x0004;  // ENABLE_VIRTUAL_TERMINAL_PROCESSING
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    const wchar_t* refused = _wgetenv(L"NO_COLOR");
    DWORD mode = 0;
    return (refused == nullptr || *refused == L'\0') && GetConsoleMode(output, &mode) != FALSE &&
           SetConsoleMode(output, mode | kVirtualTerminal) != FALSE;
}

std::string HistoryFile()
{
    const wchar_t* home = _wgetenv(L"LOCALAPPDATA");
    if (home == nullptr || *home == L'\0') return {};
    const std::filesystem::path folder = std::filesystem::path(home) / L"Marbex OPOS";
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    return error ? std::string() : platform::Utf8FromWide((folder / L"history.txt").native());
}

}  // namespace marbex::tools
