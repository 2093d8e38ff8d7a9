#include "platform/windows/window_state.h"

#include <atomic>
#include <utility>

#include "platform/windows/per_thread.h"

namespace marbex::platform {
namespace {

using WindowList = std::vector<std::shared_ptr<WindowState>>;

void EndWindows(WindowList& list);

struct ThreadWindows {
    ~ThreadWindows() { EndWindows(list); }
    WindowList list;
};

PerThread<ThreadWindows>& OwnWindows()
{
    static PerThread<ThreadWindows> windows;
    return windows;
}

HANDLE HandleOfCallingThread()
{
    HANDLE handle = nullptr;
    DuplicateHandle(GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(), &handle, SYNCHRONIZE, FALSE, 0);
    return handle;
}

void DestroyNative(WindowState& window)
{
    if (!window.nativeIsGone) {
        // A thread that exits may find its windows destroyed already.
        if (DestroyWindow(window.handle) == FALSE) NativeWindowIsGone(window);
    }
    window.classUse.reset();
}

void EndWindows(WindowList& list)
{
    const WindowList windows = std::exchange(list, {});
    for (const auto& window : windows) {
        bool closing = false;
        {
            const LockHold hold(window->lock);
            window->threadEnded = true;
            closing = window->closing;
        }
        // From here on a window that was not asked to go belongs to whoever has it; the native one goes with the
        // thread and tells nobody.
        if (!window->nativeIsGone) SetWindowLongPtrA(window->handle, GWLP_USERDATA, 0);
        DestroyNative(*window);
        if (closing) TellDestroyed(*window);
    }
}

std::atomic<ULONGLONG> messageNumber{0};

}  // namespace

WindowState::WindowState(const char* className, WNDPROC nativeProcedure)
    : thread(HandleOfCallingThread()), classUse(std::in_place, className, nativeProcedure)
{
}

void TellDestroyed(WindowState& window)
{
    WindowProcedure* procedure = nullptr;
    {
        const LockHold hold(window.lock);
        procedure = std::exchange(window.procedure, nullptr);
        window.posted.clear();
        window.withdrawn.clear();
    }
    if (procedure == nullptr) return;
    try {
        procedure->OnDestroy();
    } catch (...) {
        // The window is gone all the same, and the system knows no exceptions.
    }
}

bool JoinThread(const std::shared_ptr<WindowState>& window)
{
    ThreadWindows* const own = OwnWindows().FindOrMake();
    if (own == nullptr) return false;
    own->list.push_back(window);
    return true;
}

void DestroyHere(const std::shared_ptr<WindowState>& window)
{
    DestroyNative(*window);
    TellDestroyed(*window);
}

void NativeWindowIsGone(WindowState& window)
{
    window.nativeIsGone = true;
    if (ThreadWindows* const own = OwnWindows().Find())
        std::erase_if(own->list, [&](const auto& one) { return one.get() == &window; });
}

std::shared_ptr<WindowState> OwnWindow(HWND handle)
{
    const ThreadWindows* const own = OwnWindows().Find();
    if (own == nullptr || handle == nullptr) return nullptr;
    for (const auto& window : own->list)
        if (window->handle == handle) return window;
    return nullptr;
}

void EndThreadWindows()
{
    if (ThreadWindows* const own = OwnWindows().Find()) EndWindows(own->list);
}

ULONGLONG NextMessageNumber()
{
    return messageNumber.fetch_add(1, std::memory_order_relaxed) + 1;
}

ULONGLONG LastMessageNumber()
{
    return messageNumber.load(std::memory_order_relaxed);
}

}  // namespace marbex::platform
