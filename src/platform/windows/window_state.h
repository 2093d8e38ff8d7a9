#pragma once

// What stands behind a window, and who may touch it when.
//
// The native window belongs to the thread that created it: only that thread can destroy it, run its messages or take
// them back. The system is harsh with what is left when a thread ends: it destroys the windows without a word and drops
// their messages. So every posted message is also kept here until it is run, to be withdrawn after the end of the
// thread; and the state knows whether the procedure has been told of the destruction, which happens exactly once:
//
// - on its own thread, while the native window is destroyed (whoever destroys it);
// - when another thread gives the window up, by a message posted behind all others. Should the queue be full, a timer
//   does it, which the system looks at when nothing else waits. Should the thread end without running messages again,
//   its end does it;
// - when the thread has ended, on the thread that gives the window up. Its end and the giving up meet under the lock of
//   the state: one of them sees the other.
//
// The lock is an innermost one. The procedure is always called without it, and so are all functions of the system that
// may run window procedures. Posting is not one of them: a message and its copy are entered in one step.

#include <windows.h>

#include <deque>
#include <memory>
#include <optional>
#include <vector>

#include "platform/lock.h"
#include "platform/window.h"
#include "platform/windows/unique_handle.h"
#include "platform/windows/window_class.h"

namespace marbex::platform {

struct PostedMessage {
    UINT message = 0;
    WPARAM wParam = 0;
    LPARAM lParam = 0;
    ULONGLONG number = 0;  // counts the messages posted in this process

    bool SameAs(const PostedMessage& other) const
    {
        return message == other.message && wParam == other.wParam && lParam == other.lParam;
    }
};

struct WindowState : std::enable_shared_from_this<WindowState> {
    WindowState(const char* className, WNDPROC nativeProcedure);

    bool BelongsToCallingThread() const { return GetCurrentThreadId() == threadId; }
    bool ThreadHasEnded() const MARBEX_REQUIRES(lock)
    {
        return threadEnded || WaitForSingleObject(thread.Get(), 0) == WAIT_OBJECT_0;
    }

    const DWORD threadId = GetCurrentThreadId();
    const UniqueHandle thread;  // while it is open the number is not given to another thread

    // Touched by the window's thread only; the handle is read by others, and is theirs once Create has returned.
    HWND handle = nullptr;
    bool nativeIsGone = false;
    std::optional<WindowClassUse> classUse;

    Lock lock;
    WindowProcedure* procedure MARBEX_GUARDED_BY(lock) = nullptr;  // from the end of OnCreate to the start of OnDestroy
    bool closing MARBEX_GUARDED_BY(lock) = false;                  // takes no more messages
    bool threadEnded MARBEX_GUARDED_BY(lock) = false;
    std::deque<PostedMessage> posted MARBEX_GUARDED_BY(lock);  // and not run yet
    // Taken back when somebody had already fetched them from the queue to run them.
    std::vector<PostedMessage> withdrawn MARBEX_GUARDED_BY(lock);
};

// Calls OnDestroy unless that has been done, and forgets the messages.
void TellDestroyed(WindowState& window) MARBEX_EXCLUDES(window.lock);

// On the window's thread: keeps it until the native window is gone or the thread ends, which destroys it if its
// destruction was asked for. False when the system has no room to keep it.
bool JoinThread(const std::shared_ptr<WindowState>& window);

// On the window's thread: destroys the native window, if it is still there, and tells the procedure.
void DestroyHere(const std::shared_ptr<WindowState>& window);

// On the window's thread, from within the destruction of the native window.
void NativeWindowIsGone(WindowState& window);

// The window of the calling thread with that handle; null when there is none.
std::shared_ptr<WindowState> OwnWindow(HWND handle);

// What the end of the calling thread means for its windows. Run by a Thread at its end, and by every other thread as it
// exits.
void EndThreadWindows();

// The next number for a posted message, and the number given out last.
ULONGLONG NextMessageNumber();
ULONGLONG LastMessageNumber();

// The window procedure of every window of ours; the last parameter of CreateWindowEx is a WindowCreation.
struct WindowCreation {
    const std::shared_ptr<WindowState>& window;
    WindowProcedure& procedure;
};
LRESULT CALLBACK HiddenWindowProcedure(HWND handle, UINT message, WPARAM wParam, LPARAM lParam);

// Messages of the class's own, heeded only by a window that is closing.
inline constexpr UINT kDestroyMessage = WM_USER + 0x0D57;             // behind the messages posted before it
inline constexpr UINT kDestroyWhenIdleMessage = kDestroyMessage + 1;  // sent, when nothing can be posted

}  // namespace marbex::platform
