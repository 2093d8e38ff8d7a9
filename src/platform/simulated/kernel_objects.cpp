// Events, mutexes and semaphores, and the table of their names.

#include <map>
#include <utility>

#include "platform/simulated/kernel_state.h"
#include "platform/simulated/machine/call.h"

namespace marbex::platform {
namespace {

using simulated::Processor;
using simulated::Task;

std::size_t liveObjects = 0;

// What all handles of one name share.
struct NamedState : NativeObject {
    std::string name;
    uint32_t handles = 1;
};

void TellName(std::ostream& report, const char* kind, const NamedState& state)
{
    report << kind << ' ' << (state.name.empty() ? "without a name" : state.name);
}

std::map<std::string, NamedState*>& Names()
{
    static auto& names = *new std::map<std::string, NamedState*>;
    return names;
}

// The live state of that name, if it is of the wanted kind, else the fresh one; null when the name is another kind's.
template <typename State>
State* OpenOrAdd(const std::string& name, std::unique_ptr<State> fresh, bool* existed)
{
    Processor().Point();
    if (existed != nullptr) *existed = false;
    if (name.empty()) return fresh.release();
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

struct EventState final : NamedState {
    EventState(ResetMode resetMode, bool initially) : mode(resetMode), signalled(initially) {}

    bool IsSignalledFor(const Task&) const override { return signalled; }
    bool Take(Task&) override
    {
        if (mode == ResetMode::kAuto) signalled = false;
        return false;
    }
    void Tell(std::ostream& report) const override { TellName(report, "event", *this); }

    const ResetMode mode;
    bool signalled;
};

struct SemaphoreState final : NamedState {
    SemaphoreState(uint32_t initial, uint32_t most) : maximum(most), count(initial) {}

    bool IsSignalledFor(const Task&) const override { return count > 0; }
    bool Take(Task&) override
    {
        --count;
        return false;
    }
    void Tell(std::ostream& report) const override { TellName(report, "semaphore", *this); }

    const uint32_t maximum;
    uint32_t count;
};

struct MutexState final : NamedState {
    ~MutexState() override
    {
        if (owner != nullptr) std::erase(owner->owned, this);
    }

    bool IsSignalledFor(const Task& task) const override { return owner == nullptr || owner == &task; }
    bool Take(Task& task) override
    {
        ++depth;
        if (owner == &task) return false;
        owner = &task;
        task.owned.push_back(this);
        return std::exchange(abandoned, false);
    }
    void Abandon() override
    {
        owner = nullptr;
        depth = 0;
        abandoned = true;
        Offer(*this);
    }
    void Tell(std::ostream& report) const override
    {
        TellName(report, "mutex", *this);
        if (owner != nullptr) report << " of thread " << owner->id << " (" << owner->name << ')';
    }

    Task* owner = nullptr;
    uint32_t depth = 0;
    bool abandoned = false;
};

// One opening of a state.
template <typename Interface, typename State>
class Handle : public Interface {
public:
    explicit Handle(State* state) : state_(state) {}
    ~Handle() override
    {
        Processor().Point();
        if (--state_->handles > 0) return;
        if (!state_->name.empty()) Names().erase(state_->name);
        delete state_;
    }
    NativeObject* Native() const final { return state_; }

protected:
    State* const state_;
};

class EventHandle final : public Handle<Event, EventState> {
public:
    using Handle::Handle;

    void Set() override
    {
        state_->signalled = true;
        Offer(*state_);
        Processor().Point();
    }

    void Reset() override
    {
        Processor().Point();
        state_->signalled = false;
    }
};

class SemaphoreHandle final : public Handle<Semaphore, SemaphoreState> {
public:
    using Handle::Handle;

    bool Release(uint32_t count) override
    {
        if (count == 0 || count > state_->maximum - state_->count) return false;
        state_->count += count;
        Offer(*state_);
        Processor().Point();
        return true;
    }
};

class MutexHandle final : public Handle<Mutex, MutexState> {
public:
    using Handle::Handle;

    bool Release() override MARBEX_NO_THREAD_SAFETY_ANALYSIS
    {
        Task& self = Processor().Current();
        if (state_->owner != &self) return false;
        if (--state_->depth > 0) return true;
        state_->owner = nullptr;
        std::erase(self.owned, state_);
        Offer(*state_);
        Processor().Point();
        return true;
    }
};

}  // namespace

NativeObject::NativeObject()
{
    ++liveObjects;
}

NativeObject::~NativeObject()
{
    --liveObjects;
    if (!waiters.empty()) Processor().Fail("a kernel object is destroyed while a thread waits for it");
}

std::size_t LiveObjects()
{
    return liveObjects;
}

std::unique_ptr<Event> Event::Create(const std::string& name, ResetMode mode, bool signalled, bool* existed)
{
    const simulated::Made made;
    EventState* const state = OpenOrAdd(name, std::make_unique<EventState>(mode, signalled), existed);
    if (state == nullptr) return nullptr;
    return std::make_unique<EventHandle>(state);
}

std::unique_ptr<Mutex> Mutex::Create(const std::string& name, bool* existed)
{
    const simulated::Made made;
    MutexState* const state = OpenOrAdd(name, std::make_unique<MutexState>(), existed);
    if (state == nullptr) return nullptr;
    return std::make_unique<MutexHandle>(state);
}

std::unique_ptr<Semaphore> Semaphore::Create(const std::string& name, uint32_t initial, uint32_t maximum, bool* existed)
{
    if (maximum == 0 || initial > maximum) return nullptr;
    const simulated::Made made;
    SemaphoreState* const state = OpenOrAdd(name, std::make_unique<SemaphoreState>(initial, maximum), existed);
    if (state == nullptr) return nullptr;
    return std::make_unique<SemaphoreHandle>(state);
}

}  // namespace marbex::platform
