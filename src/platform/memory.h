#pragma once

// Work that has to be done although there is no memory for it at the moment: a report that nobody else could make.

#include <new>
#include <utility>

#include "platform/clock.h"

namespace marbex::platform {

// Does the action, again every 100 ms while it finds no memory, for five seconds at most; then std::bad_alloc gets out.
// What it throws it must throw before it has changed anything.
template <typename Action>
auto WaitForMemory(Clock& clock, Action action)
{
    constexpr uint32_t kPauseMilliseconds = 100;
    for (int left = 50;; --left) {
        try {
            return action();
        } catch (const std::bad_alloc&) {
            if (left == 0) throw;
        }
        clock.Sleep(kPauseMilliseconds);
    }
}

}  // namespace marbex::platform
