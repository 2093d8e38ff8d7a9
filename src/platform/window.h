#pragma once

// A hidden window: a message queue bound to the thread that created it. Post may be called from any thread; the
// procedure runs only on the window's own thread, while that thread runs its messages.

#include <cstdint>
#include <functional>
#include <memory>

namespace marbex::platform {

// Window messages of the application's own: WM_APP is 0x8000, as on Windows.
inline constexpr uint32_t kFirstApplicationMessage = 0x8000;

class WindowProcedure {
public:
    // Called during Window::Create on the calling thread; -1 refuses the window, and then OnDestroy is not called.
    virtual int OnCreate() = 0;
    // Called on the window's thread while the window is destroyed; no message comes after it.
    virtual void OnDestroy() = 0;
    // Every other message. The result goes to whoever sent it; posted messages have no receiver of a result.
    // What it does not know it hands to defaultProcedure and returns its result.
    virtual intptr_t WindowProc(uint32_t message, uintptr_t wParam, intptr_t lParam,
                                const std::function<intptr_t()>& defaultProcedure) = 0;

protected:
    ~WindowProcedure() = default;
};

class Window {
public:
    // Registers the window class if it is not there yet and creates a window that is never shown (WS_POPUP,
    // WS_CLIPSIBLINGS, WS_CLIPCHILDREN, an empty rectangle, no parent). Null when it cannot be made or OnCreate
    // refuses. The procedure must live until OnDestroy has returned.
    static std::unique_ptr<Window> Create(const char* className, const char* title, WindowProcedure& procedure);

    // Destroys the window; messages not run yet are lost. On its own thread at once; elsewhere the destruction is
    // posted behind them and this returns before it has happened (when that thread has ended: at once, on the calling
    // thread).
    virtual ~Window() = default;

    virtual bool BelongsToCallingThread() const = 0;

    // False when the window is gone, its thread has ended or its queue is full (10000 messages). Any thread.
    virtual bool Post(uint32_t message, uintptr_t wParam, intptr_t lParam) = 0;

    // Takes back every posted message numbered first to last that has not been run yet, oldest first, and hands its
    // wParam to taken. A message that is being run is not among them. On the window's thread; once that has ended, on
    // any; elsewhere it takes nothing.
    virtual void Withdraw(uint32_t first, uint32_t last, const std::function<void(uintptr_t wParam)>& taken) = 0;
};

// Runs the messages that wait for the calling thread when it is called; returns how many were run. A quit message found
// on the way is put back for the application's own loop.
uint32_t RunWaitingMessages();

// Runs the oldest message that waits for the calling thread; false when there is none. A quit message as above.
bool RunOneMessage();

}  // namespace marbex::platform
