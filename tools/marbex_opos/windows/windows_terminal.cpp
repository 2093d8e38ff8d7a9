// The line is edited here and not by the console, whose own editor cannot be interrupted: an event that is printed
// while a person types takes the place of the prompt, and the line is drawn again below it.

#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "marbex_opos/console/completion.h"
#include "marbex_opos/console/line_source.h"
#include "marbex_opos/process_settings.h"
#include "marbex_opos/windows/line_editor.h"
#include "platform/window.h"
#include "platform/windows/wide_text.h"

namespace marbex::tools {

namespace {

constexpr std::wstring_view kPrompt = L"opos> ";

// Keys by the control characters that they give.
constexpr wchar_t kCtrlA = 0x01;
constexpr wchar_t kCtrlD = 0x04;
constexpr wchar_t kCtrlE = 0x05;
constexpr wchar_t kCtrlK = 0x0B;
constexpr wchar_t kCtrlW = 0x17;
constexpr wchar_t kCtrlZ = 0x1A;
constexpr wchar_t kEscape = 0x1B;
constexpr wchar_t kCtrlBackspace = 0x7F;

std::filesystem::path PathOf(const std::string& utf8)
{
    return platform::WideFromUtf8(utf8);
}

std::vector<std::u16string> LoadHistory(const std::string& file)
{
    std::vector<std::u16string> lines;
    std::ifstream stream(PathOf(file), std::ios::binary);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(platform::Utf16FromUtf8(line));
    return lines;
}

void SaveHistory(const std::string& file, const std::vector<std::u16string>& lines)
{
    std::ofstream stream(PathOf(file), std::ios::binary);
    for (const std::u16string& line : lines)
        stream << platform::Utf8FromUtf16(line) << '\n';
}

// The row of the screen that the prompt stands on.
class PromptRow {
public:
    PromptRow()
        : screen_(CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                              OPEN_EXISTING, 0, nullptr))
    {
    }
    ~PromptRow() { CloseHandle(screen_); }
    PromptRow(const PromptRow&) = delete;
    PromptRow& operator=(const PromptRow&) = delete;

    // Shows as much of the line as the row takes, the cursor always.
    void Draw(const LineEditor& line)
    {
        const std::u16string_view text = line.Text();
        const std::size_t room = Room();
        first_ = std::min(first_, line.Cursor());
        while (Columns(text, first_, line.Cursor()) > room)
            ++first_;
        std::size_t last = line.Cursor();
        while (last < text.size() && Columns(text, first_, last + 1) <= room)
            ++last;

        MoveTo(0);
        Write(kPrompt);
        WriteUnits(text.substr(first_, line.Cursor() - first_));
        const SHORT column = Column();
        WriteUnits(text.substr(line.Cursor(), last - line.Cursor()));
        BlankToEnd();
        MoveTo(column);
    }

    // Leaves an empty row with the cursor at its start.
    void Erase()
    {
        MoveTo(0);
        BlankToEnd();
    }

    // Leaves the whole line on the screen and goes to the row below.
    void Finish(const LineEditor& line)
    {
        Erase();
        Write(kPrompt);
        WriteUnits(line.Text());
        Write(L"\r\n");
        first_ = 0;
    }

    std::size_t Width() const { return static_cast<std::size_t>(Screen().dwSize.X); }

    void Write(std::wstring_view text)
    {
        DWORD written = 0;
        WriteConsoleW(screen_, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
    }

private:
    void WriteUnits(std::u16string_view text) { Write(std::wstring(text.begin(), text.end())); }

    // At most this many columns: what the console's font makes narrower only leaves room.
    static std::size_t Columns(std::u16string_view text, std::size_t from, std::size_t to)
    {
        std::size_t columns = 0;
        for (std::size_t at = from; at < to; ++at)
            columns += text[at] < 0x1100 ? 1 : 2;
        return columns;
    }

    CONSOLE_SCREEN_BUFFER_INFO Screen() const
    {
        CONSOLE_SCREEN_BUFFER_INFO info{};
        info.dwSize.X = 80;  // when the console does not say
        GetConsoleScreenBufferInfo(screen_, &info);
        return info;
    }
    // One column stays free, for a cursor behind the last character.
    std::size_t Room() const
    {
        const auto width = static_cast<std::size_t>(Screen().dwSize.X);
        return std::max(width, kPrompt.size() + 5) - kPrompt.size() - 1;
    }
    SHORT Column() const { return Screen().dwCursorPosition.X; }
    void MoveTo(SHORT column) { SetConsoleCursorPosition(screen_, {column, Screen().dwCursorPosition.Y}); }
    void BlankToEnd()
    {
        const CONSOLE_SCREEN_BUFFER_INFO info = Screen();
        const auto count = static_cast<DWORD>(info.dwSize.X - info.dwCursorPosition.X);
        DWORD written = 0;
        FillConsoleOutputCharacterW(screen_, L' ', count, info.dwCursorPosition, &written);
    }

    HANDLE screen_;
    std::size_t first_ = 0;  // unit of the line that stands behind the prompt
};

class WindowsTerminal final : public LineSource {
public:
    WindowsTerminal() : historyFile_(HistoryFile()), editor_(LoadHistory(historyFile_)) {}
    ~WindowsTerminal() override
    {
        if (!historyFile_.empty()) SaveHistory(historyFile_, editor_.History());
    }
    WindowsTerminal(const WindowsTerminal&) = delete;
    WindowsTerminal& operator=(const WindowsTerminal&) = delete;

    std::optional<std::string> NextLine() override
    {
        state_ = State::kEditing;
        row_.Draw(editor_);
        while (state_ == State::kEditing && WaitForKey())
            ReadKeys();
        row_.Finish(editor_);
        if (state_ != State::kComplete) return std::nullopt;
        state_ = State::kIdle;
        return platform::Utf8FromUtf16(editor_.Take());
    }

    void BeforeOutput() override
    {
        if (state_ == State::kEditing) row_.Erase();
    }
    void AfterOutput() override
    {
        if (state_ == State::kEditing) row_.Draw(editor_);
    }

private:
    enum class State { kIdle, kEditing, kComplete, kEnded };

    bool WaitForKey()
    {
        while (true) {
            const DWORD woken = MsgWaitForMultipleObjectsEx(1, &input_, INFINITE, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
            if (woken == WAIT_OBJECT_0) return true;
            if (woken != WAIT_OBJECT_0 + 1) return false;
            platform::RunWaitingMessages();
        }
    }

    // One record at a time: what follows the line's end is typed ahead for the next.
    void ReadKeys()
    {
        INPUT_RECORD record{};
        DWORD count = 0;
        if (!ReadConsoleInputW(input_, &record, 1, &count)) {
            state_ = State::kEnded;
            return;
        }
        if (count == 0 || record.EventType != KEY_EVENT) return;
        const KEY_EVENT_RECORD& key = record.Event.KeyEvent;
        const wchar_t character = key.uChar.UnicodeChar;
        // A character that was composed from its number comes when Alt is let go.
        const bool isComposed = !key.bKeyDown && key.wVirtualKeyCode == VK_MENU && character != 0;
        if (!key.bKeyDown && !isComposed) return;
        for (WORD press = 0; press < key.wRepeatCount && state_ == State::kEditing; ++press) {
            if (character != 0) {
                OnCharacter(character);
            } else {
                OnKey(key.wVirtualKeyCode, (key.dwControlKeyState & (LEFT_CTRL_PRESSED | RIGHT_CTRL_PRESSED)) != 0);
            }
        }
        if (state_ == State::kEditing) row_.Draw(editor_);
    }

    void OnCharacter(wchar_t character)
    {
        switch (character) {
            case L'\r':
            case L'\n':
                state_ = State::kComplete;
                break;
            case L'\t':
                OnTab();
                break;
            case L'\b':
                editor_.EraseBefore();
                break;
            case kEscape:
                editor_.Clear();
                break;
            case kCtrlA:
                editor_.ToStart();
                break;
            case kCtrlE:
                editor_.ToEnd();
                break;
            case kCtrlK:
                editor_.EraseToEnd();
                break;
            case kCtrlW:
            case kCtrlBackspace:
                editor_.EraseWordBefore();
                break;
            case kCtrlD:
            case kCtrlZ:
                if (editor_.Text().empty()) state_ = State::kEnded;
                break;
            default:
                if (character >= L' ') editor_.Insert(std::u16string(1, static_cast<char16_t>(character)));
        }
    }

    void OnKey(WORD key, bool isWithControl)
    {
        switch (key) {
            case VK_LEFT:
                isWithControl ? editor_.WordLeft() : editor_.Left();
                break;
            case VK_RIGHT:
                isWithControl ? editor_.WordRight() : editor_.Right();
                break;
            case VK_HOME:
                editor_.ToStart();
                break;
            case VK_END:
                editor_.ToEnd();
                break;
            case VK_UP:
                editor_.Earlier();
                break;
            case VK_DOWN:
                editor_.Later();
                break;
            case VK_DELETE:
                editor_.EraseAt();
                break;
            default:
                break;
        }
    }

    void OnTab()
    {
        const Completions completions = Complete(platform::Utf8FromUtf16(editor_.BeforeCursor()));
        if (completions.candidates.empty()) {
            row_.Write(L"\a");
        } else if (const std::optional<std::string> replacement = completions.Replacement()) {
            editor_.ReplaceBeforeCursor(platform::Utf16FromUtf8(completions.typed).size(),
                                        platform::Utf16FromUtf8(*replacement));
        } else {
            row_.Finish(editor_);
            std::istringstream lines(InColumns(completions.candidates, row_.Width() - 1));
            for (std::string line; std::getline(lines, line);)
                row_.Write(platform::WideFromUtf8(line) + L"\r\n");
        }
    }

    HANDLE input_ = GetStdHandle(STD_INPUT_HANDLE);
    std::string historyFile_;
    LineEditor editor_;
    PromptRow row_;
    State state_ = State::kIdle;
};

}  // namespace

std::unique_ptr<LineSource> OpenTerminal(const MessageHooks&)
{
    return std::make_unique<WindowsTerminal>();
}

}  // namespace marbex::tools
