#pragma once

// What kernel objects, threads and message queues are made of on POSIX. Everything here is guarded by the one wait
// lock.
//
// Who waits for whom, and why no wake-up is lost
//
// A wait looks at its objects under the wait lock. When they are not there, it puts a Waiter into the list of each
// object (and, if messages end it, into its thread's queue) before it lets go of the lock to sleep on its thread's own
// condition. So an object cannot become signalled between the look and the sleep.
//
// Whoever signals an object offers it, in the same critical section, to the waiters in its list, first come first
// served, until it is used up. The signaller takes on behalf of the waiter all that the waiter wants, marks it
// satisfied and wakes its thread. The sleeper does not race for the object when it wakes: it already has it. That is
// why Set followed at once by Reset still releases every thread that waited, why one Set of an auto-reset event
// releases exactly one thread, why a waiter for all never holds a part, and why no thread starves another by releasing
// and taking in a loop.
//
// A waiter whose time runs out looks once more, under the lock, whether it was satisfied before it leaves the lists:
// what was taken for it is never dropped. Time-outs are one moment on the monotonic clock, so wake-ups in between cost
// nothing.
//
// The wait lock is the innermost lock of the process: nothing is called while it is held that takes another lock or
// waits, so every holder comes to its end and the lock itself makes nobody wait for long. Window procedures, thread
// bodies and the destruction of objects run without it. A thread that ends abandons its mutexes, so a wait for a mutex
// ends at the latest with its owner.

#include <deque>
#include <memory>
#include <span>
#include <vector>

#include "platform/kernel.h"
#include "platform/posix/condition.h"
#include "platform/window.h"

namespace marbex::platform {

inline constinit Lock waitLock;

struct MutexState;
struct ThreadState;

enum class Wanted { kAny, kAll };

// One wait of one thread; lives on that thread's stack.
struct Waiter {
    std::span<NativeObject* const> objects;
    Wanted wanted;
    ThreadState& thread;
    bool satisfied = false;
    WaitResult result;  // once satisfied
};

struct NativeObject {
    NativeObject() = default;
    virtual ~NativeObject() = default;
    NativeObject(const NativeObject&) = delete;
    NativeObject& operator=(const NativeObject&) = delete;

    virtual bool IsSignalledFor(const ThreadState& thread) const MARBEX_REQUIRES(waitLock) = 0;
    // Only when it is signalled for that thread. True when a mutex was abandoned.
    virtual bool Take(ThreadState& thread) MARBEX_REQUIRES(waitLock) = 0;

    std::vector<Waiter*> waiters MARBEX_GUARDED_BY(waitLock);  // in the order they came
};

// To be called whenever an object may have become signalled: gives it to those who wait for it.
void Offer(NativeObject& object) MARBEX_REQUIRES(waitLock);

struct MessageQueue;

struct WindowState {
    WindowState(WindowProcedure& windowProcedure, std::shared_ptr<MessageQueue> threadQueue)
        : procedure(windowProcedure), queue(std::move(threadQueue))
    {
    }

    WindowProcedure& procedure;
    const std::shared_ptr<MessageQueue> queue;
    bool closing MARBEX_GUARDED_BY(waitLock) = false;  // takes no more messages
};

// Ends a window for which closing is set: forgets its messages and calls OnDestroy. On its own thread, or any once that
// has ended.
void DestroyWindow(WindowState& window) MARBEX_EXCLUDES(waitLock);

struct PostedMessage {
    std::shared_ptr<WindowState> window;
    bool destroys = false;  // the destruction of the window, asked for by another thread
    uint32_t message = 0;
    uintptr_t wParam = 0;
    intptr_t lParam = 0;
};

// The messages of one thread. Shared with its windows, because they may outlive the thread; then the messages stay, to
// be withdrawn.
struct MessageQueue {
    std::deque<PostedMessage> messages MARBEX_GUARDED_BY(waitLock);
    ThreadState* sleeper MARBEX_GUARDED_BY(waitLock) =
        nullptr;  // the thread, while it sleeps in a wait that messages end
    bool threadEnded MARBEX_GUARDED_BY(waitLock) = false;
    int descriptor MARBEX_GUARDED_BY(waitLock) = -1;  // an eventfd once one was asked for
    bool descriptorReadable MARBEX_GUARDED_BY(waitLock) = false;
};

// To be called whenever messages were added or removed: keeps the descriptor readable exactly while there are any, and
// wakes the thread if it sleeps for them.
void MessagesChanged(MessageQueue& queue) MARBEX_REQUIRES(waitLock);

struct ThreadState {
    Condition wakeUp;
    std::vector<MutexState*> ownedMutexes MARBEX_GUARDED_BY(waitLock);
    const std::shared_ptr<MessageQueue> queue = std::make_shared<MessageQueue>();
};

// The state of the calling thread, made at its first use and ended with the thread.
ThreadState& CurrentThread();

// What the end of a thread means: windows whose destruction was posted are destroyed, its queue takes no more messages,
// and its mutexes are abandoned. Run by a Thread before it is signalled, and by every other thread as it exits.
void EndCurrentThread();

// Part of it: gives up the mutexes that a thread still owns.
void AbandonMutexes(ThreadState& thread) MARBEX_REQUIRES(waitLock);

}  // namespace marbex::platform
