// The interactive console as a person at the screen has it: keys go in, the screen is read.

#include <gtest/gtest.h>
#include <windows.h>

#include <chrono>
#include <functional>

#include "platform/windows/wide_text.h"
#include "tools/windows/child.h"

namespace marbex::tools {
namespace {

// The console of another program: this one has none of its own meanwhile.
class Screen {
public:
    explicit Screen(DWORD program)
    {
        FreeConsole();
        // The console is there a moment after the program.
        isThere_ = Await([program] { return AttachConsole(program) != 0; });
        if (!isThere_) return;
        constexpr DWORD kAccess = GENERIC_READ | GENERIC_WRITE;
        constexpr DWORD kShare = FILE_SHARE_READ | FILE_SHARE_WRITE;
        input_ = CreateFileW(L"CONIN$", kAccess, kShare, nullptr, OPEN_EXISTING, 0, nullptr);
        output_ = CreateFileW(L"CONOUT$", kAccess, kShare, nullptr, OPEN_EXISTING, 0, nullptr);
    }
    ~Screen()
    {
        CloseHandle(input_);
        CloseHandle(output_);
        FreeConsole();
    }
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    bool IsThere() const { return isThere_; }

    void Type(std::wstring_view text)
    {
        for (const wchar_t c : text)
            Press(0, c);
    }
    void Press(WORD key, wchar_t character = 0)
    {
        INPUT_RECORD record{};
        record.EventType = KEY_EVENT;
        record.Event.KeyEvent.bKeyDown = TRUE;
        record.Event.KeyEvent.wRepeatCount = 1;
        record.Event.KeyEvent.wVirtualKeyCode = key;
        record.Event.KeyEvent.uChar.UnicodeChar = character;
        DWORD written = 0;
        WriteConsoleInputW(input_, &record, 1, &written);
    }

    // The screen has come to show these rows and nothing below them.
    ::testing::AssertionResult Shows(const std::vector<std::string>& rows)
    {
        std::vector<std::string> seen;
        if (Await([&] { return (seen = Rows()) == rows; })) return ::testing::AssertionSuccess();
        ::testing::AssertionResult failure = ::testing::AssertionFailure();
        for (const std::string& row : seen)
            failure << row << "\n";
        return failure;
    }

private:
    static bool Await(const std::function<bool()>& condition)
    {
        using Clock = std::chrono::steady_clock;
        const auto end = Clock::now() + std::chrono::seconds(20);
        while (!condition()) {
            if (Clock::now() > end) return false;
            Sleep(10);  // nothing tells when a screen changes
        }
        return true;
    }

    std::vector<std::string> Rows() const
    {
        CONSOLE_SCREEN_BUFFER_INFO info{};
        GetConsoleScreenBufferInfo(output_, &info);
        std::vector<std::string> rows;
        for (SHORT y = 0; y <= info.dwCursorPosition.Y; ++y) {
            std::wstring row(static_cast<std::size_t>(info.dwSize.X), L' ');
            DWORD got = 0;
            ReadConsoleOutputCharacterW(output_, row.data(), static_cast<DWORD>(row.size()), {0, y}, &got);
            row.erase(row.find_last_not_of(L' ') + 1);
            rows.push_back(platform::Utf8FromWide(row));
        }
        return rows;
    }

    bool isThere_ = false;
    HANDLE input_ = INVALID_HANDLE_VALUE;
    HANDLE output_ = INVALID_HANDLE_VALUE;
};

TEST(Terminal, EditsCompletesRemembersAndShowsEventsBetween)
{
    Child console(MARBEX_PROGRAM_FILE, {"console", "--server", FAKE_SERVER_PATH}, Child::Streams::kOwnConsole);
    Screen screen(console.Id());
    if (!screen.IsThere()) GTEST_SKIP() << "no console can be made here";
    ASSERT_TRUE(screen.Shows({"opos>"}));

    screen.Type(L"posprinter.opens\t(\"a\", \"\x00E9\x20AC\")");
    ASSERT_TRUE(screen.Shows({"opos> posprinter.OpenService(\"a\", \"\xC3\xA9\xE2\x82\xAC\")"}));
    screen.Type(L"\r");
    ASSERT_TRUE(screen.Shows({"opos> posprinter.OpenService(\"a\", \"\xC3\xA9\xE2\x82\xAC\")", "= 0", "opos>"}));

    screen.Type(L"cashdrawer.Op\t");
    ASSERT_TRUE(screen.Shows(
        {"opos> posprinter.OpenService(\"a\", \"\xC3\xA9\xE2\x82\xAC\")", "= 0", "opos> cashdrawer.Open"}));
    screen.Type(L"\t");
    const std::vector<std::string> listed{"opos> posprinter.OpenService(\"a\", \"\xC3\xA9\xE2\x82\xAC\")", "= 0",
                                          "opos> cashdrawer.Open", "OpenDrawer()  OpenService("};
    std::vector<std::string> rows = listed;
    rows.push_back("opos> cashdrawer.Open");
    ASSERT_TRUE(screen.Shows(rows));

    // The line before, changed in its middle.
    screen.Type(L"\x1B");
    screen.Press(VK_UP);
    screen.Press(VK_LEFT);
    screen.Type(L"\b\bX\"");
    rows.back() = "opos> posprinter.OpenService(\"a\", \"\xC3\xA9X\")";
    ASSERT_TRUE(screen.Shows(rows));
    screen.Type(
        L"\x1B"
        L"POSPrinter.PrintNormal(11, \"a\")\r");
    rows.back() = "opos> POSPrinter.PrintNormal(11, \"a\")";
    rows.insert(rows.end(), {"= 0", "! StatusUpdateEvent POSPrinter 11 (PTR_SUE_COVER_OPEN)", "opos>"});
    ASSERT_TRUE(screen.Shows(rows)) << "the event comes while the prompt waits";

    screen.Type(L"\x1A");
    EXPECT_EQ(console.Finish().status, 0U);
}

}  // namespace
}  // namespace marbex::tools
