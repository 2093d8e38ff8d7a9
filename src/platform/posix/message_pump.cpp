// The message pump that applications on Linux call.

#include <marbex/message_pump.h>
#include <sys/eventfd.h>

#include "platform/deadline.h"
#include "platform/posix/kernel_state.h"

using namespace marbex::platform;

int MarbexMessageDescriptor()
{
    MessageQueue& queue = *CurrentThread().queue;
    const LockHold hold(waitLock);
    if (queue.descriptor < 0 && !queue.threadEnded) {
        queue.descriptor = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
        MessagesChanged(queue);
    }
    return queue.descriptor;
}

int32_t MarbexRunMessages(int32_t timeoutMilliseconds)
{
    uint32_t run = RunWaitingMessages();
    if (timeoutMilliseconds < 0) {
        if (run == 0 && WaitForAnyOrMessages({}, kForever).status == WaitStatus::kMessages) run = RunWaitingMessages();
    } else {
        const Deadline deadline(static_cast<uint32_t>(timeoutMilliseconds));
        while (deadline.Remaining() > 0) {
            if (WaitForAnyOrMessages({}, deadline.Remaining()).status == WaitStatus::kMessages)
                run += RunWaitingMessages();
        }
    }
    return static_cast<int32_t>(run);
}
