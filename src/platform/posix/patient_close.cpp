// The kernel lets a driver wait inside close, half a minute for a terminal whose output does not drain, unless a signal
// comes. So the file is closed on a thread of its own, which may be cancelled: the library's own signal for that ends
// the wait, and touches no handler of the application's. By then the descriptor is gone and the driver has let go.

#include "platform/posix/patient_close.h"

#include <poll.h>
#include <pthread.h>
#include <unistd.h>

#include <cstdint>

#include "platform/deadline.h"

namespace marbex::platform {

namespace {

constexpr uint32_t kUninterruptibleMilliseconds = 1000;
constexpr int kLookMilliseconds = 5;

// Cancelled inside close, the thread unwinds from here: nothing in it may need its destructor.
void* CloseFile(void* descriptor)
{
    close(static_cast<int>(reinterpret_cast<intptr_t>(descriptor)));
    return nullptr;
}

bool EndsWithin(pthread_t thread, uint32_t milliseconds)
{
    const Deadline deadline(milliseconds);
    while (pthread_tryjoin_np(thread, nullptr) != 0) {
        if (deadline.Remaining() == 0) return false;
        poll(nullptr, 0, kLookMilliseconds);
    }
    return true;
}

}  // namespace

void CloseWithin(UniqueFd descriptor, uint32_t milliseconds)
{
    const int file = descriptor.Get();
    pthread_t thread{};
    if (pthread_create(&thread, nullptr, CloseFile, reinterpret_cast<void*>(static_cast<intptr_t>(file))) != 0) return;
    descriptor.Release();
    if (EndsWithin(thread, milliseconds)) return;
    pthread_cancel(thread);
    // A driver that no signal interrupts keeps its thread; the caller goes on.
    if (!EndsWithin(thread, kUninterruptibleMilliseconds)) pthread_detach(thread);
}

}  // namespace marbex::platform
