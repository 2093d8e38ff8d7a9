// Windows and the message queues of threads.

#include "platform/window.h"

#include <utility>

#include "platform/simulated/kernel_state.h"
#include "platform/simulated/machine/call.h"

namespace marbex::platform {
namespace {

using simulated::Call;
using simulated::Processor;

constexpr std::size_t kMaximumMessages = 10000;  // what Windows grants a thread

std::size_t liveWindows = 0;

void WakeSleeper(MessageQueue& queue)
{
    if (queue.sleeper != nullptr) Processor().Wake(*queue.sleeper);
}

// Takes out those messages that wanted picks, in their order.
template <typename Wanted>
std::deque<PostedMessage> TakeOut(MessageQueue& queue, Wanted wanted)
{
    std::deque<PostedMessage> kept;
    std::deque<PostedMessage> taken;
    for (PostedMessage& posted : queue.messages)
        (wanted(posted) ? taken : kept).push_back(std::move(posted));
    queue.messages = std::move(kept);
    return taken;
}

// Ends a window for which closing is set: forgets its messages and calls OnDestroy.
void DestroyWindow(WindowState& window)
{
    TakeOut(*window.queue, [&](const PostedMessage& posted) { return posted.window.get() == &window; });
    --liveWindows;
    window.procedure.OnDestroy();
}

class SimulatedWindow final : public Window {
public:
    explicit SimulatedWindow(std::shared_ptr<WindowState> state) : state_(std::move(state)) { ++liveWindows; }

    ~SimulatedWindow() override
    {
        const Call call;
        state_->closing = true;
        if (BelongsToCallingThread() || state_->queue->threadEnded) {
            DestroyWindow(*state_);
            return;
        }
        state_->queue->messages.push_back({state_, true, 0, 0, 0});
        WakeSleeper(*state_->queue);
    }

    bool BelongsToCallingThread() const override
    {
        return Processor().IsRunning() && state_->queue == Processor().Current().queue;
    }

    bool Post(uint32_t message, uintptr_t wParam, intptr_t lParam) override
    {
        const simulated::Apart apart;
        MessageQueue& queue = *state_->queue;
        if (simulated::CallFails("posting a message") || state_->closing || queue.threadEnded ||
            queue.messages.size() >= kMaximumMessages)
            return false;
        queue.messages.push_back({state_, false, message, wParam, lParam});
        WakeSleeper(queue);
        Processor().Point();
        return true;
    }

    void Withdraw(uint32_t first, uint32_t last, const std::function<void(uintptr_t wParam)>& taken) override
    {
        const Call call;
        if (!BelongsToCallingThread() && !state_->queue->threadEnded) return;
        for (const PostedMessage& message : TakeOut(*state_->queue, [&](const PostedMessage& posted) {
                 return posted.window == state_ && !posted.destroys && posted.message >= first &&
                        posted.message <= last;
             }))
            taken(message.wParam);
    }

private:
    const std::shared_ptr<WindowState> state_;
};

}  // namespace

std::size_t LiveWindows()
{
    return liveWindows;
}

MessageQueue& QueueOf(simulated::Task& task)
{
    if (!task.queue) task.queue = std::make_shared<MessageQueue>();
    return *task.queue;
}

std::unique_ptr<Window> Window::Create(const char*, const char*, WindowProcedure& procedure)
{
    const Call call("window");
    if (call.Fails() || procedure.OnCreate() == -1) return nullptr;
    QueueOf(Processor().Current());
    return std::make_unique<SimulatedWindow>(
        std::make_shared<WindowState>(WindowState{procedure, Processor().Current().queue}));
}

bool RunOneMessage()
{
    static const std::function<intptr_t()> defaultProcedure = [] { return intptr_t{0}; };

    const Call call;
    MessageQueue& queue = QueueOf(Processor().Current());
    if (queue.messages.empty()) return false;
    const PostedMessage posted = std::move(queue.messages.front());
    queue.messages.pop_front();
    const simulated::Within within;
    if (posted.destroys) {
        DestroyWindow(*posted.window);
    } else {
        posted.window->procedure.WindowProc(posted.message, posted.wParam, posted.lParam, defaultProcedure);
    }
    return true;
}

uint32_t RunWaitingMessages()
{
    const std::size_t waiting = QueueOf(Processor().Current()).messages.size();
    uint32_t run = 0;
    while (run < waiting && RunOneMessage())
        ++run;
    return run;
}

void EndCurrentThread()
{
    const simulated::Apart apart;
    simulated::Task& self = Processor().Current();
    MessageQueue& queue = QueueOf(self);
    queue.threadEnded = true;
    for (const PostedMessage& destruction : TakeOut(queue, [](const PostedMessage& posted) { return posted.destroys; }))
        DestroyWindow(*destruction.window);
    for (NativeObject* mutex : std::exchange(self.owned, {}))
        mutex->Abandon();
}

}  // namespace marbex::platform
