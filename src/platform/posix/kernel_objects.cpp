// Events, mutexes and semaphores, and the table of their names.

#include <map>
#include <utility>

#include "platform/posix/kernel_state.h"

namespace marbex::platform {
namespace {

// What all handles of one name share.
struct NamedState : NativeObject {
    // The last handle is closed.
    virtual void Closed() MARBEX_REQUIRES(waitLock) {}

    std::string name;
    uint32_t handles MARBEX_GUARDED_BY(waitLock) = 1;
};

// Never destroyed: objects of static storage may be closed after everything else of the process is gone.
std::map<std::string, NamedState*>& Names() MARBEX_REQUIRES(waitLock)
{
    static auto& names = *new std::map<std::string, NamedState*>;
    return names;
}

// The live state of that name, if it is of the wanted kind, else the fresh one; null when the name is another kind's.
template <typename State>
State* OpenOrAdd(const std::string& name, std::unique_ptr<State> fresh, bool* existed)
{
    if (existed != nullptr) *existed = false;
    if (name.empty()) return fresh.release();

    const LockHold hold(waitLock);
    const auto [place, isNew] = Names().try_emplace(name, fresh.get());
    if (isNew) {
        fresh->name = name;
        return fresh.release();
    }
    auto* const state = dynamic_cast<State*>(place->second);
    if (state == nullptr) return nullptr;
    ++state->handles;
    if (existed != nullptr) *existed = true;
    return state;
}

void Close(NamedState* state)
{
    {
        const LockHold hold(waitLock);
        if (--state->handles > 0) return;
        if (!state->name.empty()) Names().erase(state->name);
        state->Closed();
    }
    delete state;
}

struct EventState final : NamedState {
    EventState(ResetMode resetMode, bool initially) : mode(resetMode), signalled(initially) {}

    bool IsSignalledFor(const ThreadState&) const override MARBEX_REQUIRES(waitLock) { return signalled; }
    bool Take(ThreadState&) override MARBEX_REQUIRES(waitLock)
    {
        if (mode == ResetMode::kAuto) signalled = false;
        return false;
    }

    const ResetMode mode;
    bool signalled MARBEX_GUARDED_BY(waitLock);
};

struct SemaphoreState final : NamedState {
    SemaphoreState(uint32_t initial, uint32_t most) : maximum(most), count(initial) {}

    bool IsSignalledFor(const ThreadState&) const override MARBEX_REQUIRES(waitLock) { return count > 0; }
    bool Take(ThreadState&) override MARBEX_REQUIRES(waitLock)
    {
        --count;
        return false;
    }

    const uint32_t maximum;
    uint32_t count MARBEX_GUARDED_BY(waitLock);
};

}  // namespace

struct MutexState final : NamedState {
    bool IsSignalledFor(const ThreadState& thread) const override MARBEX_REQUIRES(waitLock)
    {
        return owner == nullptr || owner == &thread;
    }

    bool Take(ThreadState& thread) override MARBEX_REQUIRES(waitLock)
    {
        ++depth;
        if (owner == &thread) return false;
        owner = &thread;
        thread.ownedMutexes.push_back(this);
        return std::exchange(abandoned, false);
    }

    void Closed() override MARBEX_REQUIRES(waitLock)
    {
        if (owner != nullptr) std::erase(owner->ownedMutexes, this);
    }

    ThreadState* owner MARBEX_GUARDED_BY(waitLock) = nullptr;
    uint32_t depth MARBEX_GUARDED_BY(waitLock) = 0;
    bool abandoned MARBEX_GUARDED_BY(waitLock) = false;
};

void AbandonMutexes(ThreadState& thread)
{
    for (MutexState* mutex : std::exchange(thread.ownedMutexes, {})) {
        mutex->owner = nullptr;
        mutex->depth = 0;
        mutex->abandoned = true;
        Offer(*mutex);
    }
}

namespace {

// One opening of a state.
template <typename Interface, typename State>
class Handle : public Interface {
public:
    explicit Handle(State* state) : state_(state) {}
    ~Handle() override { Close(state_); }
    NativeObject* Native() const final { return state_; }

protected:
    State* const state_;
};

class EventHandle final : public Handle<Event, EventState> {
public:
    using Handle::Handle;

    void Set() override
    {
        const LockHold hold(waitLock);
        state_->signalled = true;
        Offer(*state_);
    }

    void Reset() override
    {
        const LockHold hold(waitLock);
        state_->signalled = false;
    }
};

class SemaphoreHandle final : public Handle<Semaphore, SemaphoreState> {
public:
    using Handle::Handle;

    bool Release(uint32_t count) override
    {
        const LockHold hold(waitLock);
        if (count == 0 || count > state_->maximum - state_->count) return false;
        state_->count += count;
        Offer(*state_);
        return true;
    }
};

class MutexHandle final : public Handle<Mutex, MutexState> {
public:
    using Handle::Handle;

    bool Release() override MARBEX_NO_THREAD_SAFETY_ANALYSIS
    {
        ThreadState& thread = CurrentThread();
        const LockHold hold(waitLock);
        if (state_->owner != &thread) return false;
        if (--state_->depth > 0) return true;
        state_->owner = nullptr;
        std::erase(thread.ownedMutexes, state_);
        Offer(*state_);
        return true;
    }
};

}  // namespace

std::unique_ptr<Event> Event::Create(const std::string& name, ResetMode mode, bool signalled, bool* existed)
{
    EventState* const state = OpenOrAdd(name, std::make_unique<EventState>(mode, signalled), existed);
    if (state == nullptr) return nullptr;
    return std::make_unique<EventHandle>(state);
}

std::unique_ptr<Mutex> Mutex::Create(const std::string& name, bool* existed)
{
    MutexState* const state = OpenOrAdd(name, std::make_unique<MutexState>(), existed);
    if (state == nullptr) return nullptr;
    return std::make_unique<MutexHandle>(state);
}

std::unique_ptr<Semaphore> Semaphore::Create(const std::string& name, uint32_t initial, uint32_t maximum, bool* existed)
{
    if (maximum == 0 || initial > maximum) return nullptr;
    SemaphoreState* const state = OpenOrAdd(name, std::make_unique<SemaphoreState>(initial, maximum), existed);
    if (state == nullptr) return nullptr;
    return std::make_unique<SemaphoreHandle>(state);
}

}  // namespace marbex::platform
