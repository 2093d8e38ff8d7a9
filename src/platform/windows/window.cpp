#include "platform/window.h"

#include <algorithm>

#include "platform/windows/messages.h"
#include "platform/windows/module.h"
#include "platform/windows/window_state.h"

namespace marbex::platform {
namespace {

// What Windows grants a thread unless it is told otherwise; it bounds the copies kept here, too.
constexpr std::size_t kMaximumMessages = 10000;

// The code must be there when a destruction that was posted arrives, whoever lets go of the library before that.
void KeepThisModule()
{
    static const char anchor = 0;
    HMODULE module = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN, &anchor, &module);
}

// Takes the native messages that were posted to a window of the calling thread out of its queue.
std::vector<PostedMessage> TakeFromQueue(HWND handle, UINT first, UINT last)
{
    // A range from 0 to 0 would mean all messages. Sent ones are left alone: nothing must run here.
    const UINT lowest = std::max(first, 1U);
    std::vector<PostedMessage> taken;
    QuitAside quit;
    MSG found;
    while (PeekMessageA(&found, handle, lowest, last, PM_REMOVE | PM_NOYIELD | PM_QS_POSTMESSAGE)) {
        if (found.message == WM_QUIT) {
            quit.Keep(found.wParam);
        } else {
            taken.push_back({found.message, found.wParam, found.lParam, 0});
        }
    }
    return taken;
}

class HiddenWindow final : public Window {
public:
    explicit HiddenWindow(std::shared_ptr<WindowState> state) : state_(std::move(state)) {}

    ~HiddenWindow() override
    {
        if (state_->BelongsToCallingThread()) {
            {
                const LockHold hold(state_->lock);
                state_->closing = true;
            }
            DestroyHere(state_);
        } else if (!LeaveToItsThread()) {
            TellDestroyed(*state_);
        }
    }

    bool BelongsToCallingThread() const override { return state_->BelongsToCallingThread(); }

    bool Post(uint32_t message, uintptr_t wParam, intptr_t lParam) override
    {
        WindowState& state = *state_;
        const LockHold hold(state.lock);
        if (state.closing || state.procedure == nullptr || state.ThreadHasEnded()) return false;
        if (state.posted.size() >= kMaximumMessages) return false;
        const PostedMessage posted{message, wParam, lParam, NextMessageNumber()};
        state.posted.push_back(posted);
        if (PostMessageA(state.handle, message, wParam, lParam) == FALSE) {
            state.posted.pop_back();
            return false;
        }
        // It may be the twin of one that was taken back, and must not be lost in its place.
        std::erase_if(state.withdrawn, [&](const PostedMessage& entry) { return entry.SameAs(posted); });
        return true;
    }

    void Withdraw(uint32_t first, uint32_t last, const std::function<void(uintptr_t wParam)>& taken) override
    {
        const std::vector<PostedMessage> withdrawn = TakeCopies(first, last);
        if (withdrawn.empty()) return;
        if (state_->BelongsToCallingThread()) TakeNatives(withdrawn, first, last);
        for (const PostedMessage& message : withdrawn)
            taken(message.wParam);
    }

private:
    // Asks the window's thread for the destruction; false when that has ended.
    bool LeaveToItsThread()
    {
        WindowState& state = *state_;
        KeepThisModule();
        {
            const LockHold hold(state.lock);
            state.closing = true;
            if (state.ThreadHasEnded()) return false;
            if (PostMessageA(state.handle, kDestroyMessage, 0, 0) != FALSE) return true;
        }
        SendNotifyMessageA(state.handle, kDestroyWhenIdleMessage, 0, 0);
        return true;
    }

    std::vector<PostedMessage> TakeCopies(UINT first, UINT last)
    {
        WindowState& state = *state_;
        std::vector<PostedMessage> withdrawn;
        const LockHold hold(state.lock);
        if (!state.BelongsToCallingThread() && !state.ThreadHasEnded()) return withdrawn;
        std::deque<PostedMessage> kept;
        for (const PostedMessage& posted : state.posted) {
            if (posted.message >= first && posted.message <= last) {
                withdrawn.push_back(posted);
            } else {
                kept.push_back(posted);
            }
        }
        state.posted = std::move(kept);
        return withdrawn;
    }

    // Takes the messages of these copies out of the thread's queue. One that is not there has been fetched by somebody
    // who is about to run it, and is forgotten when it arrives.
    void TakeNatives(std::vector<PostedMessage> copies, UINT first, UINT last)
    {
        WindowState& state = *state_;
        for (const PostedMessage& native : TakeFromQueue(state.handle, first, last)) {
            const auto copy = std::find_if(copies.begin(), copies.end(),
                                           [&](const PostedMessage& entry) { return entry.SameAs(native); });
            if (copy != copies.end()) {
                copies.erase(copy);
            } else {
                // Somebody else's, or posted since.
                PostMessageA(state.handle, native.message, native.wParam, native.lParam);
            }
        }
        const LockHold hold(state.lock);
        state.withdrawn.insert(state.withdrawn.end(), copies.begin(), copies.end());
    }

    const std::shared_ptr<WindowState> state_;
};

}  // namespace

std::unique_ptr<Window> Window::Create(const char* className, const char* title, WindowProcedure& procedure)
{
    const auto state = std::make_shared<WindowState>(className, HiddenWindowProcedure);
    if (!state->thread || !state->classUse->Registered()) return nullptr;
    if (!JoinThread(state)) return nullptr;
    WindowCreation creation{state, procedure};
    state->handle = CreateWindowExA(0, state->classUse->Name(), title, WS_POPUP | WS_CLIPSIBLINGS | WS_CLIPCHILDREN, 0,
                                    0, 0, 0, nullptr, nullptr, ThisModule(), &creation);
    if (state->handle == nullptr) {
        NativeWindowIsGone(*state);
        return nullptr;
    }
    return std::make_unique<HiddenWindow>(state);
}

}  // namespace marbex::platform
