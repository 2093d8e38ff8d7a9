#pragma once

// Kernel objects: events, mutexes, semaphores and threads that can be waited for, alone or together, with a time
// limit, and while the calling thread's window messages run (window.h).
//
// Names: two live objects of one kind and name are one object, as on Windows; the name is free again when the last
// of them is closed (destroyed). An empty name makes an unnamed object. A name that an object of another kind has
// gives none (null). A name reaches no further than the process on POSIX.
//
// Every operation may be called from any thread. An object must outlive the waits on it.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

#include "platform/thread_annotations.h"

namespace marbex::platform {

inline constexpr uint32_t kForever = 0xFFFFFFFF;

// How many objects one wait takes at most.
inline constexpr std::size_t kMaximumWaitObjects = 63;

struct NativeObject;  // the implementation's own: a handle on Windows, a state under the wait lock on POSIX

// What can be waited for. The implementation derives from it; nobody else does.
class WaitObject {
public:
    virtual ~WaitObject() = default;
    WaitObject(const WaitObject&) = delete;
    WaitObject& operator=(const WaitObject&) = delete;

    virtual NativeObject* Native() const = 0;  // for the wait functions; null fails the wait

protected:
    WaitObject() = default;
};

enum class WaitStatus {
    kSignalled,
    kAbandoned,  // as kSignalled, but a mutex was taken whose owner had ended without releasing it
    kTimedOut,
    kMessages,  // only of WaitForAnyOrMessages: a message waits for the calling thread
    kFailed,    // too many objects, none, or one of them twice
};

struct WaitResult {
    WaitStatus status = WaitStatus::kFailed;
    std::size_t index = 0;  // which object, of a wait for any

    bool Obtained() const { return status == WaitStatus::kSignalled || status == WaitStatus::kAbandoned; }
};

enum class ResetMode { kAuto, kManual };

class Event : public WaitObject {
public:
    // existed, when given, tells whether an event of that name was there already (its state is then unchanged).
    static std::unique_ptr<Event> Create(const std::string& name, ResetMode mode, bool signalled,
                                         bool* existed = nullptr);
    // Releases every thread that waits (manual) or the first of them (auto), even if Reset follows at once.
    virtual void Set() = 0;
    virtual void Reset() = 0;
};

// Owned by a thread, which may take it again and releases it as often as it took it. A thread that ends while it owns
// one abandons it.
class MARBEX_CAPABILITY("mutex") Mutex : public WaitObject {
public:
    static std::unique_ptr<Mutex> Create(const std::string& name, bool* existed = nullptr);
    // False when the calling thread does not own it.
    virtual bool Release() MARBEX_RELEASE() = 0;
    // Waits without limit and without running messages.
    void Acquire() MARBEX_ACQUIRE();
    // Waits at most timeout milliseconds; false when it was not obtained.
    [[nodiscard]] bool AcquireWithin(uint32_t timeout) MARBEX_TRY_ACQUIRE(true);
    // Waits without limit while the calling thread's messages run.
    void AcquireRunningMessages() MARBEX_ACQUIRE();
    // Tells the analysis that a wait function has obtained this mutex.
    void AssertOwned() const MARBEX_ASSERT_CAPABILITY(this) {}
};

// Holds a mutex for a scope; a plain wait without limit.
class MARBEX_SCOPED_CAPABILITY MutexHold {
public:
    explicit MutexHold(Mutex& mutex) MARBEX_ACQUIRE(mutex) : mutex_(mutex) { mutex_.Acquire(); }
    ~MutexHold() MARBEX_RELEASE() { mutex_.Release(); }
    MutexHold(const MutexHold&) = delete;
    MutexHold& operator=(const MutexHold&) = delete;

private:
    Mutex& mutex_;
};

class Semaphore : public WaitObject {
public:
    // Null when initial is above maximum or maximum is 0.
    static std::unique_ptr<Semaphore> Create(const std::string& name, uint32_t initial, uint32_t maximum,
                                             bool* existed = nullptr);
    // False, and nothing changes, when the count would exceed the maximum or count is 0.
    virtual bool Release(uint32_t count = 1) = 0;
};

// A thread of its own, signalled once body has returned and the mutexes it still owned are abandoned. Destruction waits
// for the end, except on the thread itself, where it lets the thread run out on its own.
// Null when the system refuses a thread.
class Thread : public WaitObject {
public:
    static std::unique_ptr<Thread> Start(std::function<void()> body);
};

// Tells the threads of a process apart: a number that a thread keeps while it lives, never 0.
using ThreadId = uint64_t;
ThreadId CurrentThreadId();

// Waits for one object at most timeout milliseconds (0 only looks, kForever has no limit).
WaitResult WaitForOne(WaitObject& object, uint32_t timeout);

// Waits for the first of several; when more than one is signalled the lowest index wins and only that one is consumed.
WaitResult WaitForAny(std::span<WaitObject* const> objects, uint32_t timeout);

// Waits until all are signalled in one instant; until then none is consumed.
WaitResult WaitForAll(std::span<WaitObject* const> objects, uint32_t timeout);

// As WaitForAny, but ends with kMessages, nothing consumed, when no object is signalled and a message waits for the
// calling thread. The objects may be none.
WaitResult WaitForAnyOrMessages(std::span<WaitObject* const> objects, uint32_t timeout);

// As WaitForAny, and runs the calling thread's messages, the delivery window's included, as they come. A nested call
// from inside a message is allowed. A signalled object goes before a waiting message, and is looked for after each one.
// A message that runs when the time is up is finished; with timeout 0 at most one is run. The objects may be none.
WaitResult WaitForAnyRunningMessages(std::span<WaitObject* const> objects, uint32_t timeout);

// As above for one object.
WaitResult WaitForOneRunningMessages(WaitObject& object, uint32_t timeout);

}  // namespace marbex::platform
