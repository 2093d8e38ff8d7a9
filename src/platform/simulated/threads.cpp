// Threads: what belongs to each while it lives, and what happens when it ends.

#include <cxxabi.h>

#include <cstdlib>
#include <utility>

#include "platform/files.h"
#include "platform/simulated/kernel_state.h"
#include "platform/simulated/machine/call.h"

namespace marbex::platform {
namespace {

using simulated::Processor;
using simulated::Task;

struct ThreadEnd final : NativeObject {
    explicit ThreadEnd(std::string name) : threadName(std::move(name)) {}

    bool IsSignalledFor(const Task&) const override { return ended; }
    bool Take(Task&) override { return false; }
    void Tell(std::ostream& report) const override { report << "the end of " << threadName; }

    const std::string threadName;
    bool ended = false;
};

void RunBody(std::function<void()>& body) noexcept
{
    try {
        body();
        body = nullptr;  // what it holds goes before anyone is told that it is over
    } catch (...) {
        WriteDebugOutput("A thread ended because of an exception\n");
    }
}

// The function that a thread's body was written in names the thread in reports: nobody else does.
std::string NameOf(const std::function<void()>& body)
{
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> readable(
        abi::__cxa_demangle(body.target_type().name(), nullptr, nullptr, &status), &std::free);
    std::string name = readable ? readable.get() : "a thread";
    return name.substr(0, name.find('('));
}

class ThreadHandle final : public Thread {
public:
    explicit ThreadHandle(std::function<void()> body) : end_(std::make_shared<ThreadEnd>(NameOf(body)))
    {
        id_ = Processor()
                  .Start(end_->threadName,
                         [body = std::move(body), end = end_]() mutable {
                             RunBody(body);
                             EndCurrentThread();
                             end->ended = true;
                             Offer(*end);
                             end = nullptr;
                         })
                  .id;
    }

    ~ThreadHandle() override
    {
        if (Processor().Current().id != id_) WaitForOne(*this, kForever);
    }

    NativeObject* Native() const override { return end_.get(); }

private:
    const std::shared_ptr<ThreadEnd> end_;
    uint64_t id_ = 0;
};

}  // namespace

ThreadId CurrentThreadId()
{
    return Processor().Current().id;
}

std::unique_ptr<Thread> Thread::Start(std::function<void()> body)
{
    const simulated::Call call("thread");
    if (call.Fails()) return nullptr;
    return std::make_unique<ThreadHandle>(std::move(body));
}

}  // namespace marbex::platform
