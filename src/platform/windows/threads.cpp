// Threads: their start, and what happens as they end.

#include <process.h>
#include <windows.h>

#include <utility>

#include "platform/files.h"
#include "platform/kernel.h"
#include "platform/windows/native_object.h"
#include "platform/windows/unique_handle.h"
#include "platform/windows/window_state.h"

namespace marbex::platform {
namespace {

// What a thread gets to start with.
struct ThreadStart {
    std::function<void()> body;
    HMODULE module = nullptr;  // held for as long as the thread runs its code
};

// The application's process is not ours to end: what a body throws ends that thread alone.
void RunBody(const std::unique_ptr<ThreadStart>& start) noexcept
{
    try {
        start->body();
        start->body = nullptr;  // what it holds goes before anyone is told that it is over
    } catch (...) {
        WriteDebugOutput("A thread ended because of an exception\n");
    }
}

unsigned __stdcall RunThread(void* argument)
{
    HMODULE module = nullptr;
    {
        const std::unique_ptr<ThreadStart> start(static_cast<ThreadStart*>(argument));
        module = start->module;
        RunBody(start);
    }
    EndThreadWindows();
    // A thread that nobody waits for may be the last to use this library, which cannot let itself go and then return.
    if (module != nullptr) FreeLibraryAndExitThread(module, 0);
    return 0;
}

class WindowsThread final : public Thread {
public:
    ~WindowsThread() override
    {
        if (handle_ && GetCurrentThreadId() != id_) WaitForSingleObject(handle_.Get(), INFINITE);
    }

    NativeObject* Native() const override { return AsNative(handle_.Get()); }

    bool Run(std::function<void()> body);

private:
    UniqueHandle handle_;
    unsigned id_ = 0;
};

bool WindowsThread::Run(std::function<void()> body)
{
    auto start = std::make_unique<ThreadStart>();
    start->body = std::move(body);
    static const char anchor = 0;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, &anchor, &start->module);

    const uintptr_t made = _beginthreadex(nullptr, 0, RunThread, start.get(), 0, &id_);
    if (made == 0) {
        if (start->module != nullptr) FreeLibrary(start->module);
        return false;
    }
    static_cast<void>(start.release());  // the thread's from now on, which may have ended already
    handle_ = UniqueHandle(reinterpret_cast<HANDLE>(made));
    return true;
}

}  // namespace

ThreadId CurrentThreadId()
{
    return GetCurrentThreadId();
}

std::unique_ptr<Thread> Thread::Start(std::function<void()> body)
{
    auto thread = std::make_unique<WindowsThread>();
    if (!thread->Run(std::move(body))) return nullptr;
    return thread;
}

}  // namespace marbex::platform
