#pragma once

// What kernel objects, threads and message queues are made of on the simulated computer. Only one thread runs at a
// time and none is interrupted between two points, so nothing here is locked.
//
// A wait looks at its objects; when they are not there it leaves a Waiter in the list of each and sleeps. Whoever
// signals an object offers it at once to those in its list, first come first served, and takes it on behalf of the
// waiter that gets it, as the kernel objects of the real systems do.

#include <deque>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/kernel.h"
#include "platform/simulated/machine/scheduler.h"
#include "platform/window.h"

namespace marbex::platform {

enum class Wanted { kAny, kAll };

// One wait of one thread; lives on that thread's stack.
struct Waiter final : simulated::Reason {
    Waiter(std::span<NativeObject* const> waitedFor, Wanted howMany, bool orMessages, simulated::Task& waitingTask)
        : objects(waitedFor), wanted(howMany), forMessages(orMessages), task(waitingTask)
    {
    }
    void Tell(std::ostream& report) const override;

    std::span<NativeObject* const> objects;
    Wanted wanted;
    bool forMessages;
    simulated::Task& task;
    bool satisfied = false;
    WaitResult result;  // once satisfied
};

struct NativeObject {
    NativeObject();
    virtual ~NativeObject();
    NativeObject(const NativeObject&) = delete;
    NativeObject& operator=(const NativeObject&) = delete;

    virtual bool IsSignalledFor(const simulated::Task& task) const = 0;
    // Only when it is signalled for that thread. True when a mutex was abandoned.
    virtual bool Take(simulated::Task& task) = 0;
    virtual void Abandon() {}  // a mutex whose owner ends
    virtual void Tell(std::ostream& report) const = 0;

    std::vector<Waiter*> waiters;  // in the order they came
};

// How many kernel objects there are, threads among them.
std::size_t LiveObjects();

// To be called whenever an object may have become signalled: gives it to those who wait for it.
void Offer(NativeObject& object);

struct MessageQueue;

struct WindowState {
    WindowProcedure& procedure;
    const std::shared_ptr<MessageQueue> queue;
    bool closing = false;  // takes no more messages
};

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
    std::deque<PostedMessage> messages;
    simulated::Task* sleeper = nullptr;  // the thread, while it sleeps in a wait that messages end
    bool threadEnded = false;
};

MessageQueue& QueueOf(simulated::Task& task);

// What the end of a thread means: windows whose destruction was posted are destroyed, its queue takes no more messages,
// and its mutexes are abandoned.
void EndCurrentThread();

std::size_t LiveWindows();

}  // namespace marbex::platform
