// Threads: what belongs to each while it lives, and what happens when it ends.

#include <atomic>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/files.h"
#include "platform/posix/kernel_state.h"

namespace marbex::platform {
namespace {

constinit thread_local ThreadState* currentThread = nullptr;

// Ends the thread's state as the thread exits.
struct StateOwner {
    ~StateOwner()
    {
        EndCurrentThread();
        delete std::exchange(currentThread, nullptr);
    }
};

ThreadState& MakeCurrentThread()
{
    currentThread = new ThreadState;
    static thread_local const StateOwner owner;
    (void)owner;
    return *currentThread;
}

struct ThreadEnd final : NativeObject {
    bool IsSignalledFor(const ThreadState&) const override MARBEX_REQUIRES(waitLock) { return ended; }
    bool Take(ThreadState&) override MARBEX_REQUIRES(waitLock) { return false; }

    bool ended MARBEX_GUARDED_BY(waitLock) = false;
};

// The application's process is not ours to end: what a body throws ends that thread alone.
void RunBody(std::function<void()>& body) noexcept
{
    try {
        body();
        body = nullptr;  // what it holds goes before anyone is told that it is over
    } catch (...) {
        WriteDebugOutput("A thread ended because of an exception\n");
    }
}

class ThreadHandle final : public Thread {
public:
    explicit ThreadHandle(std::function<void()> body)
        : end_(std::make_shared<ThreadEnd>()), thread_(Run, std::move(body), end_)
    {
    }

    ~ThreadHandle() override
    {
        if (thread_.get_id() == std::this_thread::get_id()) {
            thread_.detach();
        } else {
            thread_.join();
        }
    }

    NativeObject* Native() const override { return end_.get(); }

private:
    static void Run(std::function<void()> body, const std::shared_ptr<ThreadEnd>& end)
    {
        RunBody(body);
        EndCurrentThread();
        const LockHold hold(waitLock);
        end->ended = true;
        Offer(*end);
    }

    const std::shared_ptr<ThreadEnd> end_;
    std::thread thread_;
};

}  // namespace

ThreadState& CurrentThread()
{
    return currentThread != nullptr ? *currentThread : MakeCurrentThread();
}

ThreadId CurrentThreadId()
{
    static std::atomic<ThreadId> threads{0};
    thread_local const ThreadId id = ++threads;
    return id;
}

std::unique_ptr<Thread> Thread::Start(std::function<void()> body)
{
    try {
        return std::make_unique<ThreadHandle>(std::move(body));
    } catch (const std::system_error&) {
        return nullptr;
    }
}

}  // namespace marbex::platform
