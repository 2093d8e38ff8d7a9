#include "device/calls_under_way.h"

#include <algorithm>
#include <utility>

namespace marbex::device {

using platform::LockHold;

namespace {

template <typename Stacks>
auto OfCallingThread(Stacks& stacks)
{
    return std::find_if(stacks.begin(), stacks.end(),
                        [](const auto& stack) { return stack.thread == platform::CurrentThreadId(); });
}

}  // namespace

CallsUnderWay::CallsUnderWay() : allEnded_(platform::Event::Create("", platform::ResetMode::kManual, true)) {}

void CallsUnderWay::Enter()
{
    const LockHold hold(lock_);
    if (const auto own = OfCallingThread(stacks_); own != stacks_.end()) {
        ++own->depth;
        return;
    }
    stacks_.push_back({platform::CurrentThreadId(), 1});
    allEnded_->Reset();
}

bool CallsUnderWay::Leave()
{
    const LockHold hold(lock_);
    const auto own = OfCallingThread(stacks_);
    if (--own->depth > 0) return false;
    stacks_.erase(own);
    if (!stacks_.empty()) return false;
    allEnded_->Set();
    return std::exchange(closeIsLeft_, false);
}

int32_t CallsUnderWay::Depth() const
{
    const LockHold hold(lock_);
    const auto own = OfCallingThread(stacks_);
    return own == stacks_.end() ? 0 : own->depth;
}

bool CallsUnderWay::MayCloseNow()
{
    const LockHold hold(lock_);
    closeIsLeft_ = !stacks_.empty();
    return !closeIsLeft_;
}

}  // namespace marbex::device
