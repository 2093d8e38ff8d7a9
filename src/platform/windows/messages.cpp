// Running messages.
//
// Every message is fetched and dispatched by the functions of its window's kind, so that characters typed into the
// application's Unicode windows arrive whole.

#include "platform/windows/messages.h"

#include <optional>

#include "platform/window.h"
#include "platform/windows/window_state.h"

namespace marbex::platform {
namespace {

// No queue holds more, so that not even messages that beget messages are run without end.
constexpr uint32_t kMaximumRun = 10000;

// Takes quit messages out of the queue until another one is found, which stays there.
std::optional<MSG> NextMessage(QuitAside& quit)
{
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE)) {
        if (message.message != WM_QUIT) return message;
        if (!PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE)) break;
        quit.Keep(message.wParam);
    }
    return std::nullopt;
}

// Runs the first message, of the kind of the one that was looked at. False when it was a quit message.
bool RunFirst(const MSG& looked, QuitAside& quit)
{
    const bool unicode = looked.hwnd != nullptr && IsWindowUnicode(looked.hwnd);
    MSG message;
    if (!(unicode ? PeekMessageW : PeekMessageA)(&message, nullptr, 0, 0, PM_REMOVE)) return false;
    if (message.message == WM_QUIT) {
        quit.Keep(message.wParam);
        return false;
    }
    quit.PutBack();  // what runs now may have a loop of its own
    TranslateMessage(&message);
    (unicode ? DispatchMessageW : DispatchMessageA)(&message);
    return true;
}

// Whether a message came to the queue after a moment, as far as can be told.
bool IsNewer(const MSG& message, DWORD tick, ULONGLONG number)
{
    if (const auto window = OwnWindow(message.hwnd)) {
        const LockHold hold(window->lock);
        for (const PostedMessage& posted : window->posted) {
            if (posted.SameAs({message.message, message.wParam, message.lParam, 0})) return posted.number > number;
        }
    }
    return static_cast<LONG>(message.time - tick) > 0;
}

}  // namespace

bool MessageWaits(QuitAside& quit)
{
    return NextMessage(quit).has_value();
}

bool RunOneMessage()
{
    QuitAside quit;
    while (const std::optional<MSG> message = NextMessage(quit))
        if (RunFirst(*message, quit)) return true;
    return false;
}

uint32_t RunWaitingMessages()
{
    const DWORD start = GetTickCount();
    const ULONGLONG number = LastMessageNumber();
    QuitAside quit;
    uint32_t run = 0;
    while (run < kMaximumRun) {
        const std::optional<MSG> message = NextMessage(quit);
        if (!message || IsNewer(*message, start, number)) break;
        if (RunFirst(*message, quit)) ++run;
    }
    return run;
}

}  // namespace marbex::platform
