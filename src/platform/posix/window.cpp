// Windows and the message queues of threads.

#include "platform/window.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <utility>

#include "platform/posix/kernel_state.h"

namespace marbex::platform {
namespace {

constexpr std::size_t kMaximumMessages = 10000;  // what Windows grants a thread

class PosixWindow final : public Window {
public:
    explicit PosixWindow(std::shared_ptr<WindowState> state) : state_(std::move(state)) {}

    ~PosixWindow() override
    {
        if (!CloseHere()) return;
        DestroyWindow(*state_);
    }

    bool BelongsToCallingThread() const override { return state_->queue == CurrentThread().queue; }

    bool Post(uint32_t message, uintptr_t wParam, intptr_t lParam) override
    {
        MessageQueue& queue = *state_->queue;
        const LockHold hold(waitLock);
        if (state_->closing || queue.threadEnded || queue.messages.size() >= kMaximumMessages) return false;
        queue.messages.push_back({state_, false, message, wParam, lParam});
        MessagesChanged(queue);
        return true;
    }

    void Withdraw(uint32_t first, uint32_t last, const std::function<void(uintptr_t wParam)>& taken) override
    {
        for (const PostedMessage& message : TakeBack(first, last))
            taken(message.wParam);
    }

private:
    // Stops the window taking messages. False when its destruction had to be left to its thread.
    bool CloseHere()
    {
        MessageQueue& queue = *state_->queue;
        const bool own = BelongsToCallingThread();
        const LockHold hold(waitLock);
        state_->closing = true;
        if (own || queue.threadEnded) return true;
        queue.messages.push_back({state_, true, 0, 0, 0});
        MessagesChanged(queue);
        return false;
    }

    std::deque<PostedMessage> TakeBack(uint32_t first, uint32_t last)
    {
        MessageQueue& queue = *state_->queue;
        const bool own = BelongsToCallingThread();
        std::deque<PostedMessage> kept;
        std::deque<PostedMessage> withdrawn;
        const LockHold hold(waitLock);
        if (!own && !queue.threadEnded) return withdrawn;
        for (PostedMessage& posted : queue.messages) {
            const bool wanted =
                posted.window == state_ && !posted.destroys && posted.message >= first && posted.message <= last;
            (wanted ? withdrawn : kept).push_back(std::move(posted));
        }
        queue.messages = std::move(kept);
        MessagesChanged(queue);
        return withdrawn;
    }

    const std::shared_ptr<WindowState> state_;
};

}  // namespace

std::unique_ptr<Window> Window::Create(const char*, const char*, WindowProcedure& procedure)
{
    if (procedure.OnCreate() == -1) return nullptr;
    return std::make_unique<PosixWindow>(std::make_shared<WindowState>(procedure, CurrentThread().queue));
}

void DestroyWindow(WindowState& window)
{
    std::deque<PostedMessage> lost;
    {
        MessageQueue& queue = *window.queue;
        std::deque<PostedMessage> kept;
        const LockHold hold(waitLock);
        for (PostedMessage& posted : queue.messages)
            (posted.window.get() == &window ? lost : kept).push_back(std::move(posted));
        queue.messages = std::move(kept);
        MessagesChanged(queue);
    }
    window.procedure.OnDestroy();
}

void MessagesChanged(MessageQueue& queue)
{
    const bool waiting = !queue.messages.empty();
    if (queue.descriptor >= 0 && waiting != queue.descriptorReadable) {
        eventfd_t count = 0;
        const int failed = waiting ? eventfd_write(queue.descriptor, 1) : eventfd_read(queue.descriptor, &count);
        if (failed == 0) queue.descriptorReadable = waiting;
    }
    if (waiting && queue.sleeper != nullptr) queue.sleeper->wakeUp.NotifyOne();
}

bool RunOneMessage()
{
    static const std::function<intptr_t()> defaultProcedure = [] { return intptr_t{0}; };

    MessageQueue& queue = *CurrentThread().queue;
    PostedMessage posted;
    {
        const LockHold hold(waitLock);
        if (queue.messages.empty()) return false;
        posted = std::move(queue.messages.front());
        queue.messages.pop_front();
        MessagesChanged(queue);
    }
    if (posted.destroys) {
        DestroyWindow(*posted.window);
    } else {
        posted.window->procedure.WindowProc(posted.message, posted.wParam, posted.lParam, defaultProcedure);
    }
    return true;
}

uint32_t RunWaitingMessages()
{
    std::size_t waiting = 0;
    {
        const LockHold hold(waitLock);
        waiting = CurrentThread().queue->messages.size();
    }
    uint32_t run = 0;
    while (run < waiting && RunOneMessage())
        ++run;
    return run;
}

void EndCurrentThread()
{
    ThreadState& thread = CurrentThread();
    MessageQueue& queue = *thread.queue;
    std::deque<PostedMessage> destructions;
    {
        std::deque<PostedMessage> kept;
        const LockHold hold(waitLock);
        queue.threadEnded = true;
        for (PostedMessage& posted : queue.messages)
            (posted.destroys ? destructions : kept).push_back(std::move(posted));
        queue.messages = std::move(kept);
        if (queue.descriptor >= 0) close(std::exchange(queue.descriptor, -1));
    }
    for (const PostedMessage& destruction : destructions)
        DestroyWindow(*destruction.window);

    const LockHold hold(waitLock);
    AbandonMutexes(thread);
}

}  // namespace marbex::platform
