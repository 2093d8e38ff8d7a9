#include "native_lock.h"

#include <windows.h>

namespace marbex::platform {
namespace {

SRWLOCK* SlimLock(void** state)
{
    static_assert(sizeof(SRWLOCK) == sizeof(*state));
    return reinterpret_cast<SRWLOCK*>(state);
}

}  // namespace

void NativeLock::lock()
{
    AcquireSRWLockExclusive(SlimLock(&state_));
}

void NativeLock::unlock()
{
    ReleaseSRWLockExclusive(SlimLock(&state_));
}

}  // namespace marbex::platform
