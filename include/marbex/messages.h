#pragma once

// Events arrive on the thread that opened the device, while that thread runs its messages. A program with a loop of its
// own (epoll, GLib, Qt) watches MessageDescriptor() and calls RunMessages() whenever it is readable; one without calls
// RunMessagesUntil. What an event handler throws leaves the call during which the handler ran.

#include <marbex/message_pump.h>
#include <poll.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <exception>
#include <utility>

namespace marbex {

namespace detail {

// What an event handler has thrown and nobody has been told yet. It cannot pass through the library.
inline thread_local std::exception_ptr thrownByHandler;

inline void ThrowWhatHandlersThrew()
{
    if (thrownByHandler) std::rethrow_exception(std::exchange(thrownByHandler, nullptr));
}

}  // namespace detail

// Readable while messages wait for the calling thread. Valid for the life of the thread; never read or close it.
inline int MessageDescriptor()
{
    return MarbexMessageDescriptor();
}

// Runs the messages that wait for the calling thread, and returns how many ran.
inline int RunMessages()
{
    const int run = MarbexRunMessages(0);
    detail::ThrowWhatHandlersThrew();
    return run;
}

// Runs messages until done() is true or the time has passed, and returns whether it is. A negative time has no end.
template <typename Predicate>
bool RunMessagesUntil(Predicate done, std::chrono::milliseconds timeout)
{
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + timeout;
    while (!done()) {
        if (RunMessages() > 0) continue;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        if (timeout.count() >= 0 && left <= 0) return done();
        constexpr std::int64_t kLongest = 60'000;
        pollfd messages{MessageDescriptor(), POLLIN, 0};
        poll(&messages, 1, static_cast<int>(timeout.count() < 0 ? kLongest : std::min<std::int64_t>(left, kLongest)));
    }
    return true;
}

}  // namespace marbex
