// The native window procedure: what the system tells a window, and what of it goes to a WindowProcedure.

#include <algorithm>

#include "platform/windows/window_state.h"

namespace marbex::platform {
namespace {

constexpr UINT_PTR kIdleTimer = 1;

LRESULT DefaultProcedure(HWND handle, UINT message, WPARAM wParam, LPARAM lParam)
{
    // A window that nobody sees is nobody's to close: no event would ever be delivered again.
    if (message == WM_CLOSE) return 0;
    return DefWindowProcA(handle, message, wParam, lParam);
}

LRESULT Created(const WindowCreation& creation)
{
    if (creation.procedure.OnCreate() == -1) return -1;
    const LockHold hold(creation.window->lock);
    creation.window->procedure = &creation.procedure;
    return 0;
}

// Takes the first message like this one from a list; false when there is none.
template <typename List>
bool TakeFrom(List& list, const PostedMessage& message)
{
    const auto found =
        std::find_if(list.begin(), list.end(), [&](const PostedMessage& entry) { return entry.SameAs(message); });
    if (found == list.end()) return false;
    list.erase(found);
    return true;
}

LRESULT Deliver(WindowState& window, HWND handle, const PostedMessage& message)
{
    WindowProcedure* procedure = nullptr;
    {
        const LockHold hold(window.lock);
        if (!TakeFrom(window.posted, message) && TakeFrom(window.withdrawn, message)) return 0;
        if (!window.threadEnded) procedure = window.procedure;
    }
    const auto byDefault = [&]() -> intptr_t {
        return DefaultProcedure(handle, message.message, message.wParam, message.lParam);
    };
    if (procedure == nullptr) return byDefault();
    return procedure->WindowProc(message.message, message.wParam, message.lParam, byDefault);
}

// A step towards the destruction that another thread asked for; false when the message is none.
bool StepToDestruction(const std::shared_ptr<WindowState>& window, UINT message, WPARAM wParam)
{
    const bool asksForTimer = message == kDestroyWhenIdleMessage;
    if (!asksForTimer && message != kDestroyMessage && !(message == WM_TIMER && wParam == kIdleTimer)) return false;
    {
        const LockHold hold(window->lock);
        if (!window->closing) return false;
    }
    if (asksForTimer) {
        SetTimer(window->handle, kIdleTimer, USER_TIMER_MINIMUM, nullptr);
    } else {
        DestroyHere(window);
    }
    return true;
}

LRESULT Handle(const std::shared_ptr<WindowState>& window, HWND handle, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
        case WM_NCCREATE:
            break;
        case WM_CREATE:
            return Created(
                *static_cast<const WindowCreation*>(reinterpret_cast<CREATESTRUCTA*>(lParam)->lpCreateParams));
        case WM_DESTROY:
            TellDestroyed(*window);
            break;
        case WM_NCDESTROY:
            SetWindowLongPtrA(handle, GWLP_USERDATA, 0);
            NativeWindowIsGone(*window);
            break;
        default:
            if (StepToDestruction(window, message, wParam)) return 0;
            return Deliver(*window, handle, {message, wParam, lParam, 0});
    }
    return DefWindowProcA(handle, message, wParam, lParam);
}

}  // namespace

// The system calls it across frames that no exception may cross.
LRESULT CALLBACK HiddenWindowProcedure(HWND handle, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_NCCREATE) {
        const auto* creation =
            static_cast<const WindowCreation*>(reinterpret_cast<CREATESTRUCTA*>(lParam)->lpCreateParams);
        SetWindowLongPtrA(handle, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(creation->window.get()));
    }
    auto* const raw = reinterpret_cast<WindowState*>(GetWindowLongPtrA(handle, GWLP_USERDATA));
    if (raw == nullptr) return DefWindowProcA(handle, message, wParam, lParam);
    try {
        return Handle(raw->shared_from_this(), handle, message, wParam, lParam);
    } catch (...) {
        return message == WM_CREATE ? -1 : 0;
    }
}

}  // namespace marbex::platform
